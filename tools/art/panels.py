"""Hull plating drawn into gray-scale arrays (1.0 = white), tiling from left to right."""

import numpy as np


def tiling_noise(rng, height, width, smooth_y, smooth_x):
    """Noise of mean 0 and deviation 1 that repeats at all borders; smoothness in pixels."""
    white = np.fft.rfft2(rng.standard_normal((height, width)))
    fy = np.fft.fftfreq(height)[:, None] * smooth_y
    fx = np.fft.rfftfreq(width)[None, :] * smooth_x
    noise = np.fft.irfft2(white * np.exp(-8.0 * (fx * fx + fy * fy)), s=(height, width))
    return (noise - noise.mean()) / noise.std()


class Plating:
    """Cuts a canvas into sections and those into plates, each with its own tone and fittings.

    Sections differ in tone and in the size of their plates: the large pattern is what one sees
    from afar, where the client, which samples no mipmaps, shows fine lines as noise.
    """

    def __init__(self, rng, canvas, tone, spread, smallest, section):
        self.rng = rng
        self.canvas = canvas
        self.tone = tone          # mean brightness of a plate
        self.spread = spread      # deviation of the brightness of sections; plates differ less
        self.smallest = smallest  # shortest side of a plate, pixels
        self.section = section    # about the longest side of a section, pixels

    def cover(self):
        height, width = self.canvas.shape
        self.cut(0, 0, width, height, self.section / 2, self.lay_section)

    def lay_section(self, x0, y0, x1, y1):
        mean, smallest = self.tone, self.smallest
        self.tone = np.clip(self.rng.normal(mean, self.spread), 0.2, 0.97)
        self.smallest = int(smallest * self.rng.choice([1.0, 1.6, 2.6]))
        self.cut(x0, y0, x1, y1, self.smallest, self.plate)
        self.canvas[y0:y0 + 2, x0:x1] = self.canvas[y0:y1, x0:x0 + 2] = self.tone * 0.42
        self.tone, self.smallest = mean, smallest

    def cut(self, x0, y0, x1, y1, smallest, lay):
        """Halves an area at random places; `lay` gets the parts that are small enough."""
        width, height = x1 - x0, y1 - y0
        along = width > height * self.rng.uniform(1.1, 2.4)
        length = width if along else height
        small = max(width, height) < smallest * 7
        if length < smallest * 2 or (small and self.rng.random() < 0.3):
            lay(x0, y0, x1, y1)
            return
        at = int(length * self.rng.uniform(0.3, 0.7))
        if along:
            self.cut(x0, y0, x0 + at, y1, smallest, lay)
            self.cut(x0 + at, y0, x1, y1, smallest, lay)
        else:
            self.cut(x0, y0, x1, y0 + at, smallest, lay)
            self.cut(x0, y0 + at, x1, y1, smallest, lay)

    def plate(self, x0, y0, x1, y1):
        tone = np.clip(self.rng.normal(self.tone, self.spread * 0.45), 0.2, 1.0)
        area = self.canvas[y0:y1, x0:x1]
        area[:] = tone
        area[-2:, :] = tone * 0.90
        area[:, -2:] = tone * 0.90
        area[:2, :] = min(1.0, tone * 1.08)
        area[0, :] = area[:, 0] = tone * 0.62
        kind = self.rng.random()
        if kind < 0.14:
            self.hatch(x0, y0, x1, y1, tone)
        elif kind < 0.24:
            self.vent(x0, y0, x1, y1, tone)
        elif kind < 0.50:
            self.rivets(area, tone)

    def hatch(self, x0, y0, x1, y1, tone):
        """A smaller cover on a plate."""
        mx, my = (x1 - x0) // 4, (y1 - y0) // 4
        inner = self.canvas[y0 + my:y1 - my, x0 + mx:x1 - mx]
        if inner.shape[0] < 5 or inner.shape[1] < 5:
            return
        inner[:] = tone * 0.5
        inner[1:-1, 1:-1] = min(1.0, tone * self.rng.choice([0.8, 0.92, 1.08]))

    def vent(self, x0, y0, x1, y1, tone):
        """Slots across the middle of a plate."""
        m = max(4, (y1 - y0) // 5)
        inner = self.canvas[y0 + m:y1 - m, x0 + m:x1 - m]
        inner[:] = tone * 0.80
        inner[:, ::4] = tone * 0.36
        inner[:, 1::4] = tone * 0.55

    @staticmethod
    def rivets(area, tone):
        area[4::8, 3:-4:7][...] = tone * 0.80
        if area.shape[1] > 20:
            area[5:-5, 6:-6] = tone


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
