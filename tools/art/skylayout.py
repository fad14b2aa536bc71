"""Where skybox.png's cells lie on the cube around the viewer.

QUADS must list the same corners as the client's skybox: cube corner (in half edges) and texture coordinate, v = 0 at
the image's first row. The client draws the top quad with twisted coordinates: skytop.py paints its cell.
"""

import numpy as np

U = [0.0007, 0.2493, 0.2507, 0.4993, 0.5007, 0.7493, 0.7507, 0.9993]
V = [0.0007, 0.3326333, 0.3340333, 0.6659667, 0.6673667, 0.9993]

QUADS = {
    "nz": [((1, -1, -1), (U[2], V[2])), ((-1, -1, -1), (U[3], V[2])),
           ((-1, 1, -1), (U[3], V[3])), ((1, 1, -1), (U[2], V[3]))],
    "px": [((1, -1, 1), (U[0], V[2])), ((1, -1, -1), (U[1], V[2])),
           ((1, 1, -1), (U[1], V[3])), ((1, 1, 1), (U[0], V[3]))],
    "pz": [((-1, -1, 1), (U[6], V[2])), ((1, -1, 1), (U[7], V[2])),
           ((1, 1, 1), (U[7], V[3])), ((-1, 1, 1), (U[6], V[3]))],
    "nx": [((-1, -1, -1), (U[4], V[2])), ((-1, -1, 1), (U[5], V[2])),
           ((-1, 1, 1), (U[5], V[3])), ((-1, 1, -1), (U[4], V[3]))],
    "ny": [((-1, -1, -1), (U[3], V[1])), ((-1, -1, 1), (U[3], V[0])),
           ((1, -1, 1), (U[2], V[0])), ((1, -1, -1), (U[2], V[1]))],
}
CELLS = {"px": (0, 1), "nz": (1, 1), "nx": (2, 1), "pz": (3, 1), "ny": (1, 0)}  # column, row
TOP_CELL = (1, 2)


def directions(points):
    """Points on the cube, moved to the unit sphere."""
    return points / np.linalg.norm(points, axis=-1, keepdims=True)


def rise(points):
    """Height on the cube: 0 at the horizon, 1 at the upper end of the side faces."""
    return points[..., 1] / np.maximum(np.abs(points[..., 0]), np.abs(points[..., 2]))


def affine(rows):
    """The 3 x n matrix that takes (a, b, 1) to the values of three corners."""
    keys = np.array([(a, b, 1.0) for (a, b), _ in rows])
    return np.linalg.solve(keys, np.array([value for _, value in rows], float))


def cell_slices(cell, width, height):
    """The rows and columns of an image of this size that a cell takes."""
    column, row = cell
    return (slice(-(-height * row // 3), -(-height * (row + 1) // 3)),
            slice(width * column // 4, width * (column + 1) // 4))


def cell_points(face, width, height):
    """The point of the cube that each pixel of a face's cell shows, an array (rows, columns, 3)."""
    rows, columns = cell_slices(CELLS[face], width, height)
    matrix = affine([(uv, corner) for corner, uv in QUADS[face][:3]])
    u, v = np.meshgrid((np.arange(columns.start, columns.stop) + 0.5) / width,
                       (np.arange(rows.start, rows.stop) + 0.5) / height)
    return np.stack([u, v, np.ones_like(u)], axis=-1) @ matrix
