"""BOOOM.png: a fireball that bursts through its own smoke, with sparks, on a transparent ground.

The client draws explosions with depth writes, in the order in which they happen. So a near one hides all that is drawn
after it behind its whole square, transparent or not. Smoke fills nearly all of the square: then things hide behind
smoke and not behind nothing.
"""

import numpy as np
from PIL import Image

from noise import ValueNoise, smoothstep

SIZE = 256
SQUARENESS = 2.3  # exponent of the smoke's outline: 2 is a circle
# the colour of heat 0..1
HEAT = np.array([0.0, 0.12, 0.3, 0.5, 0.75, 1.0])
COLOURS = np.array([(0.15, 0.09, 0.07), (0.30, 0.10, 0.04), (0.75, 0.17, 0.02), (1.0, 0.47, 0.06),
                    (1.0, 0.83, 0.35), (1.0, 1.0, 0.94)])


def fire(x, y):
    """Heat and opacity; the picture's border is at distance 1."""
    noise = ValueNoise(5)
    r, angle = np.hypot(x, y), np.arctan2(y, x)
    square = (np.abs(x) ** SQUARENESS + np.abs(y) ** SQUARENESS) ** (1 / SQUARENESS)
    around = np.stack([np.cos(angle) * 2.2, np.sin(angle) * 2.2, r * 1.3], axis=-1)
    flames = noise.fractal(around + 8, 5, 0.6)
    flat = np.stack([x * 3.2, y * 3.2, np.zeros_like(x)], axis=-1)
    warp = noise.fractal(flat + 3, 3)[..., None] * 1.6
    billow = noise.ridged(flat + warp + 20, 5, 0.55)
    edge = 0.65 + 1.05 * (flames - 0.28)
    heat = np.clip(1.14 - square / edge * 0.98 + 0.75 * (billow - 0.5), 0, 1)

    puffs = noise.fractal(flat * 1.1 + 50, 5, 0.55)
    smoke = smoothstep(1.04, 0.90, square + 0.40 * (0.58 - puffs))
    embers = 0.30 * smoothstep(0.50, 0.80, billow) * smoothstep(1.0, 0.5, r)
    alpha = np.maximum(smoke * 0.93, smoothstep(0.1, 0.4, heat))
    return np.maximum(heat, np.maximum(embers, 0.10 * puffs)), alpha


def sparks(rng, x, y):
    """Glowing splinters flung outwards, each with a tail towards the centre."""
    light = np.zeros_like(x)
    for _ in range(70):
        angle, reach = rng.uniform(0, 2 * np.pi), rng.uniform(0.45, 0.92)
        ahead = x * np.cos(angle) + y * np.sin(angle)
        aside = -x * np.sin(angle) + y * np.cos(angle)
        tail = smoothstep(reach - rng.uniform(0.12, 0.35), reach, ahead) * (ahead < reach)
        width = rng.uniform(0.006, 0.014)
        light = np.maximum(light, tail * np.exp(-(aside / width) ** 2) * rng.uniform(0.5, 1.0))
    return light


def make(path):
    axis = (np.arange(SIZE) + 0.5) / SIZE * 2 - 1
    x, y = np.meshgrid(axis, axis)
    heat, alpha = fire(x, y)
    glowing = sparks(np.random.default_rng(11), x, y)
    heat = np.maximum(heat, glowing * 0.95)
    border = smoothstep(0.985, 0.88, np.maximum(np.abs(x), np.abs(y)))
    alpha = np.maximum(alpha, glowing) * border
    colour = np.stack([np.interp(heat, HEAT, COLOURS[:, k]) for k in range(3)] + [alpha], -1)
    level = np.clip(np.rint(colour * 255), 0, 255).astype(np.uint8)
    Image.fromarray(level, "RGBA").save(path, optimize=True)
