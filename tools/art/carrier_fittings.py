"""The small things on the carrier that show how large it is: guns, boxes, parked fighters, lamps, masts.

Lengths are the carrier's; z counts from amidships.
"""

import math

import numpy as np

import mesh
from textures import CARRIER_BRIGHT, CARRIER_DARK, CARRIER_UNITS

# where guns stand on the +x side: x, y, z and the side they point to (degrees from +z to +x)
TURRETS = [(22.5, 8.0, 88.0, 50.0), (20.5, 8.0, 136.0, 40.0), (33.0, 11.5, -88.0, 110.0),
           (53.0, 5.0, -30.0, 80.0), (53.0, 5.0, 6.0, 60.0), (53.0, 5.0, -66.0, 110.0)]
# masts on the bridge: x, z, foot, top
MASTS = [(-6, -40, 60, 82), (6, -42, 60, 76), (0, -58, 41, 58), (15, -44, 57, 68), (-15, -44, 57, 66)]
# Rows of lamps and lit windows: the first and the last one's centre, their number, and half their sides `right` and
# `up`. Each faces right x up and shines, so they draw the ship's lines in full team colour from everywhere.
LIGHTS = [
    # the band of windows around the head of the tower
    ((1.7, 53.9, -21.85), (15.3, 53.9, -21.85), 5, (1.25, 0, 0), (0, 0.75, 0.55)),
    ((-1.7, 53.9, -47.95), (-15.3, 53.9, -47.95), 5, (-1.25, 0, 0), (0, 0.75, -0.55)),
    ((18.3, 54.0, -25.0), (18.3, 54.0, -44.5), 6, (0, 0, -1.2), (0.4, 0.75, 0)),
    # windows in the back of the hangar, and beacons along its roof
    ((-2.0, 11.5, -96.2), (-20.0, 11.5, -96.2), 5, (-0.9, 0, 0), (0, 0.6, 0)),
    ((-2.0, 15.0, -96.2), (-18.5, 15.0, -96.2), 5, (-0.9, 0, 0), (0, 0.6, 0)),
    ((-2.0, 18.5, -96.2), (-15.5, 18.5, -96.2), 5, (-0.9, 0, 0), (0, 0.6, 0)),
    ((19.4, 32.1, -76.0), (19.4, 32.1, 2.0), 9, (0, 0, -1.2), (-0.6, 0.3, 0)),
    # windows on the outer flanks of the side pods, and lamps along their roofs
    ((64.2, -4.5, -80.0), (64.2, -4.5, 16.0), 12, (0, 0, -1.5), (0, 0.55, 0)),
    ((60.2, 5.2, -80.0), (60.2, 5.2, 16.0), 7, (0, 0, -1.0), (-0.5, 0.2, 0)),
]
UP = np.array([0.0, 1.0, 0.0])


def plates(shift):
    """Plating for small boxes; `shift` picks the plates, so that no two boxes are alike."""
    def coords(points, normal):
        along, across = mesh.panel_axes(normal)
        low = points[:, across].min()
        return [(p[along] / CARRIER_UNITS + shift,
                 0.52 + (shift * 0.37) % 0.30 + (p[across] - low) / CARRIER_UNITS) for p in points]
    return coords


def heading(degrees):
    """The directions to the left (+x at 0 degrees) and ahead (+z), turned from +z to +x."""
    cos, sin = math.cos(math.radians(degrees)), math.sin(math.radians(degrees))
    return np.array([cos, 0.0, -sin]), np.array([sin, 0.0, cos])


def turret(half, x, y, z, degrees):
    left, ahead = heading(degrees)
    foot = np.array([x, y, z])

    def quad(height, wide, front, back):
        corners = [(wide, front), (wide, -back), (-wide, -back), (-wide, front)]
        return [foot + UP * height + left * a + ahead * b for a, b in corners]
    half.block(quad(1.2, 2.4, 2.6, 2.6), quad(-1.0, 2.6, 2.8, 2.8), plates(x / 50))
    half.block(quad(3.4, 1.5, 1.2, 1.8), quad(1.2, 1.9, 2.4, 2.2), plates(z / 70))
    for side in (-0.8, 0.8):
        breech = foot + UP * 2.4 + left * side + ahead * 1.4
        muzzle = breech + ahead * 6.5 + UP * 0.6
        section = [left * a + UP * b for a, b in [(-0.32, 0.32), (-0.32, -0.32), (0.32, -0.32), (0.32, 0.32)]]
        half.block(muzzle + section, breech + section, CARRIER_DARK)


def turrets(half):
    for place in TURRETS:
        turret(half, *place)


def greebles(half):
    """Boxes strewn over the flat tops and flanks of the +x side (fixed seed)."""
    rng = np.random.default_rng(7)
    for _ in range(16):   # on the hull's shoulder beside the house
        small_box(half, rng, (rng.uniform(29, 32), 9.2, rng.uniform(-84, 8)), (1.2, 1.8, 3.2))
    for _ in range(12):   # on the house's roof
        small_box(half, rng, (rng.uniform(6, 16), 31.5, rng.uniform(-74, 2)), (1.8, 1.6, 3.4))
    for _ in range(12):   # beside the launch deck
        small_box(half, rng, (16.3, 7.6, rng.uniform(98, 176)), (0.7, 0.8, 2.4))
    for _ in range(12):   # on the pod's roof
        small_box(half, rng, (rng.uniform(47, 60), 4.4, rng.uniform(-80, 18)), (1.6, 1.6, 3.6))
    for _ in range(14):   # in the trench
        z = rng.uniform(-100, 20)
        small_box(half, rng, (35.0 - max(0.0, z) * 0.14, rng.uniform(-4, 0), z), (1.8, 1.2, 3.0))
    for _ in range(8):    # under the keel
        z = rng.uniform(-95, 10)
        hanging_box(half, rng.uniform(2, 12), z, rng.uniform(1.5, 4))
    keel_fin(half)


def small_box(half, rng, foot, size):
    """A box about `size` (half extents) around, its foot sunk into the plating."""
    wide, tall, long = (s * rng.uniform(0.55, 1.2) for s in size)
    x, y, z = foot
    coords = plates(z / 41) if rng.random() < 0.86 else CARRIER_BRIGHT
    half.box((x - wide, y - 0.6, z - long), (x + wide, y + 1.6 * tall, z + long), coords,
             taper=(rng.uniform(0.7, 1.0), rng.uniform(0.7, 1.0)))


def hanging_box(half, x, z, size):
    corners = [(-1, 1), (-1, -1), (1, -1), (1, 1)]
    foot = [(x + a * size * 0.7, -28.0, z + b * size * 1.6) for a, b in corners]
    root = [(x + a * size, -21.5, z + b * size * 2.2) for a, b in corners]
    half.block(foot, root, plates(z / 33))


def keel_fin(half):
    """Half of the long keel fin below the stern."""
    back, front = (3.0, -22.0, -112.0), (3.0, -24.0, -30.0)
    foot_back, foot_front = (0.8, -40.0, -104.0), (0.8, -40.0, -74.0)
    middle_back, middle_front = (0, -40.0, -104.0), (0, -40.0, -74.0)
    half.face([back, front, foot_front, foot_back], plates(0.3))
    half.face([back, foot_back, middle_back, (0, -22.0, -112.0)], plates(0.5))
    half.face([front, (0, -24.0, -30.0), middle_front, foot_front], plates(0.7))
    half.face([foot_back, foot_front, middle_front, middle_back], plates(0.9))


def runway_lamps(half, deck):
    """Posts with a lamp on top beside the runway, at the height `deck`."""
    for z in np.arange(44.5, 180.0, 17.0):
        half.box((13.65, deck - 0.2, z - 0.25), (14.15, deck + 3.0, z + 0.25), plates(z / 29), 0, (0.6, 0.6))
        half.box((13.55, deck + 3.0, z - 0.35), (14.25, deck + 3.6, z + 0.35), CARRIER_BRIGHT, 2, (0.9, 0.9))


def parked_fighters(half, deck):
    """Rows of small craft beside the runway."""
    for z in np.arange(36.0, 80.0, 5.5):
        parked(half, (22.5, deck + 0.5, z))
    for z in np.arange(34.0, 130.0, 5.5):
        if abs(z - 88.0) > 5:
            parked(half, (17.6, deck + 0.5, z))


def parked(half, place):
    """The upper side of a fighter of the fleet, 3.6 units long."""
    left, ahead = heading(-35.0)

    def face(points):
        half.face(np.array(points, float) @ [left, UP, ahead] + place, plates(place[2] / 37))
    nose, tail = (0, 0.1, 2.2), (0, 0.45, -1.3)
    for s in (1, -1):
        side = (s * 0.32, 0.1, -1.3)
        wing = [(s * 0.3, 0.12, 0.5), (s * 1.4, 0.0, -0.6), (s * 1.4, 0.0, -1.2), (s * 0.3, 0.12, -1.2)]
        fin = [(s * 0.5, 0.1, -0.2), (s * 0.75, 0.75, -1.0), (s * 0.75, 0.75, -1.4), (s * 0.5, 0.1, -1.2)]
        for points in ([nose, side, tail], wing, fin, fin[::-1]):
            face(points if s < 0 else points[::-1])


def antennas(shape):
    """Masts and a dish on the bridge."""
    for x, z, foot, top in MASTS:
        spar = top * 0.6 + foot * 0.4
        shape.box((x - 0.5, foot - 2, z - 0.5), (x + 0.5, top, z + 0.5), plates(x / 9), taper=(0.3, 0.3))
        shape.box((x - 2.4, spar, z - 0.25), (x + 2.4, spar + 0.5, z + 0.25), CARRIER_BRIGHT, 2)
    # a dish that looks ahead, seen from both sides
    rim, coords = mesh.round_section(10, 4.2, -38.4, (0.0, 66.0)), [(0.3 + 0.02 * j, 0.6) for j in range(10)]
    shape.fan(rim, (0.0, 66.0, -40.0), coords, (0.3, 0.63), object())
    shape.fan(rim[::-1], (0.0, 66.0, -40.3), coords, (0.3, 0.63), object())


def light(half, centre, right, up):
    centre, right, up = np.array([centre, right, up], float)
    half.face([centre - right - up, centre + right - up, centre + right + up, centre - right + up],
              CARRIER_BRIGHT, normal=mesh.GLOWING)


def lights(half, hull):
    """The rows, and lamps that follow the lines of the table `hull`."""
    z, wide, edge, _, _, keel = np.array(hull).T
    for at in np.arange(z[0] + 4, z[-1] - 2, 9.5):     # along the edge of the upper deck
        place = (np.interp(at, z, wide) * 0.885 + 0.2, np.interp(at, z, edge) + 0.3, at)
        light(half, place, (0, 0, -1.0), (-0.5, 0.16, 0))
    for first, last, count, right, up in LIGHTS:
        for place in np.linspace(first, last, count):
            light(half, place, right, up)
    for at in np.arange(z[1] + 6, z[-1] - 40, 11.0):   # along the bottom of the trench in the side
        light(half, (np.interp(at, z, wide) - 3.6, -1.0, at), (0, 0, -1.6), (0, 0.55, 0))
    for at in np.linspace(-3.0, -21.0, 6):             # across the stern
        light(half, (at, 8.0, -122.2), (-1.0, 0, 0), (0, 0.5, 0))
    for at in np.arange(-96.0, 150.0, 20.0):           # below the keel
        light(half, (6.5, np.interp(at, z, keel) - 0.25, at), (0.7, 0, 0), (0, 0, 1.5))
