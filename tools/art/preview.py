#!/usr/bin/python3
"""Looks at the art the way the client draws it: `preview.py --help`.

A small software rasteriser with OpenGL's fixed lighting: two lights fixed to the
viewer, normals that are not renormalised, a team colour multiplied into the texture.
"""

import argparse
import math
import pathlib

import numpy as np
from PIL import Image

import skylayout

RESOURCES = pathlib.Path(__file__).resolve().parents[2] / "Resources"
RED, BLUE = (1.0, 0.0, 0.0), (0.0, 0.0, 1.0)
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


class View:
    """A picture with a depth buffer and a camera like the client's (60 degrees, near 1)."""

    def __init__(self, eye, direction, up=(0, 1, 0), size=(800, 600), fov=60.0, near=1.0):
        self.width, self.height = size
        self.near = near
        self.colour = np.zeros((self.height, self.width, 3))
        self.depth = np.full((self.height, self.width), np.inf)
        forward = np.asarray(direction, float) / np.linalg.norm(direction)
        side = np.cross(forward, up)
        side /= np.linalg.norm(side)
        self.rotation = np.array([side, np.cross(side, forward), -forward])
        self.eye = np.asarray(eye, float)
        self.focal = self.height / 2 / math.tan(math.radians(fov) / 2)

    def sky(self, image):
        x = np.arange(self.width) + 0.5 - self.width / 2
        y = self.height / 2 - np.arange(self.height) - 0.5
        gx, gy = np.meshgrid(x / self.focal, y / self.focal)
        rays = np.stack([gx, gy, -np.ones_like(gx)], axis=-1) @ self.rotation
        u, v = skylayout.texture_of_direction(rays.reshape(-1, 3))
        self.colour[:] = sample(image, u, v).reshape(self.colour.shape)

    def lit(self, normals):
        total = np.full(normals.shape[:-1], AMBIENT)
        for direction, strength in LIGHTS:
            total = total + strength * np.maximum(0.0, normals @ np.asarray(direction))
        return np.minimum(total, 1.0)

    def model(self, triangles, tint, texture=None, scale=1.0, at=(0, 0, 0), turn=np.eye(3)):
        points, coords, normals = triangles
        eye_points = ((points * scale) @ turn.T + at - self.eye) @ self.rotation.T
        light = self.lit((normals / scale) @ turn.T @ self.rotation.T)
        for p, c, l in zip(eye_points, coords, light):
            for corners in near_clipped(p, c, l, self.near):
                self.triangle(*corners, tint, texture)

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
        colour = (weights @ light)[:, None] * np.asarray(tint)
        alpha = 1.0
        if texture is not None:
            uv = weights @ c
            texel = sample(texture, uv[:, 0], 1.0 - uv[:, 1])
            colour = colour * texel[:, :3]
            alpha = texel[:, 3:] if texel.shape[1] == 4 else 1.0
        target = self.colour[y0:y1, x0:x1]
        target[inside] = colour * alpha + target[inside] * (1 - alpha)
        depth[inside] = 1.0 / q[inside]

    def save(self, path):
        level = np.clip(np.rint(self.colour * 255), 0, 255).astype(np.uint8)
        Image.fromarray(level, "RGB").save(path)
        return level


def near_clipped(points, coords, light, near):
    """The parts of a triangle in front of the near plane, as triangles."""
    if (points[:, 2] < -near).all():
        return [(points, coords, light)]
    if (points[:, 2] >= -near).all():
        return []
    rows = np.column_stack([points, coords, light])
    kept = []
    for a, b in zip(rows, np.roll(rows, -1, axis=0)):
        if a[2] < -near:
            kept.append(a)
        if (a[2] < -near) != (b[2] < -near):
            kept.append(a + (b - a) * ((-near - a[2]) / (b[2] - a[2])))
    kept = np.array(kept)
    return [(t[:, :3], t[:, 3:5], t[:, 5])
            for t in (kept[[0, i, i + 1]] for i in range(1, len(kept) - 1))]


def side_views(distance):
    """Eye points and up vectors: front, back, left, right, top, bottom, two quarters."""
    d = distance
    upright, along = (0, 1, 0), (0, 0, 1)
    return [((0, 0, d), upright), ((0, 0, -d), upright), ((d, 0, 0), upright),
            ((-d, 0, 0), upright), ((0, d, 0), along), ((0, -d, 0), along),
            ((d * .6, d * .4, d * .7), upright), ((-d * .55, d * .4, -d * .7), upright)]


def turntable(out, name, texture, scale, distance, centre):
    """Eight views of a model in one sheet, red and blue in turn."""
    triangles = load_obj(RESOURCES / name)
    texture = load_image(texture) if texture else None
    tiles = []
    for i, (eye, up) in enumerate(side_views(distance)):
        view = View(np.add(eye, centre), -np.asarray(eye, float), up, (480, 360), near=0.1)
        view.colour[:] = 0.03
        view.model(triangles, (RED, BLUE)[i % 2], texture, scale)
        tiles.append(np.clip(view.colour, 0, 1))
    rows = [np.concatenate(tiles[i:i + 4], axis=1) for i in (0, 4)]
    level = np.rint(np.concatenate(rows) * 255).astype(np.uint8)
    Image.fromarray(level, "RGB").save(out / (pathlib.Path(name).stem + ".png"))


def start_scene(out):
    """What a red player sees first, and a look around from there."""
    sky = load_image("skybox.png")
    hull, plates = load_image("texture-white.png"), load_image("carrier-texture-white.png")
    fighter, carrier = load_obj(RESOURCES / "fighter.obj"), load_obj(RESOURCES / "carrier.obj")
    shot, boom = load_obj(RESOURCES / "shot.obj"), load_image("BOOOM.png")
    looks = {"start": (0, 0, 1), "start-left": (1, 0, .15), "start-right": (-1, 0, .1),
             "start-back": (-.2, 0.05, -1)}
    for name, look in looks.items():
        side = math.atan2(look[0], look[2])
        turn = np.array([[math.cos(side), 0, math.sin(side)], [0, 1, 0],
                         [-math.sin(side), 0, math.cos(side)]])
        view = View(turn @ (0, 2, -5), look)
        view.sky(sky)
        for team, x in ((RED, 0.0), (BLUE, -1000.0)):
            view.model(carrier, team, plates, at=(x, -13, -130))
        view.model(fighter, RED, hull, 0.05, turn=turn)
        view.model(fighter, BLUE, hull, 0.05, at=turn @ (-5, 4, 14), turn=turn.T)
        view.model(shot, RED, None, 0.01, at=turn @ (1.5, 2, 8))
        view.model(shot, BLUE, None, 0.01, at=turn @ (-2, 3, 12))
        view.model(square(turn), (1, 1, 1), boom, at=turn @ (7, 5, 30))
        view.save(out / (name + ".png"))


def square(turn):
    """The 10 x 10 explosion quad, facing back along the look."""
    corners = np.array([(-5, -5, 0), (5, -5, 0), (5, 5, 0), (-5, 5, 0)]) @ turn.T
    coords = np.array([(0, 0), (1, 0), (1, 1), (0, 1)])
    bright = np.tile((turn @ (1.0, 1.0, 0.0)), (3, 1)) * 2
    pick = [[0, 1, 2], [0, 2, 3]]
    return corners[pick], coords[pick], np.stack([bright, bright])


def sky_views(out):
    """Each face, and looks straight at edges and corners of the cube."""
    sky = load_image("skybox.png")
    looks = {"pz": (0, 0, 1), "nz": (0, 0, -1), "px": (1, 0, 0), "nx": (-1, 0, 0),
             "py": (0, 1, 0.001), "ny": (0, -1, 0.001), "edge-px-pz": (1, 0, 1),
             "edge-nx-pz": (-1, 0, 1), "edge-px-nz": (1, 0, -1), "edge-nx-nz": (-1, 0, -1),
             "edge-py-pz": (0, 1, 1), "edge-ny-pz": (0, -1, 1), "corner": (1, -1, 1),
             "corner-top": (-1, 1, 1)}
    for name, look in looks.items():
        view = View((0, 0, 0), look)
        view.sky(sky)
        view.save(out / ("sky-%s.png" % name))


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("out", type=pathlib.Path, help="folder for the pictures")
    parser.add_argument("what", nargs="*", default=["models", "sky", "start"],
                        help="models, sky, start (default: all)")
    options = parser.parse_args()
    options.out.mkdir(parents=True, exist_ok=True)
    if "models" in options.what:
        turntable(options.out, "fighter.obj", "texture-white.png", 0.05, 3.8, (0, 0, .5))
        turntable(options.out, "shot.obj", None, 0.01, 1.3, (0, 0, 0))
        turntable(options.out, "carrier.obj", "carrier-texture-white.png", 1.0, 290, (0, 5, 10))
    if "sky" in options.what:
        sky_views(options.out)
    if "start" in options.what:
        start_scene(options.out)


if __name__ == "__main__":
    main()
