"""The carrier's lamps and lit windows, which draw its lines in full team colour from wherever one looks.

Each is a quad whose normals shine. Lengths are the carrier's; z counts from amidships.
"""

import numpy as np

import mesh
from textures import CARRIER_BRIGHT

# Rows of lamps: the first and the last one's centre, their number, and half their sides `right` and `up`.
# A lamp faces right x up.
ROWS = [
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
    for first, last, count, right, up in ROWS:
        for place in np.linspace(first, last, count):
            light(half, place, right, up)
    for at in np.arange(z[1] + 6, z[-1] - 40, 11.0):   # along the bottom of the trench in the side
        light(half, (np.interp(at, z, wide) - 3.6, -1.0, at), (0, 0, -1.6), (0, 0.55, 0))
    for at in np.linspace(-3.0, -21.0, 6):             # across the stern
        light(half, (at, 8.0, -122.2), (-1.0, 0, 0), (0, 0.5, 0))
    for at in np.arange(-96.0, 150.0, 20.0):           # below the keel
        light(half, (6.5, np.interp(at, z, keel) - 0.25, at), (0.7, 0, 0), (0, 0, 1.5))
