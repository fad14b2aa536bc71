"""shot.obj: a bolt that reads alike from every side, for shots are never turned.

A round core with a long spike on each axis and short ones on the space diagonals.
"""

import itertools

import numpy as np

import mesh

CORE = 25.0        # model units; the client draws at 0.01
LONG_SPIKE = 58.0
SHORT_SPIKE = 40.0
SCALE = 0.01
BRIGHTNESS = 2.2   # normals longer than true: most of the bolt is lit to the full


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
                   [(0, 0), (1, 0), (0.5, 1)])


def core(shape):
    """An icosahedron, shaded smooth."""
    g = (1 + 5 ** 0.5) / 2
    corners = [np.roll(np.array([0.0, a, b * g]), k)
               for k in range(3) for a in (-1, 1) for b in (-1, 1)]
    corners = [c * CORE / np.linalg.norm(c) for c in corners]
    edge = min(np.linalg.norm(corners[0] - c) for c in corners[1:])
    group = shape.new_group()
    for a, b, c in itertools.combinations(corners, 3):
        sides = [np.linalg.norm(p - q) for p, q in ((a, b), (b, c), (c, a))]
        if max(sides) > edge * 1.01:
            continue
        outward = np.dot(np.cross(b - a, c - a), a) > 0
        shape.face([a, b, c] if outward else [a, c, b], [(0, 0), (1, 0), (0.5, 1)], group)


def build():
    shape = mesh.Mesh()
    core(shape)
    for axis in np.vstack([np.eye(3), -np.eye(3)]):
        spike(shape, axis, LONG_SPIKE, 9.0, 4)
    for signs in itertools.product((-1, 1), repeat=3):
        spike(shape, signs, SHORT_SPIKE, 9.0, 3)
    return shape


def make(path):
    return mesh.write_obj(path, "shot", build(), (0, 0, 0), SCALE * BRIGHTNESS)
