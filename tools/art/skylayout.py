"""Where skybox.png's cells lie on the cube around the viewer.

QUADS must list the same corners as the client's skybox: cube corner (in half edges)
and texture coordinate, v = 0 at the image's first row. The top quad twists its cell.
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
    "py": [((-1, 1, -1), (U[2], V[4])), ((-1, 1, 1), (U[3], V[5])),
           ((1, 1, 1), (U[2], V[5])), ((1, 1, -1), (U[3], V[4]))],
    "ny": [((-1, -1, -1), (U[3], V[1])), ((-1, -1, 1), (U[3], V[0])),
           ((1, -1, 1), (U[2], V[0])), ((1, -1, -1), (U[2], V[1]))],
}
CELLS = {"px": (0, 1), "nz": (1, 1), "nx": (2, 1), "pz": (3, 1), "ny": (1, 0), "py": (1, 2)}
TOP = "py"


def affine(rows):
    """The 3 x n matrix that takes (a, b, 1) to the values of three corners."""
    keys = np.array([(a, b, 1.0) for (a, b), _ in rows])
    return np.linalg.solve(keys, np.array([value for _, value in rows], float))


def cell_directions(face, width, height):
    """The direction that each pixel of an untwisted face's cell shows, with its row range.

    Returns (slice of rows, slice of columns, array (rows, columns, 3) on the cube).
    """
    column, row = CELLS[face]
    x0, x1 = width * column // 4, width * (column + 1) // 4
    y0, y1 = -(-height * row // 3), -(-height * (row + 1) // 3)
    matrix = affine([(uv, corner) for corner, uv in QUADS[face][:3]])
    u, v = np.meshgrid((np.arange(x0, x1) + 0.5) / width, (np.arange(y0, y1) + 0.5) / height)
    points = np.stack([u, v, np.ones_like(u)], axis=-1) @ matrix
    return slice(y0, y1), slice(x0, x1), points


def texture_of_direction(rays):
    """Texture coordinates (u, v) that the client's cube shows in each direction (n, 3)."""
    points = rays / np.abs(rays).max(axis=1, keepdims=True)
    uv = np.zeros((len(rays), 2))
    for face, quad in QUADS.items():
        axis, sign = "xyz".index(face[1]), 1 if face[0] == "p" else -1
        on_face = points[:, axis] * sign > 1 - 1e-9
        across = [i for i in range(3) if i != axis]
        # the two triangles that drivers usually cut a quad into
        for corners in ([0, 1, 3], [1, 2, 3]):
            matrix = affine([([quad[i][0][k] for k in across], quad[i][1]) for i in corners])
            local = np.column_stack([points[:, across], np.ones(len(points))])
            inside = on_face & in_triangle(local[:, :2],
                                           [[quad[i][0][k] for k in across] for i in corners])
            uv[inside] = (local @ matrix)[inside]
    return uv[:, 0], uv[:, 1]


def in_triangle(points, corners):
    a, b, c = np.asarray(corners, float)
    weights = np.linalg.solve(np.column_stack([b - a, c - a]), (points - a).T)
    return (weights > -1e-9).all(axis=0) & (weights.sum(axis=0) < 1 + 1e-9)
