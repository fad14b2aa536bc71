"""Hull plating drawn into gray-scale arrays (1.0 = white), tiling from left to right."""

import numpy as np


def tiling_noise(rng, height, width, smooth_y, smooth_x):
    """Noise of mean 0 and deviation 1 that repeats at all borders; smoothness in pixels."""
    white = np.fft.rfft2(rng.standard_normal((height, width)))
    fy = np.fft.fftfreq(height)[:, None] * smooth_y
    fx = np.fft.rfftfreq(width)[None, :] * smooth_x
    noise = np.fft.irfft2(white * np.exp(-8.0 * (fx * fx + fy * fy)), s=(height, width))
    return (noise - noise.mean()) / noise.std()


def plating(rng, canvas, tone, spread, smallest, section):
    """Cuts a canvas into sections and those into plates, each with its own tone and fittings.

    `tone` is the mean brightness, `spread` the deviation of the sections' brightness; plates differ less. `smallest` is
    the shortest side of a plate, `section` about the longest side of a section, both in pixels.

    Sections differ in tone and in the size of their plates. This large pattern is what one sees from afar: the client
    samples no mipmaps and shows fine lines as noise.
    """
    def lay_section(area):
        section_tone = np.clip(rng.normal(tone, spread), 0.2, 0.97)
        size = int(smallest * rng.choice([1.0, 1.6, 2.6]))
        cut(rng, area, size, lambda part: lay_plate(rng, part, section_tone, spread))
        area[:2] = area[:, :2] = section_tone * 0.42
    cut(rng, canvas, section / 2, lay_section)


def cut(rng, area, smallest, lay):
    """Halves an area at random places; `lay` gets the parts that are small enough."""
    height, width = area.shape
    along = width > height * rng.uniform(1.1, 2.4)
    length = width if along else height
    small = max(width, height) < smallest * 7
    if length < smallest * 2 or (small and rng.random() < 0.3):
        lay(area)
        return
    at = int(length * rng.uniform(0.3, 0.7))
    for part in (area[:, :at], area[:, at:]) if along else (area[:at], area[at:]):
        cut(rng, part, smallest, lay)


def lay_plate(rng, area, mean, spread):
    tone = np.clip(rng.normal(mean, spread * 0.45), 0.2, 1.0)
    area[:] = tone
    area[-2:] = area[:, -2:] = tone * 0.90
    area[:2] = min(1.0, tone * 1.08)
    area[0] = area[:, 0] = tone * 0.62
    height, width = area.shape
    kind = rng.random()
    if kind < 0.14:
        hatch(rng, area[height // 4:height - height // 4, width // 4:width - width // 4], tone)
    elif kind < 0.24:
        margin = max(4, height // 5)
        vent(area[margin:height - margin, margin:width - margin], tone)
    elif kind < 0.50:  # rivets, along the border where there is room
        area[4::8, 3:-4:7] = tone * 0.80
        if width > 20:
            area[5:-5, 6:-6] = tone


def hatch(rng, area, tone):
    """A smaller cover on a plate."""
    if min(area.shape) >= 5:
        area[:] = tone * 0.5
        area[1:-1, 1:-1] = min(1.0, tone * rng.choice([0.8, 0.92, 1.08]))


def vent(area, tone):
    """Slots across the middle of a plate."""
    area[:] = tone * 0.80
    area[:, ::4] = tone * 0.36
    area[:, 1::4] = tone * 0.55


def wear(rng, canvas, strength):
    """Stains, streaks along the hull and a little grain, multiplied in."""
    height, width = canvas.shape
    stains = tiling_noise(rng, height, width, 70, 110)
    streaks = tiling_noise(rng, height, width, 6, 150)
    grain = tiling_noise(rng, height, width, 1.5, 1.5)
    canvas *= np.clip(1.0 + strength * (0.9 * stains + 0.9 * streaks + 0.35 * grain), 0.4, 1.15)


def scratches(rng, canvas, count):
    """Short bright scuffs along the hull."""
    height, width = canvas.shape
    for _ in range(count):
        y, x = int(rng.integers(height)), int(rng.integers(width))
        length = int(rng.integers(4, 26))
        columns = np.arange(x, x + length) % width
        canvas[y, columns] = np.minimum(1.0, canvas[y, columns] * rng.uniform(1.05, 1.2))


def windows(rng, canvas, pitch, lit, dark):
    """Rows of windows, some lit; `pitch` is the distance of two rows in pixels."""
    height, width = canvas.shape
    for y in range(pitch // 2, height - 3, pitch):
        x = int(rng.integers(4, 12))
        while x < width - 8:
            if rng.random() < 0.12:
                x += int(rng.integers(12, 50))
                continue
            canvas[y - 1:y + 5, x - 1:x + 6] *= 0.6
            canvas[y:y + 4, x:x + 5] = lit if rng.random() < 0.62 else dark
            x += 9


def machinery(rng, canvas):
    """A dark trench full of pipes and boxes."""
    height, width = canvas.shape
    canvas[:] = 0.32
    for _ in range(width // 3):
        x, y = int(rng.integers(width)), int(rng.integers(height - 4))
        w, h = int(rng.integers(5, 40)), int(rng.integers(3, height // 4))
        tone = rng.uniform(0.24, 0.62)
        columns = np.arange(x, x + w) % width
        canvas[y:y + h, columns] = tone
        canvas[y, columns] = tone * 1.4
        canvas[y:y + h, columns[-1]] = tone * 0.5
    for _ in range(10):
        y, thick = int(rng.integers(4, height - 8)), int(rng.integers(2, 5))
        tone = rng.uniform(0.4, 0.7)
        canvas[y:y + thick, :] = tone
        canvas[y + thick, :] = 0.14
        canvas[y, :] = tone * 1.25


def glow(size):
    """A round engine mouth: white heart, ring of vanes, dark gaps, bright lip."""
    y, x = np.mgrid[0:size, 0:size]
    centre = (size - 1) / 2
    r = np.hypot(x - centre, y - centre) / (size / 2)
    angle = np.arctan2(y - centre, x - centre)
    heart = 0.28 + np.exp(-(r / 0.36) ** 2)
    slots = np.abs(np.sin(angle * 8)) < 0.22
    vanes = np.where((r > 0.46) & (r < 0.80), np.where(slots, 0.25, 0.75), 0.0)
    lip = np.where(r >= 0.86, 0.90, 0.0)
    return np.clip(np.maximum.reduce([heart, vanes, lip]), 0.0, 1.0)


def glass(rng, height, width):
    """Dark canopy glass with a bright reflection and thin frames."""
    y = np.linspace(0, 1, height)[:, None]
    x = np.linspace(0, 1, width)[None, :]
    canvas = 0.10 + 0.30 * np.exp(-((y - 0.5 - 0.12 * x) / 0.07) ** 2) + 0.10 * (y + 0 * x)
    canvas += 0.5 * np.exp(-((y - 0.66 - 0.10 * x) / 0.022) ** 2) * (x > 0.15)
    canvas[:, ::max(1, width // 3)] = 0.62
    canvas += 0.015 * rng.standard_normal(canvas.shape)
    return np.clip(canvas, 0.05, 1.0)
