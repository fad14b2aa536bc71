"""shot.obj: a glint that reads alike from every side, for shots are never turned.

A round core with a long spike on each axis and short ones on the space diagonals. It seems
to glow: the core is lit to the full wherever one looks from, the spikes fade to their tips.
"""

import itertools

import numpy as np

import mesh

CORE = 21.0        # model units; the client draws at 0.01
LONG_SPIKE = 64.0
SHORT_SPIKE = 37.0
FADED = np.zeros(3)  # a normal that takes only the ambient light


def spike(shape, direction, length, width, sides):
    """A thin pyramid from within the core outwards."""
    direction = np.asarray(direction, float)
    direction /= np.linalg.norm(direction)
    helper = np.roll(np.abs(direction), 1) * (1.0, 0.7, 0.4) + (0.1, 0.0, 0.0)
    right = np.cross(direction, helper)
    right /= np.linalg.norm(right)
    up = np.cross(direction, right)
    angles = [2 * np.pi * i / sides for i in range(sides)]
    base = [direction * CORE * 0.8 + width * (right * np.cos(a) + up * np.sin(a))
            for a in angles]
    for i in range(sides):
        shape.face([base[i], base[(i + 1) % sides], direction * length],
                   [(0, 0), (1, 0), (0.5, 1)], normal=[mesh.GLOWING, mesh.GLOWING, FADED])


def icosahedron():
    """Its twenty faces as outward triangles on the unit sphere."""
    g = (1 + 5 ** 0.5) / 2
    corners = [np.roll(np.array([0.0, a, b * g]), k)
               for k in range(3) for a in (-1, 1) for b in (-1, 1)]
    corners = [c / np.linalg.norm(c) for c in corners]
    edge = min(np.linalg.norm(corners[0] - c) for c in corners[1:])
    for a, b, c in itertools.combinations(corners, 3):
        if max(np.linalg.norm(p - q) for p, q in ((a, b), (b, c), (c, a))) < edge * 1.01:
            yield [a, b, c] if np.dot(np.cross(b - a, c - a), a) > 0 else [a, c, b]


def core(shape):
    """A ball: the icosahedron with each face cut in four."""
    for a, b, c in icosahedron():
        ab, bc, ca = ((p + q) / np.linalg.norm(p + q) for p, q in ((a, b), (b, c), (c, a)))
        for triangle in ((a, ab, ca), (ab, b, bc), (ca, bc, c), (ab, bc, ca)):
            shape.face(np.array(triangle) * CORE, [(0, 0), (1, 0), (0.5, 1)], normal=mesh.GLOWING)


def build():
    shape = mesh.Mesh()
    core(shape)
    for axis in np.vstack([np.eye(3), -np.eye(3)]):
        spike(shape, axis, LONG_SPIKE, 8.0, 4)
    for signs in itertools.product((-1, 1), repeat=3):
        spike(shape, signs, SHORT_SPIKE, 8.0, 3)
    return shape


def make(path):
    return mesh.write_obj(path, "shot", build(), (0, 0, 0))
