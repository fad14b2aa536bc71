"""shot.obj: a ball of plasma with a glint, alike from every side, for shots are never turned.

The ball is lit nearly to the full, a little less towards its foot, which makes it round. A
spike on each axis flows out of the ball and fades to its tip, like a glint.
"""

import itertools

import numpy as np

import mesh

SCALE = 0.01
CORE = 28.0  # model units
CUTS = 2     # of each edge of the icosahedron
SPIKE = [(0.9 * CORE, 8.0), (1.2 * CORE, 3.2)]  # how far from the middle, half its width there
REACH = 59.0
SIDES = 4
COORDS = [(0, 0), (1, 0), (0.5, 1)]
DIM = mesh.GLOWING / 10  # takes four fifths of the light from above


def spike(shape, direction):
    """A glint from within the core outwards, wide at its foot so that it flows out of the ball."""
    right = np.roll(direction, 1)
    up = np.cross(direction, right)
    angles = [2 * np.pi * i / SIDES for i in range(SIDES)]
    foot, neck = ([direction * way + width * (right * np.cos(a) + up * np.sin(a)) for a in angles]
                  for way, width in SPIKE)
    for i in range(SIDES):
        k = (i + 1) % SIDES
        shape.face([foot[i], foot[k], neck[k], neck[i]], [*COORDS, (0, 1)], normal=mesh.GLOWING)
        shape.face([neck[i], neck[k], direction * REACH], COORDS,
                   normal=[mesh.GLOWING, mesh.GLOWING, DIM])


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
    """A ball: each face of the icosahedron cut in CUTS x CUTS."""
    ball = shape.new_group()
    for a, b, c in icosahedron():
        def at(i, j):
            point = a + (b - a) * i / CUTS + (c - a) * j / CUTS
            return point / np.linalg.norm(point) * CORE
        for i, j in ((i, j) for i in range(CUTS) for j in range(CUTS - i)):
            shape.face([at(i, j), at(i + 1, j), at(i, j + 1)], COORDS, ball)
            if i + j < CUTS - 1:
                shape.face([at(i + 1, j), at(i + 1, j + 1), at(i, j + 1)], COORDS, ball)


def build():
    shape = mesh.Mesh()
    core(shape)
    for axis in np.vstack([np.eye(3), -np.eye(3)]):
        spike(shape, axis)
    return shape


def make(path):
    return mesh.write_obj(path, "shot", build(), (0, 0, 0), mesh.Shading(SCALE, relief=0.25, lift=0.9))
