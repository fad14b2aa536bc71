"""carrier.obj: a fleet carrier, bow along +z, up +y, drawn unscaled.

The client draws it shifted by (0, -13, -130), so ships of the team start at model
point (0, 13, 130): five units above the launch deck, with the hangar they came from
behind them and the runway ahead. The tables here count z from amidships; AHEAD moves
the finished ship to its place.
"""

import numpy as np

import mesh
from carrier_fittings import antennas, greebles, parked_fighters, runway_lamps, turrets
from carrier_lights import lights
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


def hull_map(v_centre=0.75, shift=0.0):
    return mesh.planar(CARRIER_UNITS, v_centre, shift)


def strip_map(strip, low, high, shift=0.0):
    """Fills a texture strip's height between two heights y; u runs along the hull."""
    def coords(points, normal):
        along = 2 if abs(normal[0]) > abs(normal[2]) else 0
        return [(p[along] / CARRIER_UNITS + shift,
                 strip[0] + 0.002 + (strip[1] - strip[0] - 0.004) * (p[1] - low) / (high - low))
                for p in points]
    return coords


def hull_ring(z, w, edge, hi, lo, keel):
    at_end = z in (HULL[0][0], HULL[-1][0])
    inset = w if at_end else w - (4.0 if w > 22 else 2.0)
    right = [(w * 0.42, keel), (w * 0.86, (lo + keel) / 2), (w, lo), (inset, lo), (inset, hi),
             (w, hi), (w * 0.88, edge)]
    left = [(-x, y) for x, y in reversed(right)]
    return [(x, y, z) for x, y in right + left]


def hull(shape):
    rings = [np.array(hull_ring(*row)) for row in HULL]
    for (row0, row1), a, b in zip(zip(HULL, HULL[1:]), rings, rings[1:]):
        for j in range(14):
            if j == 6:
                continue  # the deck has its own texture map
            k = (j + 1) % 14
            quad = [a[j], a[k], b[k], b[j]]
            shape.face([quad[0], quad[1], quad[2]], side_map(j, row0, row1))
            shape.face([quad[0], quad[2], quad[3]], side_map(j, row0, row1))
    stern, bow = rings[0][::-1], rings[-1]
    shape.face(convex_outline(stern), hull_map(0.74, 0.1))
    shape.face(convex_outline(bow), hull_map(0.74, 0.3))


def convex_outline(ring):
    """The ring without the trench's inner corners, as an end cap."""
    return np.delete(ring, [3, 4, 9, 10], axis=0)


def side_map(j, row0, row1):
    """The texture map of hull strip j: machinery in the trench, plates elsewhere."""
    if j in (3, 9):
        low, high = min(row0[4], row1[4]), max(row0[3], row1[3])
        return strip_map(CARRIER_TRENCH, low, high)
    if j in (2, 4, 8, 10):
        return mesh.constant(*CARRIER_DARK)
    return hull_map(0.76, 0.13 * j)


def deck(shape):
    """The launch deck from the hangar's back wall to the bow, and plates beside it."""
    u0, v0, u1, v1 = CARRIER_DECK
    for z0 in np.arange(DECK_FIRST, DECK_END, DECK_CELL):
        z1 = min(z0 + DECK_CELL, DECK_END)
        end = u0 + (u1 - u0) * (z1 - z0) / DECK_CELL
        shape.face([(DECK_SIDE, DECK, z0), (-DECK_SIDE, DECK, z0), (-DECK_SIDE, DECK, z1),
                    (DECK_SIDE, DECK, z1)], [(u0, v0), (u0, v1), (end, v1), (end, v0)])
    half = mesh.Mesh()
    edges = [(row[0], row[1] * 0.88, row[2]) for row in HULL if row[0] >= BAY_FRONT]
    for (z0, w0, y0), (z1, w1, y1) in zip(edges, edges[1:]):
        half.face([(w0, y0, z0), (DECK_SIDE, DECK, z0), (DECK_SIDE, DECK, z1), (w1, y1, z1)],
                  hull_map(0.62, 0.4))
    rails(half)
    dull(half)
    prong(half)
    shape.add_both_sides(half)
    bow = HULL[-1][0]
    shape.face([(DECK_SIDE, DECK, DECK_END), (-DECK_SIDE, DECK, DECK_END),
                (-DECK_SIDE, DECK, bow), (DECK_SIDE, DECK, bow)], mesh.constant(*CARRIER_BRIGHT))


def dull(shape):
    """Takes all light but the ambient one, so that ships stand out before hull plates as before the runway."""
    for face in shape.faces:
        face.normal = np.zeros_like(face.points)


def rails(half):
    """Low walls along the deck, open where lamps stand."""
    for z0 in np.arange(30.0, 176.0, 17.0):
        half.box((13.2, DECK - 0.2, z0), (14.6, DECK + 1.3, z0 + 13.0), hull_map(0.7, 0.2),
                 skip=("far",), taper=(0.6, 0.96))


def prong(half):
    """The catapult's arm, which reaches beyond the bow."""
    root = [(16.2, 8.6, 176), (16.2, 3.0, 176), (11.0, 3.0, 176), (11.0, 8.6, 176)]
    knee = [(15.6, 8.6, 202), (15.6, 4.4, 202), (11.8, 4.4, 202), (11.8, 8.6, 202)]
    tip = [(14.4, 7.6, 212), (14.4, 5.4, 212), (12.6, 5.4, 212), (12.6, 7.6, 212)]
    half.hexahedron(knee, root, hull_map(0.75, 0.3), ("near", "far"))
    half.hexahedron(tip, knee, hull_map(0.75, 0.6), ("near", "far"))
    half.face(tip[::-1] if mesh.polygon_normal(np.array(tip, float))[2] < 0 else tip,
              mesh.constant(*CARRIER_BRIGHT))


def stern_deck(shape):
    """The plates on top of the hull behind the hangar's mouth."""
    rows = [(r[0], r[1] * 0.88, r[2]) for r in HULL if r[0] <= BAY_FRONT]
    for (z0, w0, y0), (z1, w1, y1) in zip(rows, rows[1:]):
        inner0 = inner1 = BAY_SIDE if z0 >= BAY_BACK - 30 else 0.0
        for s in (1, -1):
            quad = [(s * w0, y0, z0), (s * inner0, y0, z0), (s * inner1, y1, z1),
                    (s * w1, y1, z1)]
            shape.face(quad if s > 0 else quad[::-1], hull_map(0.75, 0.55))


def hangar(shape):
    """The house amidships with the launch bay through its front."""
    def outline(z, w, top):
        return [(w, DECK - 3, z), (w, top - 8, z), (w - 8, top, z), (-w + 8, top, z),
                (-w, top - 8, z), (-w, DECK - 3, z)]
    rings = [np.array(outline(z, w, top)) for z, w, top in
             [(-96.0, 22.0, 22.0), (-78.0, 27.0, 32.0), (4.0, 27.0, 32.0), (26.0, 22.0, 27.0)]]
    hangar_front(shape, rings[-1])
    bay(shape)
    for a, b in zip(rings, rings[1:]):
        for j in range(5):
            coords = (strip_map(CARRIER_WINDOWS, DECK - 3, 24.0, 0.3) if j in (0, 4)
                      else hull_map(0.75, 0.2))
            shape.face([a[j], a[j + 1], b[j + 1]], coords)
            shape.face([a[j], b[j + 1], b[j]], coords)
    shape.face(rings[0][::-1], hull_map(0.7, 0.1))


def hangar_front(shape, ring):
    """The front wall around the opening, and a bright frame."""
    z = BAY_FRONT
    half = mesh.Mesh()
    foot, shoulder, roof = ring[0], ring[1], ring[2]
    coords = strip_map(CARRIER_WINDOWS, DECK - 3, 24.0, 0.8)
    half.face([(BAY_SIDE, foot[1], z), foot, shoulder, (BAY_SIDE, BAY_TOP - 3, z)], coords)
    half.face([(BAY_SIDE, BAY_TOP - 3, z), shoulder, roof, (BAY_SIDE - 3, BAY_TOP, z)],
              hull_map(0.75, 0.3))
    half.face([(BAY_SIDE - 3, BAY_TOP, z), roof, (0, roof[1], z), (0, BAY_TOP, z)],
              hull_map(0.75, 0.3))
    edge = [(BAY_SIDE, DECK), (BAY_SIDE, BAY_TOP - 3), (BAY_SIDE - 3, BAY_TOP), (0, BAY_TOP)]
    for (x0, y0), (x1, y1) in zip(edge, edge[1:]):
        grow0, grow1 = (x0 * 1.09, y0 + 0.09 * (y0 - DECK)), (x1 * 1.09, y1 + 0.09 * (y1 - DECK))
        half.face([(x0, y0, z + 1), (*grow0, z + 1), (*grow1, z + 1), (x1, y1, z + 1)],
                  mesh.constant(*CARRIER_BRIGHT), normal=mesh.GLOWING)
        half.face([(*grow0, z + 1), (*grow0, z), (*grow1, z), (*grow1, z + 1)],
                  mesh.constant(*CARRIER_DARK))
    shape.add_both_sides(half)


def bay(shape):
    """The inside of the launch bay: walls, roof and lit back wall."""
    half = mesh.Mesh()
    wall = strip_map(CARRIER_TRENCH, DECK, BAY_TOP, 0.2)
    edge = [(BAY_SIDE, DECK), (BAY_SIDE, BAY_TOP - 3), (BAY_SIDE - 3, BAY_TOP), (0, BAY_TOP)]
    for (x0, y0), (x1, y1) in zip(edge, edge[1:]):
        half.face([(x0, y0, BAY_FRONT + 1), (x1, y1, BAY_FRONT + 1), (x1, y1, BAY_BACK),
                   (x0, y0, BAY_BACK)], wall)
    for z in np.arange(BAY_BACK + 8, BAY_FRONT, 14.0):
        half.face([(BAY_SIDE - 0.5, 15.0, z), (BAY_SIDE - 0.5, 16.2, z),
                   (BAY_SIDE - 0.5, 16.2, z - 7), (BAY_SIDE - 0.5, 15.0, z - 7)],
                  mesh.constant(*CARRIER_BRIGHT), normal=mesh.GLOWING)
    shape.add_both_sides(half)
    u0, v0, u1, v1 = CARRIER_BAY
    full = [(x, y) for x, y in edge] + [(-x, y) for x, y in reversed(edge[:-1])]
    shape.face([(x, y, BAY_BACK) for x, y in full],
               [(u0 + (u1 - u0) * (x / BAY_SIDE + 1) / 2,
                 v0 + (v1 - v0) * (y - DECK) / (BAY_TOP - DECK)) for x, y in full],
               normal=mesh.GLOWING / 4)


def tower(shape):
    """The bridge: two storeys, a wide head with windows all round."""
    windows = CARRIER_WINDOWS
    shape.box((-13, 31, -62), (13, 42, -18), hull_map(0.6, 0.1), ("far",), (0.8, 0.85))
    shape.box((-8, 42, -54), (8, 52, -28), strip_map(windows, 42, 66), ("far",), (0.85, 0.85))
    head = [(17, 52, -24), (17, 52, -46), (-17, 52, -46), (-17, 52, -24)]
    brow = [(19, 56, -20), (19, 56, -49), (-19, 56, -49), (-19, 56, -20)]
    roof = [(13, 60, -27), (13, 60, -45), (-13, 60, -45), (-13, 60, -27)]
    shape.hexahedron(brow, head, strip_map(windows, 51, 61, 0.4), ("near", "far"))
    shape.hexahedron(roof, brow, hull_map(0.7, 0.3), ("far",))
    shape.face(head[::-1], hull_map(0.7, 0.5))
    shape.box((-5, 59, -46), (5, 64, -36), hull_map(0.7, 0.0), ("far",), (0.7, 0.7))


def engine(half, centre, radius, z, length, sides=14):
    """A nozzle with a bright throat and a collar, opening to -z."""
    def ring(at, r):
        return mesh.ring_points(sides, r, at, centre)
    rings = [ring(z - length, radius * 0.90), ring(z - length * 0.72, radius),
             ring(z - length * 0.30, radius), ring(z, radius * 0.80)]
    half.loft(rings, mesh.arc_coords(rings, CARRIER_UNITS, CARRIER_HULL[0] + 0.02, 0.2))
    mouth, throat = rings[0], ring(z - length * 0.80, radius * 0.76)
    band = [ring(z - length * 0.60, radius * 1.08), ring(z - length * 0.42, radius * 1.08)]
    feet = [ring(z - length * 0.64, radius), ring(z - length * 0.38, radius)]
    collar = [feet[0], band[0], band[1], feet[1]]
    half.loft(collar, lambda i, j: (0.02 * j, CARRIER_TRENCH[0] + 0.02 + 0.02 * i))
    for j in range(sides):
        k = (j + 1) % sides
        half.face([mouth[j], throat[j], throat[k], mouth[k]], mesh.constant(*CARRIER_BRIGHT),
                  normal=[np.zeros(3), mesh.GLOWING / 8, mesh.GLOWING / 8, np.zeros(3)])
    spot, size = CARRIER_GLOW
    half.fan(throat[::-1], (*centre, z - length * 0.74),
             mesh.disc_coords(sides, spot, size)[::-1], spot, normal=mesh.GLOWING)


def engines(shape):
    engine(shape, (0.0, -5.0), 11.5, -120.0, 22.0)
    half = mesh.Mesh()
    engine(half, (22.0, -5.0), 9.0, -118.0, 18.0)
    engine(half, (53.0, -6.0), 7.5, -92.0, 14.0, 12)
    shape.add_both_sides(half)


def pod(half):
    """A side pod on two pylons, with a dark landing bay in front."""
    def outline(z, w, top, foot):
        cx = 53.0
        return [(cx + w, foot + 5, z), (cx + w, top - 4, z), (cx + w - 4, top, z),
                (cx - w + 3, top, z), (cx - w, top - 4, z), (cx - w, foot + 5, z),
                (cx - w + 5, foot, z), (cx + w - 5, foot, z)]
    rows = [(-94.0, 8.0, 1.0, -14.0), (-84.0, 11.0, 5.0, -17.0), (20.0, 11.0, 5.0, -17.0),
            (44.0, 8.5, 1.5, -14.0)]
    rings = [np.array(outline(*row)) for row in rows]
    for a, b in zip(rings, rings[1:]):
        for j in range(8):
            k = (j + 1) % 8
            coords = pod_map(j)
            half.face([a[j], a[k], b[k]], coords)
            half.face([a[j], b[k], b[j]], coords)
    half.face(rings[0][::-1], pod_map(2))
    pod_mouth(half, rings[-1])
    for z in (-62.0, -8.0):
        near = [(45, 0, z), (45, -9, z), (45, -9, z + 20), (45, 0, z + 20)]
        far = [(30, 1.5, z - 5), (30, -12, z - 5), (30, -12, z + 25), (30, 1.5, z + 25)]
        half.hexahedron(far, near, hull_map(0.75, 0.35), ("near", "far"))


def pod_map(j):
    """The texture map of pod strip j: windows outside and inside, plates elsewhere."""
    if j in (0, 4):
        return strip_map(CARRIER_WINDOWS, -13, 6, 0.1)
    plates = hull_map(0.75, 0.1 * j)

    def shifted(points, normal):
        # the pod lies 53 units off the axis: slide it back into the texture's plating
        return plates([p - np.array([53.0, 0, 0]) for p in points], normal)
    return shifted


def pod_mouth(half, ring):
    """The front of a pod: a frame around a recessed, lit bay."""
    centre = ring.mean(axis=0)
    inner = centre + (ring - centre) * 0.72
    back = inner - np.array([0, 0, 12.0])
    u0, v0, u1, v1 = CARRIER_BAY
    low, high = inner.min(axis=0), inner.max(axis=0)
    for j in range(8):
        k = (j + 1) % 8
        half.face([ring[j], ring[k], inner[k], inner[j]], mesh.constant(*CARRIER_BRIGHT))
        half.face([inner[j], inner[k], back[k], back[j]], mesh.constant(*CARRIER_DARK))
    uv = [(u0 + (u1 - u0) * (p[0] - low[0]) / (high[0] - low[0]),
           v0 + (v1 - v0) * (p[1] - low[1]) / (high[1] - low[1])) for p in inner]
    half.face(back, uv, normal=mesh.GLOWING / 4)


def armour(half):
    """Raised plates on the flanks and the keel, cut to the hull's shape (fixed seed)."""
    rng = np.random.default_rng(23)
    for row0, row1 in zip(HULL, HULL[1:]):
        a, b = np.array(hull_ring(*row0)), np.array(hull_ring(*row1))
        length = row1[0] - row0[0]
        for j in (0, 1, 5):   # keel, flank below the trench, flank above it
            quad = a[j], a[j + 1], b[j + 1], b[j]
            at = rng.uniform(0.5, 4.0)
            while at < length - 5:
                long = min(rng.uniform(5.0, 15.0), length - at - 1.0)
                if rng.random() < 0.8:
                    low = rng.uniform(0.06, 0.45)
                    high = low + rng.uniform(0.28, 0.5)
                    plate(half, quad, at / length, (at + long) / length, low, high,
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
    top = middle + (foot - middle) * 0.9 + out
    half.hexahedron(top, foot - out * 0.3, hull_map(0.74, shift), ("far",))


def build():
    """What pilots see most comes first: what it hides then costs no shading."""
    shape = mesh.Mesh()
    deck(shape)
    hangar(shape)
    stern_deck(shape)
    tower(shape)
    half = mesh.Mesh()
    parked_fighters(half, DECK)
    runway_lamps(half, np.arange(44.5, 180.0, 17.0), DECK)
    turrets(half)
    lights(half, HULL)
    armour(half)
    pod(half)
    greebles(half)
    shape.add_both_sides(half)
    antennas(shape)
    engines(shape)
    hull(shape)
    shape.move((0.0, 0.0, AHEAD))
    return shape


def make(path):
    return mesh.write_obj(path, "carrier", build(), (0, 0, 0), SHADING)
