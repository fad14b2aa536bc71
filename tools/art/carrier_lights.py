"""The carrier's lamps and lit windows, which draw its lines in full team colour from wherever one looks.

Each is a quad whose normals shine. Lengths are the carrier's; z counts from amidships.
"""

import numpy as np

import mesh
from textures import CARRIER_BRIGHT


def light(half, centre, right, up):
    """A quad that shines; `right` and `up` are half its sides, and it faces right x up."""
    centre, right, up = (np.asarray(v, float) for v in (centre, right, up))
    half.face([centre - right - up, centre + right - up, centre + right + up, centre - right + up],
              mesh.constant(*CARRIER_BRIGHT), normal=mesh.GLOWING)


def row(half, first, last, count, right, up):
    for i in range(count):
        part = i / (count - 1)
        light(half, np.asarray(first, float) * (1 - part) + np.asarray(last, float) * part, right, up)


def deck_edge(half, hull):
    """Lamps that follow the edge of the upper deck, seen from above and from the side."""
    z, wide, edge = (np.array([line[k] for line in hull]) for k in (0, 1, 2))
    for at in np.arange(z[0] + 4, z[-1] - 2, 9.5):
        x, y = np.interp(at, z, wide) * 0.885 + 0.2, np.interp(at, z, edge) + 0.3
        light(half, (x, y, at), (0, 0, -1.0), (-0.5, 0.16, 0))


def trench(half, hull):
    """Windows along the bottom of the trench in the side."""
    z, wide = (np.array([line[k] for line in hull]) for k in (0, 1))
    for at in np.arange(z[1] + 6, z[-1] - 40, 11.0):
        light(half, (np.interp(at, z, wide) - 3.6, -1.0, at), (0, 0, -1.6), (0, 0.55, 0))


def bridge(half):
    """The band of windows around the head of the tower."""
    for z, way in ((-22.1, 1), (-47.7, -1)):
        row(half, (way * 1.7, 53.9, z + way * 0.25), (way * 15.3, 53.9, z + way * 0.25), 5,
            (way * 1.25, 0, 0), (0, 0.75, way * 0.55))
    row(half, (18.3, 54.0, -25.0), (18.3, 54.0, -44.5), 6, (0, 0, -1.2), (0.4, 0.75, 0))


def house(half):
    """Windows in the back of the hangar and beacons along its roof."""
    for y, reach in ((11.5, 20.0), (15.0, 18.5), (18.5, 15.5)):
        row(half, (-2.0, y, -96.2), (-reach, y, -96.2), 5, (-0.9, 0, 0), (0, 0.6, 0))
    row(half, (19.4, 32.1, -76.0), (19.4, 32.1, 2.0), 9, (0, 0, -1.2), (-0.6, 0.3, 0))


def stern_and_keel(half, hull):
    row(half, (-3.0, 8.0, -122.2), (-21.0, 8.0, -122.2), 6, (-1.0, 0, 0), (0, 0.5, 0))
    z, keel = (np.array([line[k] for line in hull]) for k in (0, 5))
    for at in np.arange(-96.0, 150.0, 20.0):
        light(half, (6.5, np.interp(at, z, keel) - 0.25, at), (0.7, 0, 0), (0, 0, 1.5))


def pods(half):
    """Windows on the outer flanks of the side pods and along their roofs."""
    row(half, (64.2, -4.5, -80.0), (64.2, -4.5, 16.0), 12, (0, 0, -1.5), (0, 0.55, 0))
    row(half, (60.2, 5.2, -80.0), (60.2, 5.2, 16.0), 7, (0, 0, -1.0), (-0.5, 0.2, 0))


def lights(half, hull):
    deck_edge(half, hull)
    bridge(half)
    house(half)
    pods(half)
    trench(half, hull)
    stern_and_keel(half, hull)
