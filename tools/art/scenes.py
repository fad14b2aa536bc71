"""What tools/art/photograph takes pictures of: a function for each, which sets up a studio."""

import numpy as np

BLUE_START, RED_START = np.array([-500.0, 0, 0]), np.array([500.0, 0, 0])


def start(team_start, blue, look):
    return lambda studio: studio.fly(team_start, blue, look)


def sky(look):
    """The sky alone, from so far outside that the carriers are beyond what the client draws."""
    return lambda studio: studio.look_from((0, 30000, 0), look)


def carrier(offset, blue=True):
    """A carrier seen from `offset` of its middle."""
    def set_up(studio):
        middle = (BLUE_START if blue else RED_START) + (0, -5, CARRIER_MIDDLE)
        studio.look_from(middle + offset, -np.asarray(offset, float))
    return set_up


def fighters(distance, side=0.0):
    """Both teams from several sides, in two rows, looking `side` degrees from +z to +x."""
    def set_up(studio):
        eye, angle = np.array([0.0, 400, 0]), np.radians(side)
        ahead = np.array([np.sin(angle), 0, np.cos(angle)])
        left, up = np.array([ahead[2], 0, -ahead[0]]), np.array([0, 1, 0])
        studio.look_from(eye, ahead)
        poses = [(180, 0, 0), (90, 0, 0), (0, -90, 0), (0, 90, 0), (215, -20, 20)]
        for i, (heading, climb, bank) in enumerate(poses):
            for row, blue in enumerate((False, True)):
                place = ahead + left * (2 - i) * 0.27 + up * (0.5 - row) * 0.55
                studio.ship(eye + distance * place, blue, heading + side, climb, bank)
    return set_up


def close_up(blue):
    def set_up(studio):
        eye = np.array([0.0, 3000, 0])
        studio.look_from(eye, (0, 0, 1))
        studio.ship(eye + (1.6, 0.9, 6.0), blue, 205, -18, 25)
        studio.ship(eye + (-1.6, 0.9, 6.0), blue, -25, -22, -10)
        studio.ship(eye + (1.6, -1.2, 6.0), blue, 120, 15, 0)
        studio.ship(eye + (-1.6, -1.2, 6.0), blue, 40, 20, -30)
    return set_up


def shots(look):
    def set_up(studio):
        eye, ahead = np.array([0.0, 3000, 0]), np.asarray(look, float) / np.linalg.norm(look)
        right = np.cross(ahead, (0, 1, 0))
        right /= np.linalg.norm(right)
        studio.look_from(eye, ahead)
        for i, distance in enumerate((5, 12, 30, 100)):
            for row, blue in enumerate((False, True)):
                place = ahead + right * (i - 1.5) * 0.3 + np.cross(right, ahead) * (0.25 - row * 0.5)
                studio.shot(eye + distance * place, blue)
    return set_up


def explosions(studio):
    """Overlapping pairs: the near one made first (which cuts), and the far one made first."""
    eye = np.array([0.0, 3000, 0])
    studio.look_from(eye, (0, 0, 1))
    studio.ship(eye + (-4, -9, 40), True, 150)
    studio.explosions([eye + p for p in [(14, 5, 30), (11, 8, 38), (-11, 8, 38), (-14, 5, 30), (0, -6, 28),
                                         (5, -8, 34), (-5, -8, 34)]])


def fight(studio):
    """A blue wing over the flank of the red carrier."""
    eye, look = RED_START + (-62, 16, 120), np.array([0.55, -0.12, -0.83])
    right = np.cross(look, (0, 1, 0))

    def at(across, up, ahead):
        return eye + look * ahead + right * across + np.array([0, up, 0])
    studio.fly(eye, True, look)
    for place, blue, pose in [((5.5, 4.6, 11), False, (70, 10, -50)), ((9.5, 7.5, 24), False, (100, 20, -35)),
                              ((-5.5, 6.8, 15), True, (128, -8, 35)), ((-2, 6.5, 30), False, (150, -5, 30)),
                              ((22, 15, 48), True, (110, 10, -20)), ((-19, 12, 27), False, (13, -9, 40)),
                              ((33, 9, 70), False, (90, 0, -60)), ((2, 22, 75), True, (170, 15, 20))]:
        studio.ship(at(*place), blue, *pose)
    for step in range(3):
        studio.shot(at(1.5 + 1.2 * step, 0.9 + 1.25 * step, 4.5 + 2.25 * step), True)
        studio.shot(at(-4.6 + 0.9 * step, 6.7, 18.8 + 3.7 * step), True)
        studio.shot(at(-15.4 + 3.0 * step, 10.6 - 1.1 * step, 23.8 - 2.9 * step), False)
    studio.explosions([at(-19, 9, 62), at(24, 0, 50)])


CARRIER_MIDDLE = -40.0  # z of its middle, seen from its team's start point
LEVEL_LOOKS = {"pz": (0, 0, 1), "px": (1, 0, 0), "nz": (0, 0, -1), "nx": (-1, 0, 0)}

ALL = {
    "start-blue": start(BLUE_START, True, (0, 0, 1)),
    "start-blue-x": start(BLUE_START, True, (1, 0, 0)),
    "start-blue-back": start(BLUE_START, True, (0, 0.05, -1)),
    "start-red": start(RED_START, False, (0, 0, 1)),
    "start-red-x": start(RED_START, False, (-1, 0, 0)),
    "fight": fight,
    "fighters-20": fighters(20),
    "fighters-30": fighters(30),
    "fighters-100": fighters(100),
    "fighters-300": fighters(300),
    "fighters-300-px": fighters(300, 90.0),
    "fighters-300-nz": fighters(300, 180.0),
    "fighters-300-nx": fighters(300, 270.0),
    "close-red": close_up(False),
    "close-blue": close_up(True),
    "shots": shots((0, 0, 1)),
    "shots-corner": shots((1, 0.5, 1)),
    "shots-below": shots((0, -1, 0.1)),
    "explosions": explosions,
    "carrier-front": carrier((150, 75, 290)),
    "carrier-stern": carrier((-150, 70, -230)),
    "carrier-side": carrier((300, 10, 0), False),
    "carrier-top": carrier((0, 480, 10)),
    "carrier-below": carrier((180, -270, 240), False),
    "carrier-far": carrier((-600, 0, -60), False),
    **{"sky-" + name: sky(look) for name, look in LEVEL_LOOKS.items()},
    "sky-py": sky((0, 1, 0.02)),
    "sky-ny": sky((0, -1, 0.02)),
    "sky-corner": sky((1, 1, 1)),
    "sky-corner-below": sky((-1, -1, 1)),
    "sky-edge": sky((1, 0, 1)),
}
