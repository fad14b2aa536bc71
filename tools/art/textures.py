"""The two hull textures. Both are light gray, because the client multiplies a team colour in.

The models' texture maps use the areas at the top. Coordinates are (u, v) with v upwards, as in OBJ files.
"""

import numpy as np
from PIL import Image

import panels

# texture-white.png: plating above, four square cells below
FIGHTER_UNITS = 64.0         # model units that the whole texture covers
FIGHTER_HULL = (0.25, 1.0)   # v range of the plating; it tiles in u
FIGHTER_WINGS = 0.06         # v at x = 0 of the wings, which span x = 15 to 42
FIGHTER_GLASS = (0.01, 0.01, 0.24, 0.24)
FIGHTER_GLOW = ((0.375, 0.125), 0.118)     # centre and radius
FIGHTER_VENT = (0.51, 0.01, 0.74, 0.24)
FIGHTER_BRIGHT = (0.80, 0.19)
FIGHTER_DARK = (0.93, 0.06)

# carrier-texture-white.png: plating, windows, machinery, then cells
CARRIER_UNITS = 128.0
CARRIER_HULL = (0.50, 1.0)
CARRIER_WINDOWS = (0.375, 0.50)
CARRIER_TRENCH = (0.25, 0.375)
CARRIER_DECK = (0.0, 0.005, 0.5, 0.245)    # one repeat of the flight deck, seamless in u
CARRIER_GLOW = ((0.625, 0.125), 0.118)
CARRIER_BAY = (0.755, 0.13, 0.995, 0.245)
CARRIER_BRIGHT = (0.80, 0.09)
CARRIER_DARK = (0.95, 0.03)


def save_gray_as_rgb(path, canvas):
    """RGB on purpose: the client refuses palette and gray images."""
    level = np.clip(np.rint(canvas * 255.0), 0, 255).astype(np.uint8)
    Image.fromarray(np.repeat(level[:, :, None], 3, axis=2), "RGB").save(path, optimize=True)


def stripes(area, period, dark):
    """Diagonal warning stripes."""
    y, x = np.mgrid[0:area.shape[0], 0:area.shape[1]]
    area[(x + y) % period < period // 2] *= dark


def wing_band(hull):
    """The squadron's dark band across each wing, between two thin bright lines."""
    def row(x):
        return int(512 * (1.0 - FIGHTER_WINGS - x / FIGHTER_UNITS))
    hull[row(36.4):row(33.2), :] *= 0.64
    hull[row(37.4):row(36.9), :] = 1.0
    hull[row(32.7):row(32.2), :] = 1.0


def fighter_texture(path):
    rng = np.random.default_rng(21042)
    canvas = np.ones((512, 512))
    hull = canvas[:384]
    panels.plating(rng, hull, tone=0.90, spread=0.08, smallest=15, section=150)
    panels.scratches(rng, hull, 260)
    panels.wear(rng, hull, 0.035)
    stripes(hull[40:52, 330:420], 12, 0.45)
    stripes(hull[250:262, 60:150], 12, 0.45)
    # From afar one sees only single texels of the ship, and any of them: so none is deep black.
    hull[:] = 0.24 + 0.76 * hull
    wing_band(hull)

    canvas[384:, :128] = panels.glass(rng, 128, 128)
    canvas[384:, 128:256] = panels.glow(128)
    vent = canvas[384:, 256:384]
    vent[:] = 0.48
    vent[:, ::8] = 0.20
    vent[:, 1::8] = 0.28
    vent[::32, :] = 0.6
    canvas[384:448, 384:] = 1.0
    canvas[448:, 384:] = 0.24
    save_gray_as_rgb(path, canvas)


def deck_cell(rng, canvas):
    """32 units of runway: dark plates, side lines, a dash and a chevron, lamps, tyre marks."""
    height, width = canvas.shape
    panels.plating(rng, canvas, tone=0.41, spread=0.05, smallest=30, section=180)
    panels.wear(rng, canvas, 0.06)
    y, x = np.mgrid[0:height, 0:width]
    across = np.abs(y - height / 2) / height          # 0 on the centre line, 0.5 at the edge
    for lane in (0.07, 0.16):                          # where wheels and exhausts blacken it
        canvas *= 1 - 0.30 * np.exp(-((across - lane) / 0.030) ** 2)
    chevron = (x + across * 420) % width
    canvas[(chevron > 400) & (chevron < 424) & (across < 0.20) & (across > 0.05)] = 0.80
    canvas[(across < 0.018) & (x > 60) & (x < 300)] = 0.95
    canvas[(across > 0.395) & (across < 0.415)] = 0.95
    canvas[(across > 0.44) & ((x + y) % 64 < 32)] *= 0.45
    for column in range(32, width, 64):
        for side in (0.33, 0.67):
            row = int(height * side)
            canvas[row - 5:row + 6, column - 8:column + 9] *= 0.5
            canvas[row - 3:row + 4, column - 5:column + 6] = 1.0


def bay_cell(rng, canvas):
    """The back wall of a hangar: dark, with lit galleries and a bright lower door."""
    height, width = canvas.shape
    canvas[:] = 0.20
    panels.windows(rng, canvas, 14, lit=0.95, dark=0.1)
    canvas[int(height * 0.55):, width // 4:3 * width // 4] = 0.75
    canvas[int(height * 0.55):, width // 4:3 * width // 4:12] = 0.25


def carrier_texture(path):
    rng = np.random.default_rng(42)
    canvas = np.ones((1024, 1024))
    hull = canvas[:512]
    panels.plating(rng, hull, tone=0.80, spread=0.17, smallest=14, section=190)
    panels.scratches(rng, hull, 700)
    panels.wear(rng, hull, 0.05)
    for y in (96, 230, 410):
        panels.windows(rng, hull[y:y + 14], 14, lit=1.0, dark=0.25)

    decks = canvas[512:640]
    panels.plating(rng, decks, tone=0.62, spread=0.06, smallest=26, section=200)
    panels.windows(rng, decks, 16, lit=1.0, dark=0.22)
    panels.machinery(rng, canvas[640:768])

    deck_cell(rng, canvas[768:, :512])
    canvas[768:, 512:768] = panels.glow(256)
    bay_cell(rng, canvas[768:896, 768:])
    canvas[896:960, 768:] = 1.0
    canvas[960:, 768:] = 0.20
    save_gray_as_rgb(path, canvas)
