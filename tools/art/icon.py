#!/usr/bin/python3
"""Makes the program's icons anew in packaging/icons: our fighter before a piece of the sky.

Needs NumPy and Pillow (apt-get install python3-numpy python3-pil). Usage: tools/art/icon.py
"""

import argparse
import pathlib
import sys

sys.dont_write_bytecode = True

import numpy as np
from PIL import Image

import render

SIZES = (48, 64, 128, 256)
DRAWN = 1024             # pixels; each icon is this picture made smaller
CORNER = 0.20            # radius of the rounded corners, as a share of the side
EYE = (2.6, 3.1, 5.0)    # seen from the front, a little above
BANK = -0.30             # radians; a ship that lies in a turn looks fast
BRIGHTER = 1.25          # small pictures look darker than large ones


def rounded_square(side):
    """Coverage of each pixel by a square with rounded corners."""
    radius = CORNER * side
    inner = side / 2 - radius
    place = np.abs(np.arange(side) + 0.5 - side / 2)
    beyond = np.maximum(place - inner, 0)
    distance = np.hypot(*np.meshgrid(beyond, beyond))
    return np.clip(radius - distance + 0.5, 0, 1)


def glow(side, centre, reach):
    """A soft light behind the ship, which lifts it off the dark sky."""
    y, x = np.mgrid[0:side, 0:side] / side
    return np.exp(-((x - centre[0]) ** 2 + (y - centre[1]) ** 2) / reach ** 2)


def draw():
    eye = np.array(EYE)
    view = render.View(eye, (0, -0.02, 0.12) - eye, size=(DRAWN, DRAWN), fov=36)
    view.sky(render.load_image("skybox.png")[..., :3])
    light = glow(DRAWN, (0.5, 0.52), 0.36)[..., None]
    view.colour = view.colour * 0.8 + light * np.array([0.10, 0.26, 0.52])
    cos, sin = np.cos(BANK), np.sin(BANK)
    turn = np.array([[cos, -sin, 0], [sin, cos, 0], [0, 0, 1]])
    view.model(render.load_obj(render.RESOURCES / "fighter.obj"), (1.0, 0.42, 0.32),
               render.load_image("texture-white.png"), 0.05, turn)
    picture = np.dstack([np.clip(view.colour * BRIGHTER, 0, 1), rounded_square(DRAWN)])
    return Image.fromarray(np.rint(picture * 255).astype(np.uint8), "RGBA")


def main():
    argparse.ArgumentParser(description=__doc__.splitlines()[0]).parse_args()
    folder = pathlib.Path(__file__).resolve().parents[2] / "packaging" / "icons"
    folder.mkdir(parents=True, exist_ok=True)
    picture = draw()
    for size in SIZES:
        picture.resize((size, size), Image.LANCZOS).save(folder / ("%d.png" % size), optimize=True)


if __name__ == "__main__":
    main()
