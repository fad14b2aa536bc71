"""Draws models before the sky as the client does, without a window: what the icons are made with.

A small software rasteriser with OpenGL's fixed lighting: two lights fixed to the
viewer, normals that are not renormalised, a team colour multiplied into the texture.
"""

import math
import pathlib

import numpy as np
from PIL import Image

import skylayout

RESOURCES = pathlib.Path(__file__).resolve().parents[2] / "Resources"
LIGHTS = [((-1.0, 0.0, 0.0), 1.0), ((0.0, 1.0, 0.0), 0.5)]  # direction to it, strength
AMBIENT = 0.5


def load_obj(path):
    """Triangles as arrays (n, 3, 3) of points, (n, 3, 2) of coordinates, (n, 3, 3) of normals."""
    lists = {"v": [], "vt": [], "vn": []}
    faces = []
    for line in open(path, encoding="ascii"):
        word, *rest = line.split()
        if word in lists:
            lists[word].append([float(x) for x in rest])
        elif word == "f":
            faces.append([[int(n) - 1 for n in corner.split("/")] for corner in rest])
    faces = np.array(faces)
    return tuple(np.array(lists[k])[faces[:, :, i]] for i, k in enumerate(("v", "vt", "vn")))


def load_image(name):
    return np.asarray(Image.open(RESOURCES / name), float) / 255.0


def sample(image, u, v):
    """Bilinear and repeating; v = 0 is the first row."""
    height, width = image.shape[:2]
    x, y = u * width - 0.5, v * height - 0.5
    x0, y0 = np.floor(x).astype(int), np.floor(y).astype(int)
    fx, fy = (x - x0)[..., None], (y - y0)[..., None]
    x1, y1 = (x0 + 1) % width, (y0 + 1) % height
    x0, y0 = x0 % width, y0 % height
    upper = image[y0, x0] * (1 - fx) + image[y0, x1] * fx
    lower = image[y1, x0] * (1 - fx) + image[y1, x1] * fx
    return upper * (1 - fy) + lower * fy


def texture_of_direction(rays):
    """Texture coordinates (u, v) that the client's cube shows in each direction (n, 3)."""
    points = rays / np.abs(rays).max(axis=1, keepdims=True)
    uv = np.zeros((len(rays), 2))
    for face, quad in skylayout.QUADS.items():
        axis, sign = "xyz".index(face[1]), 1 if face[0] == "p" else -1
        on_face = points[:, axis] * sign > 1 - 1e-9
        across = [i for i in range(3) if i != axis]
        # the two triangles that drivers usually cut a quad into
        for corners in ([0, 1, 3], [1, 2, 3]):
            matrix = skylayout.affine([([quad[i][0][k] for k in across], quad[i][1]) for i in corners])
            local = np.column_stack([points[:, across], np.ones(len(points))])
            inside = on_face & in_triangle(local[:, :2],
                                           [[quad[i][0][k] for k in across] for i in corners])
            uv[inside] = (local @ matrix)[inside]
    return uv[:, 0], uv[:, 1]


def in_triangle(points, corners):
    a, b, c = np.asarray(corners, float)
    weights = np.linalg.solve(np.column_stack([b - a, c - a]), (points - a).T)
    return (weights > -1e-9).all(axis=0) & (weights.sum(axis=0) < 1 + 1e-9)


class View:
    """A picture with a depth buffer, seen with `fov` degrees from its top to its bottom."""

    def __init__(self, eye, direction, size, fov):
        self.width, self.height = size
        self.colour = np.zeros((self.height, self.width, 3))
        self.depth = np.full((self.height, self.width), np.inf)
        forward = np.asarray(direction, float) / np.linalg.norm(direction)
        side = np.cross(forward, (0, 1, 0))
        side /= np.linalg.norm(side)
        self.rotation = np.array([side, np.cross(side, forward), -forward])
        self.eye = np.asarray(eye, float)
        self.focal = self.height / 2 / math.tan(math.radians(fov) / 2)

    def sky(self, image):
        x = np.arange(self.width) + 0.5 - self.width / 2
        y = self.height / 2 - np.arange(self.height) - 0.5
        gx, gy = np.meshgrid(x / self.focal, y / self.focal)
        rays = np.stack([gx, gy, -np.ones_like(gx)], axis=-1) @ self.rotation
        u, v = texture_of_direction(rays.reshape(-1, 3))
        self.colour[:] = sample(image, u, v).reshape(self.colour.shape)

    def lit(self, normals):
        total = np.full(normals.shape[:-1], AMBIENT)
        for direction, strength in LIGHTS:
            total = total + strength * np.maximum(0.0, normals @ np.asarray(direction))
        return np.minimum(total, 1.0)

    def model(self, triangles, tint, texture, scale, turn):
        """Draws triangles, all of which lie before the eye, after scaling and turning them."""
        points, coords, normals = triangles
        eye_points = ((points * scale) @ turn.T - self.eye) @ self.rotation.T
        light = self.lit((normals / scale) @ turn.T @ self.rotation.T)
        for p, c, l in zip(eye_points, coords, light):
            self.triangle(p, c, l, tint, texture)

    def triangle(self, p, c, light, tint, texture):
        w = -1.0 / p[:, 2]
        sx = self.width / 2 + self.focal * p[:, 0] * w
        sy = self.height / 2 - self.focal * p[:, 1] * w
        x0, x1 = max(0, int(sx.min())), min(self.width, int(sx.max()) + 2)
        y0, y1 = max(0, int(sy.min())), min(self.height, int(sy.max()) + 2)
        area = (sx[1] - sx[0]) * (sy[2] - sy[0]) - (sx[2] - sx[0]) * (sy[1] - sy[0])
        if x0 >= x1 or y0 >= y1 or abs(area) < 1e-12:
            return
        gx, gy = np.meshgrid(np.arange(x0, x1) + 0.5, np.arange(y0, y1) + 0.5)
        b1 = ((gx - sx[0]) * (sy[2] - sy[0]) - (sx[2] - sx[0]) * (gy - sy[0])) / area
        b2 = ((sx[1] - sx[0]) * (gy - sy[0]) - (gx - sx[0]) * (sy[1] - sy[0])) / area
        b0 = 1.0 - b1 - b2
        q = b0 * w[0] + b1 * w[1] + b2 * w[2]
        depth = self.depth[y0:y1, x0:x1]
        inside = (b0 >= 0) & (b1 >= 0) & (b2 >= 0)
        inside[inside] = 1.0 / q[inside] < depth[inside]
        if not inside.any():
            return
        weights = np.stack([b0 * w[0], b1 * w[1], b2 * w[2]], -1)[inside] / q[inside][:, None]
        uv = weights @ c
        texel = sample(texture, uv[:, 0], 1.0 - uv[:, 1])
        self.colour[y0:y1, x0:x1][inside] = (weights @ light)[:, None] * np.asarray(tint) * texel[:, :3]
        depth[inside] = 1.0 / q[inside]
