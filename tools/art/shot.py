"""shot.obj: a burst of plasma, alike from every side, for shots are never turned.

A small ball in full team colour throws needles in the directions in which an icosahedron has
corners, faces and edges: long, middling and short ones, as the glare of a light too bright for
the eye. The longer ones darken a little towards their tips, not so much that one which points
at the viewer makes a blot; the short ones stay bright, so that the middle does. Nothing else
can fade, for the client draws shots without texture and without transparency.
"""

import itertools

import numpy as np

import mesh

SCALE = 0.01
CORE = 24.0        # model units; the dot that is left of it 100 world units away
FOOT = 0.8 * CORE  # of the needles: within the ball, so that no gap shows
SIDES = 3
COORDS = [(0, 0), (1, 0), (0.5, 1)]
BRIGHT = 6 * mesh.GLOWING  # full light also for who looks down on it, but for two degrees
FADED = np.array([0.0, 0.5, 0.0])  # short enough that the lights no longer saturate

# half the width at the foot, reach, normal at the tip
GLARE = (5.0, 54.0, FADED)
RAY = (5.0, 42.0, FADED)
SPARK = (5.0, 32.0, BRIGHT)


def icosahedron():
    """Its twelve corners on the unit sphere, and its faces as outward triangles."""
    g = (1 + 5 ** 0.5) / 2
    corners = [np.roll(np.array([0.0, a, b * g]), k)
               for k in range(3) for a in (-1, 1) for b in (-1, 1)]
    corners = [c / np.linalg.norm(c) for c in corners]
    edge = min(np.linalg.norm(corners[0] - c) for c in corners[1:])
    faces = []
    for a, b, c in itertools.combinations(corners, 3):
        if max(np.linalg.norm(p - q) for p, q in ((a, b), (b, c), (c, a))) < edge * 1.01:
            faces.append([a, b, c] if np.dot(np.cross(b - a, c - a), a) > 0 else [a, c, b])
    return corners, faces


def unit(vector):
    return vector / np.linalg.norm(vector)


def needle(shape, direction, width, reach, tip):
    right = unit(np.cross(direction, (0.3, 0.5, 0.8)))
    up = np.cross(direction, right)
    angles = np.arange(SIDES) * 2 * np.pi / SIDES
    foot = [direction * FOOT + width * (right * np.cos(a) + up * np.sin(a)) for a in angles]
    for i in range(SIDES):
        shape.face([foot[i], foot[(i + 1) % SIDES], direction * reach], COORDS,
                   normal=[BRIGHT, BRIGHT, tip])


def build():
    shape = mesh.Mesh()
    corners, faces = icosahedron()
    for face in faces:
        shape.face([p * CORE for p in face], COORDS, normal=BRIGHT)
    for corner in corners:
        needle(shape, corner, *GLARE)
    for face in faces:
        needle(shape, unit(sum(face)), *RAY)
    edges = {tuple(np.round(unit(p + q), 9) + 0.0) for f in faces for p, q in itertools.combinations(f, 2)}
    for edge in sorted(edges):
        if max(np.abs(edge)) < 0.99:  # six of the thirty lie on the axes: left out to save triangles
            needle(shape, np.array(edge), *SPARK)
    return shape


def make(path):
    return mesh.write_obj(path, "shot", build(), mesh.Shading(SCALE))
