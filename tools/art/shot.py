"""shot.obj: a burst of plasma that looks the same from every side, because the client never turns shots.

A small ball in full team colour throws needles towards the corners, faces and edges of an icosahedron: long, middling
and short ones, like the glare of a bright light. The long and the middling ones darken towards their tips, but only a
little: a dark tip that points at the viewer would be a blot. The short ones stay bright, so the middle does too. The
client draws shots without texture and transparency, so nothing else can fade.
"""

import itertools

import numpy as np

import mesh

SCALE = 0.01
CORE = 24.0        # model units; the dot that is left of the shot 100 world units away
FOOT = 0.8 * CORE  # of the needles: within the ball, so that no gap shows
SIDES = 3
COORDS = [(0, 0), (1, 0), (0.5, 1)]
BRIGHT = 6 * mesh.GLOWING  # full light from nearly everywhere, also from above
FADED = np.array([0.0, 0.5, 0.0])  # short enough that the lights no longer saturate

# half the width at the foot, reach, normal at the tip
LONG = (5.0, 54.0, FADED)
MIDDLING = (5.0, 42.0, FADED)
SHORT = (5.0, 32.0, BRIGHT)


def unit(vector):
    return vector / np.linalg.norm(vector)


def icosahedron():
    """Its twelve corners on the unit sphere, the directions of its edges, and its faces as outward triangles."""
    g = (1 + 5 ** 0.5) / 2
    corners = [unit(np.roll([0.0, a, b * g], k)) for k in range(3) for a in (-1, 1) for b in (-1, 1)]
    length = 1.01 * min(np.linalg.norm(corners[0] - c) for c in corners[1:])

    def neighbours(count):
        return [points for points in itertools.combinations(corners, count)
                if all(np.linalg.norm(p - q) < length for p, q in itertools.combinations(points, 2))]
    edges = np.unique(np.round([unit(p + q) for p, q in neighbours(2)], 9) + 0.0, axis=0)
    faces = [(a, b, c) if np.dot(np.cross(b - a, c - a), a) > 0 else (a, c, b) for a, b, c in neighbours(3)]
    return corners, edges, faces


def needle(shape, direction, width, reach, tip):
    right = unit(np.cross(direction, (0.3, 0.5, 0.8)))
    up = np.cross(direction, right)
    foot = [direction * FOOT + right * x + up * y for x, y in mesh.circle(SIDES, (0, 0), width)]
    for i in range(SIDES):
        shape.face([foot[i], foot[(i + 1) % SIDES], direction * reach], COORDS, normal=[BRIGHT, BRIGHT, tip])


def make(path):
    shape = mesh.Mesh()
    corners, edges, faces = icosahedron()
    for face in faces:
        shape.face(np.multiply(face, CORE), COORDS, normal=BRIGHT)
    for corner in corners:
        needle(shape, corner, *LONG)
    for face in faces:
        needle(shape, unit(sum(face)), *MIDDLING)
    for edge in edges:
        if max(np.abs(edge)) < 0.99:  # the six that lie on the axes are left out to save triangles
            needle(shape, edge, *SHORT)
    return mesh.write_obj(path, "shot", shape, mesh.Shading(SCALE))
