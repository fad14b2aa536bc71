"""The small things on the carrier that give it scale: guns, boxes, pipes, aerials."""

import math

import numpy as np

import mesh
from textures import CARRIER_BRIGHT, CARRIER_DARK, CARRIER_UNITS

# where guns stand on the +x side: x, y, z and the side they point to (degrees from +z to +x)
TURRETS = [(22.5, 8.0, 88.0, 50.0), (20.5, 8.0, 136.0, 40.0), (33.0, 11.5, -88.0, 110.0),
           (53.0, 5.0, -30.0, 80.0), (53.0, 5.0, 6.0, 60.0), (53.0, 5.0, -66.0, 110.0)]


def plates(shift):
    """Plating for small boxes; their place picks the plates, so that no two are alike."""
    def coords(points, normal):
        axis = int(np.argmax(np.abs(normal)))
        along, across = [(2, 1), (2, 0), (0, 1)][axis]
        low = np.min(points, axis=0)
        return [(p[along] / CARRIER_UNITS + shift,
                 0.52 + (shift * 0.37) % 0.30 + (p[across] - low[across]) / CARRIER_UNITS)
                for p in points]
    return coords


def turret(half, x, y, z, degrees):
    angle = math.radians(degrees)
    ahead = np.array([math.sin(angle), 0.0, math.cos(angle)])
    right = np.array([math.cos(angle), 0.0, -math.sin(angle)])
    up = np.array([0.0, 1.0, 0.0])
    foot = np.array([x, y, z])

    def quad(height, wide, front, back):
        corners = [(wide, front), (wide, -back), (-wide, -back), (-wide, front)]
        return [foot + up * height + right * a + ahead * b for a, b in corners]
    half.hexahedron(quad(1.2, 2.4, 2.6, 2.6), quad(-1.0, 2.6, 2.8, 2.8), plates(x / 50), ("far",))
    half.hexahedron(quad(3.4, 1.5, 1.2, 1.8), quad(1.2, 1.9, 2.4, 2.2), plates(z / 70), ("far",))
    for side in (-0.8, 0.8):
        start = foot + up * 2.4 + right * side + ahead * 1.4
        end = start + ahead * 6.5 + up * 0.6
        barrel(half, start, end, right, up, 0.32)


def barrel(half, start, end, right, up, r):
    offsets = [right * r + up * r, right * r - up * r, -right * r - up * r, -right * r + up * r]
    half.hexahedron([end + o for o in offsets[::-1]], [start + o for o in offsets[::-1]],
                    mesh.constant(*CARRIER_DARK), ("far",))


def turrets(half):
    for place in TURRETS:
        turret(half, *place)


def greebles(half):
    """Boxes strewn over the flat tops and flanks of the +x side (fixed seed)."""
    rng = np.random.default_rng(7)
    for _ in range(16):   # on the hull's shoulder beside the house
        x, z = rng.uniform(29.0, 32.0), rng.uniform(-84, 8)
        small_box(half, rng, (x, 9.2, z), (1.2, 1.8, 3.2))
    for _ in range(12):   # on the house's roof
        x, z = rng.uniform(6.0, 16.0), rng.uniform(-74, 2)
        small_box(half, rng, (x, 31.5, z), (1.8, 1.6, 3.4))
    for _ in range(12):   # beside the launch deck
        small_box(half, rng, (16.3, 7.6, rng.uniform(98, 176)), (0.7, 0.8, 2.4))
    for _ in range(12):   # on the pod's roof
        small_box(half, rng, (rng.uniform(47, 60), 4.4, rng.uniform(-80, 18)), (1.6, 1.6, 3.6))
    for _ in range(14):   # in the trench
        z = rng.uniform(-100, 20)
        small_box(half, rng, (35.0 - max(0.0, z) * 0.14, rng.uniform(-4, 0), z), (1.8, 1.2, 3.0))
    for _ in range(8):    # under the keel
        z = rng.uniform(-95, 10)
        half.hexahedron(*hanging(rng.uniform(2, 12), -23.5, z, rng.uniform(1.5, 4)),
                        plates(z / 33), ("far",))
    keel_fin(half)


def small_box(half, rng, foot, size):
    """A box about `size` (half extents) around, its foot sunk into the plating."""
    wide, tall, long = (s * rng.uniform(0.55, 1.2) for s in size)
    x, y, z = foot
    coords = plates(z / 41) if rng.random() < 0.86 else mesh.constant(*CARRIER_BRIGHT)
    half.box((x - wide, y - 0.6, z - long), (x + wide, y + 1.6 * tall, z + long), coords,
             ("far",), (rng.uniform(0.7, 1.0), rng.uniform(0.7, 1.0)))


def runway_lamps(half, places, deck):
    """Posts with a lamp on top, at each z beside the runway."""
    for z in places:
        half.box((13.65, deck - 0.2, z - 0.25), (14.15, deck + 3.0, z + 0.25),
                 plates(z / 29), ("near", "far"), (0.6, 0.6))
        half.box((13.55, deck + 3.0, z - 0.35), (14.25, deck + 3.6, z + 0.35),
                 mesh.constant(*CARRIER_BRIGHT), (), (0.9, 0.9))


def parked_fighters(half, deck):
    """Rows of small craft beside the runway: they tell how large the ship is."""
    for z in np.arange(36.0, 80.0, 5.5):
        parked(half, np.array([22.5, deck + 0.5, z]), -35.0)
    for z in np.arange(34.0, 130.0, 5.5):
        if abs(z - 88.0) > 5:
            parked(half, np.array([17.6, deck + 0.5, z]), -35.0)


def parked(half, place, degrees):
    """A fighter of the fleet as far as one sees it from above, 3.6 units long."""
    angle = math.radians(degrees)
    turn = np.array([[math.cos(angle), 0, math.sin(angle)], [0, 1, 0],
                     [-math.sin(angle), 0, math.cos(angle)]])
    skin = plates(place[2] / 37)

    def face(points):
        half.face(np.array(points, float) @ turn.T + place, skin)
    nose, tail = (0, 0.1, 2.2), (0, 0.45, -1.3)
    for s in (1, -1):
        side = (s * 0.32, 0.1, -1.3)
        wing = [(s * 0.3, 0.12, 0.5), (s * 1.4, 0.0, -0.6), (s * 1.4, 0.0, -1.2), (s * 0.3, 0.12, -1.2)]
        fin = [(s * 0.5, 0.1, -0.2), (s * 0.75, 0.75, -1.0), (s * 0.75, 0.75, -1.4), (s * 0.5, 0.1, -1.2)]
        for points in ([nose, side, tail], wing, fin):
            face(points if s < 0 else points[::-1])
        face(fin if s > 0 else fin[::-1])


def hanging(x, y, z, size):
    """The two quads of a box that hangs below height y: its foot and its root."""
    corners = [(-1, 1), (-1, -1), (1, -1), (1, 1)]
    foot = [(x + a * size * 0.7, y - 4.5, z + b * size * 1.6) for a, b in corners]
    root = [(x + a * size, y + 2.0, z + b * size * 2.2) for a, b in corners]
    return foot, root


def keel_fin(half):
    """Half of the long keel fin below the stern."""
    top = [(3.0, -22.0, -112.0), (3.0, -24.0, -30.0)]
    foot = [(0.8, -40.0, -104.0), (0.8, -40.0, -74.0)]
    half.face([top[0], top[1], foot[1], foot[0]], plates(0.3))
    half.face([top[0], foot[0], (0, -40.0, -104.0), (0, -22.0, -112.0)], plates(0.5))
    half.face([top[1], (0, -24.0, -30.0), (0, -40.0, -74.0), foot[1]], plates(0.7))
    half.face([foot[0], foot[1], (0, -40, -74.0), (0, -40, -104.0)], plates(0.9))


def antennas(shape):
    """Masts and a dish on the bridge."""
    for x, z, foot, top in [(-6, -40, 60, 82), (6, -42, 60, 76), (0, -58, 41, 58),
                            (15, -44, 57, 68), (-15, -44, 57, 66)]:
        shape.box((x - 0.5, foot - 2, z - 0.5), (x + 0.5, top, z + 0.5), plates(x / 9),
                  ("far",), (0.3, 0.3))
        shape.box((x - 2.4, top * 0.6 + foot * 0.4, z - 0.25),
                  (x + 2.4, top * 0.6 + foot * 0.4 + 0.5, z + 0.25),
                  mesh.constant(*CARRIER_BRIGHT))
    dish(shape, np.array([0.0, 66.0, -40.0]), 4.2)


def dish(shape, centre, radius, sides=10):
    """A dish that looks ahead, seen from both sides."""
    ring = np.array(mesh.ring_points(sides, radius, centre[2] + 1.6, (centre[0], centre[1])))
    front, back = shape.new_group(), shape.new_group()
    uv = [(0.3 + 0.02 * j, 0.6) for j in range(sides)]
    shape.fan(ring, centre, uv, (0.3, 0.63), front)
    shape.fan(ring[::-1], centre - (0, 0, 0.3), uv, (0.3, 0.63), back)
