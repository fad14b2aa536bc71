"""What tools/art/photograph takes pictures of: for each name the direction of the view and lines for stage.cpp.

Directions and the places of cameras and own ships are the world's; other places are relative to the view.
"""

BLUE_START, RED_START = (-500, 0, 0), (500, 0, 0)
CARRIER_MIDDLE = (0, -5, -40)  # from its team's start point


def line(word, place, *details):
    return " ".join(map(str, (word, *place, *details)))


def carrier(offset, team_start):
    """A carrier seen from `offset` of its middle."""
    eye = [sum(parts) for parts in zip(team_start, CARRIER_MIDDLE, offset)]
    return [-x for x in offset], [line("camera", eye)]


def sky(look):
    """The sky alone, from so far outside that the carriers are beyond what the client draws."""
    return look, ["camera 0 30000 0"]


def fighters(distance, look=(0, 0, 1)):
    """Both teams from several sides, in two rows."""
    poses = [(180, 0, 0), (90, 0, 0), (0, -90, 0), (0, 90, 0), (215, -20, 20)]
    return look, ["camera 0 400 0"] + [
        line("ship", (column * 0.27 * distance, up * distance, distance), team, *pose)
        for column, pose in enumerate(poses, -2) for team, up in (("red", 0.275), ("blue", -0.275))]


def close_up(team):
    return (0, 0, 1), ["camera 0 3000 0",
                       "ship -1.6 0.9 6 %s 205 -18 25" % team,
                       "ship 1.6 0.9 6 %s -25 -22 -10" % team,
                       "ship -1.6 -1.2 6 %s 120 15 0" % team,
                       "ship 1.6 -1.2 6 %s 40 20 -30" % team]


def shots(look):
    return look, ["camera 0 3000 0"] + [
        line("shot", ((column - 1.5) * 0.3 * distance, up * distance, distance), team)
        for column, distance in enumerate((5, 12, 30, 100)) for team, up in (("red", 0.25), ("blue", -0.25))]


# Overlapping pairs: on the right the far one first, on the left the near one first, which cuts the other.
EXPLOSIONS = (0, 0, 1), [
    "camera 0 3000 0", "ship 4 -9 40 blue 150 0 0",
    "explosion -14 5 30", "explosion -11 8 38", "explosion 11 8 38", "explosion 14 5 30",
    "explosion 0 -6 28", "explosion -5 -8 34", "explosion 5 -8 34", "explode"]

# A blue wing over the flank of the red carrier.
FIGHT = (0.55, -0.12, -0.83), [
    "own 438 16 120 blue",
    "ship 5.5 4.6 10.4 red -77 10 -50", "ship 9.5 7.4 23.1 red -47 20 -35", "ship -5.5 6.8 14.2 blue -19 -8 35",
    "ship -2 6.5 29.2 red 3 -5 30", "ship 22 14.9 46.2 blue -37 10 -20", "ship -19 11.9 25.6 red -134 -9 40",
    "ship 33 8.9 69 red -57 0 -60", "ship 2 21.8 72.4 blue 23 15 20",
    *(line("shot", (1.5 + 1.2 * i, 0.9 + 1.25 * i, 4.4 + 2.1 * i), "blue") for i in range(3)),
    *(line("shot", (-4.6 + 0.9 * i, 6.7, 18 + 3.7 * i), "blue") for i in range(3)),
    *(line("shot", (-15.4 + 3 * i, 10.5 - 1.1 * i, 22.5 - 2.8 * i), "red") for i in range(3)),
    "explosion -19 8.9 60.9", "explosion 24 0 50", "explode"]

SIDES = {"pz": (0, 0, 1), "px": (1, 0, 0), "nz": (0, 0, -1), "nx": (-1, 0, 0)}

ALL = {
    "start-blue": (SIDES["pz"], [line("own", BLUE_START, "blue")]),
    "start-blue-x": (SIDES["px"], [line("own", BLUE_START, "blue")]),
    "start-blue-back": ((0, 0.05, -1), [line("own", BLUE_START, "blue")]),
    "start-red": (SIDES["pz"], [line("own", RED_START, "red")]),
    "start-red-x": (SIDES["nx"], [line("own", RED_START, "red")]),
    "fight": FIGHT,
    **{"fighters-%d" % distance: fighters(distance) for distance in (20, 30, 100, 300)},
    **{"fighters-300-" + side: fighters(300, SIDES[side]) for side in ("px", "nz", "nx")},
    "close-red": close_up("red"),
    "close-blue": close_up("blue"),
    "shots": shots(SIDES["pz"]),
    "shots-corner": shots((1, 0.5, 1)),
    "shots-below": shots((0, -1, 0.1)),
    "explosions": EXPLOSIONS,
    "carrier-front": carrier((150, 75, 290), BLUE_START),
    "carrier-stern": carrier((-150, 70, -230), BLUE_START),
    "carrier-side": carrier((300, 10, 0), RED_START),
    "carrier-top": carrier((0, 480, 10), BLUE_START),
    "carrier-below": carrier((180, -270, 240), RED_START),
    "carrier-far": carrier((-600, 0, -60), RED_START),
    **{"sky-" + side: sky(look) for side, look in SIDES.items()},
    "sky-py": sky((0, 1, 0.02)),
    "sky-ny": sky((0, -1, 0.02)),
    "sky-corner": sky((1, 1, 1)),
    "sky-corner-below": sky((-1, -1, 1)),
    "sky-edge": sky((1, 0, 1)),
    "icon": ((0.3, 0.25, 1), ["camera 0 3000 0", "ship -0.12 0.35 4.9 red 152 -38 -32"]),
}
