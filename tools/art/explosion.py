"""BOOOM.png: a fireball with flames and sparks on a transparent ground."""

import numpy as np
from PIL import Image

from noise import ValueNoise, smoothstep

SIZE = 256
# heat 0..1 to colour
HEAT = np.array([0.0, 0.25, 0.5, 0.75, 1.0])
COLOURS = np.array([(0.22, 0.03, 0.01), (0.75, 0.14, 0.02), (1.0, 0.47, 0.06),
                    (1.0, 0.83, 0.35), (1.0, 1.0, 0.94)])


def fire(x, y):
    """Heat and opacity of the ball at distance 1 = border."""
    noise = ValueNoise(5)
    r, angle = np.hypot(x, y), np.arctan2(y, x)
    around = np.stack([np.cos(angle) * 2.2, np.sin(angle) * 2.2, r * 1.3], axis=-1)
    flames = noise.fractal(around + 8, 5, 0.6)
    flat = np.stack([x * 3.2, y * 3.2, np.zeros_like(x)], axis=-1)
    warp = noise.fractal(flat + 3, 3)[..., None] * 1.6
    billow = noise.ridged(flat + warp + 20, 5, 0.55)
    edge = 0.42 + 0.85 * (flames - 0.28)
    heat = np.clip(1.25 - r / edge * 1.05 + 0.75 * (billow - 0.5), 0, 1)
    alpha = smoothstep(1.08, 0.62, r / edge) * (0.55 + 0.45 * smoothstep(0.02, 0.3, heat))
    return heat, alpha


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
    r = np.hypot(x, y)
    heat, alpha = fire(x, y)
    glowing = sparks(np.random.default_rng(11), x, y)
    halo = 0.34 * np.exp(-(r / 0.52) ** 2)
    heat = np.maximum(heat, np.maximum(glowing * 0.95, 0.34))
    alpha = np.maximum(np.maximum(alpha, glowing), halo) * smoothstep(0.985, 0.80, r)
    colour = np.stack([np.interp(heat, HEAT, COLOURS[:, k]) for k in range(3)] + [alpha], -1)
    level = np.clip(np.rint(colour * 255), 0, 255).astype(np.uint8)
    Image.fromarray(level, "RGBA").save(path, optimize=True)
