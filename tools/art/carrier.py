"""carrier.obj: a fleet carrier, bow along +z, up +y, drawn unscaled.

The client draws it shifted by (0, -13, -130), so ships of the team start at model point (0, 13, 130). That is five
units above the launch deck, with their hangar behind them and the runway ahead. The tables here count z from amidships;
AHEAD moves the finished ship to its place.
"""

import numpy as np

import mesh
from carrier_fittings import antennas, greebles, lights, parked_fighters, runway_lamps, turrets
from textures import (CARRIER_BAY, CARRIER_BRIGHT, CARRIER_DARK, CARRIER_DECK, CARRIER_GLOW,
                      CARRIER_HULL, CARRIER_TRENCH, CARRIER_UNITS, CARRIER_WINDOWS)

SHADING = mesh.Shading(relief=0.42, lift=0.47, crown=0.6, reach=(45.0, 150.0))
DECK = 8.0            # height of the launch deck
DECK_SIDE = 13.0      # half its width
DECK_CELL = 32.0      # length of one repeat of the deck's texture
DECK_FIRST, DECK_END = -54.0, 186.0  # repeats begin so that no mark lies right before the start
AHEAD = 66.0          # so the hangar's mouth lies 38 units behind the start, the bow 126 ahead
BAY_FRONT, BAY_BACK = 26.0, -38.0
BAY_SIDE, BAY_TOP = 13.0, 21.0
BAY_EDGE = [(BAY_SIDE, DECK), (BAY_SIDE, BAY_TOP - 3), (BAY_SIDE - 3, BAY_TOP), (0, BAY_TOP)]  # x, y; half of it

# z, half width, deck edge, top and foot of the trench in the side, keel
HULL = [
    (-122.0, 26.0, 10.0, 3.0, -5.0, -17.0),
    (-108.0, 36.0, 12.0, 4.0, -6.0, -23.0),
    (-60.0, 40.0, 12.0, 4.0, -6.0, -26.0),
    (0.0, 37.0, 10.0, 3.5, -5.5, -24.0),
    (26.0, 33.0, 8.0, 2.5, -5.0, -20.0),
    (75.0, 29.0, 8.0, 2.5, -4.2, -16.0),
    (130.0, 24.5, 8.0, 2.5, -3.0, -11.0),
    (172.0, 20.5, 8.0, 3.0, -1.0, -6.0),
    (190.0, 17.5, 8.0, 4.0, 1.5, -1.5),
]
UPPER_EDGE = [(wide * 0.88, edge, z) for z, wide, edge, *_ in HULL]


def hull_map(v_centre=0.75, shift=0.0, middle=0.0):
    return mesh.planar(CARRIER_UNITS, v_centre, shift, middle)


def strip_map(strip, low, high, shift=0.0):
    """Fills a texture strip's height between two heights y; u runs along the hull."""
    def coords(points, normal):
        along = 2 if abs(normal[0]) > abs(normal[2]) else 0
        return [(p[along] / CARRIER_UNITS + shift,
                 strip[0] + 0.002 + (strip[1] - strip[0] - 0.004) * (p[1] - low) / (high - low))
                for p in points]
    return coords


def bay_map(points, normal):
    """Stretches the picture of a lit bay over a face that looks along z."""
    low, high = points.min(axis=0)[:2], points.max(axis=0)[:2]
    first, last = np.reshape(CARRIER_BAY, (2, 2))
    return first + (last - first) * (points[:, :2] - low) / (high - low)


def hull_ring(z, w, edge, hi, lo, keel):
    at_end = z in (HULL[0][0], HULL[-1][0])
    inset = w if at_end else w - (4.0 if w > 22 else 2.0)
    right = [(w * 0.42, keel), (w * 0.86, (lo + keel) / 2), (w, lo), (inset, lo), (inset, hi),
             (w, hi), (w * 0.88, edge)]
    left = [(-x, y) for x, y in reversed(right)]
    return np.array([(x, y, z) for x, y in right + left])


def hull(shape):
    for row, following in zip(HULL, HULL[1:]):
        for j, quad in mesh.strips(hull_ring(*row), hull_ring(*following)):
            if j != 6:  # the deck has its own texture map
                shape.bent(quad, side_map(j, row, following))
    for row, step, shift in (HULL[0], -1, 0.1), (HULL[-1], 1, 0.3):  # stern and bow
        inner_corners = [3, 4, 9, 10]  # of the trench
        shape.face(np.delete(hull_ring(*row)[::step], inner_corners, axis=0), hull_map(0.74, shift))


def side_map(j, row, following):
    """The texture map of hull strip j: machinery in the trench, plates elsewhere."""
    if j in (3, 9):
        return strip_map(CARRIER_TRENCH, min(row[4], following[4]), max(row[3], following[3]))
    if j in (2, 4, 8, 10):
        return CARRIER_DARK
    return hull_map(0.76, 0.13 * j)


def deck(shape):
    """The launch deck from the hangar's back wall to the bow, and plates beside it."""
    u0, v0, u1, v1 = CARRIER_DECK
    for z0 in np.arange(DECK_FIRST, DECK_END, DECK_CELL):
        z1 = min(z0 + DECK_CELL, DECK_END)
        end = u0 + (u1 - u0) * (z1 - z0) / DECK_CELL
        shape.face(deck_quad(z0, z1), [(u0, v0), (u0, v1), (end, v1), (end, v0)])
    half = mesh.Mesh()
    edges = [point for point in UPPER_EDGE if point[2] >= BAY_FRONT]
    for edge, following in zip(edges, edges[1:]):
        half.face([edge, (DECK_SIDE, DECK, edge[2]), (DECK_SIDE, DECK, following[2]), following], hull_map(0.62, 0.4))
    rails(half)
    for face in half.faces:  # ships of the carrier's colour must stand out before them as before the runway
        face.normals = np.broadcast_to(mesh.DARK, face.points.shape)
    prong(half)
    shape.add_both_sides(half)
    shape.face(deck_quad(DECK_END, HULL[-1][0]), CARRIER_BRIGHT)


def deck_quad(z0, z1):
    return [(DECK_SIDE, DECK, z0), (-DECK_SIDE, DECK, z0), (-DECK_SIDE, DECK, z1), (DECK_SIDE, DECK, z1)]


def rails(half):
    """Low walls along the deck, open where lamps stand."""
    for z in np.arange(30.0, 176.0, 17.0):
        half.box((13.2, DECK - 0.2, z), (14.6, DECK + 1.3, z + 13.0), hull_map(0.7, 0.2), taper=(0.6, 0.96))


def prong(half):
    """The catapult's arm, which reaches beyond the bow."""
    root = [(16.2, 8.6, 176), (16.2, 3.0, 176), (11.0, 3.0, 176), (11.0, 8.6, 176)]
    knee = [(15.6, 8.6, 202), (15.6, 4.4, 202), (11.8, 4.4, 202), (11.8, 8.6, 202)]
    tip = [(14.4, 7.6, 212), (14.4, 5.4, 212), (12.6, 5.4, 212), (12.6, 7.6, 212)]
    half.block(knee, root, hull_map(0.75, 0.3), caps=0)
    half.block(tip, knee, hull_map(0.75, 0.6), caps=0)
    half.face(tip[::-1], CARRIER_BRIGHT)


def stern_deck(shape):
    """The plates on top of the hull behind the hangar's mouth."""
    edges = [point for point in UPPER_EDGE if point[2] <= BAY_FRONT]
    for (w0, y0, z0), (w1, y1, z1) in zip(edges, edges[1:]):
        inner = BAY_SIDE if z0 >= BAY_BACK - 30 else 0.0
        for side in (1, -1):
            quad = [(side * w0, y0, z0), (side * inner, y0, z0), (side * inner, y1, z1), (side * w1, y1, z1)]
            shape.face(quad[::side], hull_map(0.75, 0.55))


def hangar(shape):
    """The house amidships with the launch bay through its front."""
    rings = [[(w, DECK - 3, z), (w, top - 8, z), (w - 8, top, z), (-w + 8, top, z), (-w, top - 8, z), (-w, DECK - 3, z)]
             for z, w, top in [(-96.0, 22.0, 22.0), (-78.0, 27.0, 32.0), (4.0, 27.0, 32.0), (26.0, 22.0, 27.0)]]
    hangar_front(shape, rings[-1])
    bay(shape)
    for ring, following in zip(rings, rings[1:]):
        for j, quad in mesh.strips(ring, following, closed=False):
            shape.bent(quad, strip_map(CARRIER_WINDOWS, DECK - 3, 24.0, 0.3) if j in (0, 4) else hull_map(0.75, 0.2))
    shape.face(rings[0][::-1], hull_map(0.7, 0.1))


def hangar_front(shape, ring):
    """The front wall around the opening, and a bright frame."""
    half = mesh.Mesh()
    wall = [*ring[:3], (0, ring[2][1], BAY_FRONT)]
    opening = [(BAY_SIDE, wall[0][1], BAY_FRONT)] + [(x, y, BAY_FRONT) for x, y in BAY_EDGE[1:]]
    for j, quad in mesh.strips(opening, wall, closed=False):
        half.face(quad[mesh.BACK], strip_map(CARRIER_WINDOWS, DECK - 3, 24.0, 0.8) if j == 0 else hull_map(0.75, 0.3))
    inner = [(x, y, BAY_FRONT + 1) for x, y in BAY_EDGE]
    outer = [(x * 1.09, y + 0.09 * (y - DECK), z) for x, y, z in inner]
    back = outer - np.array([0.0, 0.0, 1.0])
    for (_, frame), (_, side) in zip(mesh.strips(inner, outer, False), mesh.strips(outer, back, False)):
        half.face(frame[mesh.BACK], CARRIER_BRIGHT, normal=mesh.GLOWING)
        half.face(side[mesh.BACK], CARRIER_DARK)
    shape.add_both_sides(half)


def bay(shape):
    """The inside of the launch bay: walls, roof and lit back wall."""
    half = mesh.Mesh()
    front, back = ([(x, y, z) for x, y in BAY_EDGE] for z in (BAY_FRONT + 1, BAY_BACK))
    for _, quad in mesh.strips(front, back, closed=False):
        half.face(quad, strip_map(CARRIER_TRENCH, DECK, BAY_TOP, 0.2))
    for z in np.arange(BAY_BACK + 8, BAY_FRONT, 14.0):
        half.face([(BAY_SIDE - 0.5, 15.0, z), (BAY_SIDE - 0.5, 16.2, z),
                   (BAY_SIDE - 0.5, 16.2, z - 7), (BAY_SIDE - 0.5, 15.0, z - 7)], CARRIER_BRIGHT, normal=mesh.GLOWING)
    shape.add_both_sides(half)
    shape.face(back + [(-x, y, z) for x, y, z in back[-2::-1]], bay_map, normal=mesh.GLOWING / 4)


def tower(shape):
    """The bridge: two storeys, a wide head with windows all round."""
    windows = CARRIER_WINDOWS
    shape.box((-13, 31, -62), (13, 42, -18), hull_map(0.6, 0.1), taper=(0.8, 0.85))
    shape.box((-8, 42, -54), (8, 52, -28), strip_map(windows, 42, 66), taper=(0.85, 0.85))
    head = [(17, 52, -24), (17, 52, -46), (-17, 52, -46), (-17, 52, -24)]
    brow = [(19, 56, -20), (19, 56, -49), (-19, 56, -49), (-19, 56, -20)]
    roof = [(13, 60, -27), (13, 60, -45), (-13, 60, -45), (-13, 60, -27)]
    shape.block(brow, head, strip_map(windows, 51, 61, 0.4), caps=0)
    shape.block(roof, brow, hull_map(0.7, 0.3))
    shape.face(head[::-1], hull_map(0.7, 0.5))
    shape.box((-5, 59, -46), (5, 64, -36), hull_map(0.7, 0.0), taper=(0.7, 0.7))


def engine(half, centre, radius, z, length, sides=14):
    """A nozzle with a bright throat and a collar, opening to -z."""
    def ring(part, scale):
        return mesh.round_section(sides, radius * scale, z - length * part, centre)
    body = [ring(1, 0.90), ring(0.72, 1), ring(0.30, 1), ring(0, 0.80)]
    half.loft(body, mesh.arc_coords(body, CARRIER_UNITS, CARRIER_HULL[0] + 0.02, 0.2))
    collar = [ring(0.64, 1), ring(0.60, 1.08), ring(0.42, 1.08), ring(0.38, 1)]
    half.loft(collar, lambda i, j: (0.02 * j, CARRIER_TRENCH[0] + 0.02 + 0.02 * i))
    throat, dim = ring(0.80, 0.76), mesh.GLOWING / 8
    for _, quad in mesh.strips(body[0], throat):
        half.face(quad[mesh.BACK], CARRIER_BRIGHT, normal=[mesh.DARK, dim, dim, mesh.DARK])
    half.glow(throat, z - length * 0.74, CARRIER_GLOW)


def engines(shape):
    engine(shape, (0.0, -5.0), 11.5, -120.0, 22.0)
    half = mesh.Mesh()
    engine(half, (22.0, -5.0), 9.0, -118.0, 18.0)
    engine(half, (53.0, -6.0), 7.5, -92.0, 14.0, 12)
    shape.add_both_sides(half)


def pod(half):
    """A side pod on two pylons, with a dark landing bay in front."""
    rings = [np.array([(53 + w, foot + 5, z), (53 + w, top - 4, z), (53 + w - 4, top, z), (53 - w + 3, top, z),
                       (53 - w, top - 4, z), (53 - w, foot + 5, z), (53 - w + 5, foot, z), (53 + w - 5, foot, z)])
             for z, w, top, foot in [(-94.0, 8.0, 1.0, -14.0), (-84.0, 11.0, 5.0, -17.0), (20.0, 11.0, 5.0, -17.0),
                                     (44.0, 8.5, 1.5, -14.0)]]
    for ring, following in zip(rings, rings[1:]):
        for j, quad in mesh.strips(ring, following):
            # windows outside and inside, plates elsewhere
            half.bent(quad, strip_map(CARRIER_WINDOWS, -13, 6, 0.1) if j in (0, 4) else hull_map(0.75, 0.1 * j, 53.0))
    half.face(rings[0][::-1], hull_map(0.75, 0.2, 53.0))
    pod_mouth(half, rings[-1])
    for z in (-62.0, -8.0):
        near = [(45, 0, z), (45, -9, z), (45, -9, z + 20), (45, 0, z + 20)]
        far = [(30, 1.5, z - 5), (30, -12, z - 5), (30, -12, z + 25), (30, 1.5, z + 25)]
        half.block(far, near, hull_map(0.75, 0.35), caps=0)


def pod_mouth(half, ring):
    """The front of a pod: a frame around a recessed, lit bay."""
    centre = ring.mean(axis=0)
    inner = centre + (ring - centre) * 0.72
    back = inner - np.array([0, 0, 12.0])
    for (_, frame), (_, wall) in zip(mesh.strips(ring, inner), mesh.strips(inner, back)):
        half.face(frame, CARRIER_BRIGHT)
        half.face(wall, CARRIER_DARK)
    half.face(back, bay_map, normal=mesh.GLOWING / 4)


def armour(half):
    """Raised plates on the flanks and the keel, cut to the hull's shape (fixed seed)."""
    rng = np.random.default_rng(23)
    for row, following in zip(HULL, HULL[1:]):
        quads = [quad for _, quad in mesh.strips(hull_ring(*row), hull_ring(*following))]
        length = following[0] - row[0]
        for j in (0, 1, 5):   # keel, flank below the trench, flank above it
            at = rng.uniform(0.5, 4.0)
            while at < length - 5:
                long = min(rng.uniform(5.0, 15.0), length - at - 1.0)
                if rng.random() < 0.8:
                    low = rng.uniform(0.06, 0.45)
                    high = low + rng.uniform(0.28, 0.5)
                    plate(half, quads[j], at / length, (at + long) / length, low, high,
                          rng.uniform(0.5, 1.2), 0.17 * rng.integers(9))
                at += long + rng.uniform(0.6, 3.5)


def plate(half, quad, start, end, low, high, thick, shift):
    """A bevelled plate on a part of a hull quad: `start` to `end` along it, `low` to `high` up."""
    a0, a1, b1, b0 = quad

    def at(along, up):
        return (a0 + (a1 - a0) * up) * (1 - along) + (b0 + (b1 - b0) * up) * along
    foot = np.array([at(start, low), at(start, high), at(end, high), at(end, low)])
    out = mesh.polygon_normal(foot) * thick
    middle = foot.mean(axis=0)
    half.block(middle + (foot - middle) * 0.9 + out, foot - out * 0.3, hull_map(0.74, shift))


def make(path):
    # What pilots see most comes first: then nothing is shaded that it hides.
    shape, half = mesh.Mesh(), mesh.Mesh()
    for part in (deck, hangar, stern_deck, tower):
        part(shape)
    parked_fighters(half, DECK)
    runway_lamps(half, DECK)
    turrets(half)
    lights(half, HULL)
    armour(half)
    pod(half)
    greebles(half)
    shape.add_both_sides(half)
    for part in (antennas, engines, hull):
        part(shape)
    shape.move((0.0, 0.0, AHEAD))
    return mesh.write_obj(path, "carrier", shape, SHADING)
