"""Smooth random fields in space, from fixed seeds."""

import numpy as np

# Each octave turns the lattice: axes that line up would show as steps and squares.
TURN = np.array([[0.00, 0.80, 0.60], [-0.80, 0.36, -0.48], [-0.60, -0.48, 0.64]])
SIZE = 64  # lattice points per axis; the noise repeats after as many units


class ValueNoise:
    """Random values on a lattice, blended smoothly between; results lie in 0..1."""

    def __init__(self, seed):
        self.values = np.random.default_rng(seed).random(SIZE ** 3, dtype=np.float32)

    def at(self, points):
        """Noise at points (..., 3)."""
        floor = np.floor(points)
        f = (points - floor).astype(np.float32)
        f = f * f * f * (f * (f * 6 - 15) + 10)
        low = floor.astype(np.int64) % SIZE
        high = (low + 1) % SIZE
        total = np.zeros(points.shape[:-1], np.float32)
        for corner in range(8):
            pick = [(corner >> k) & 1 for k in range(3)]
            index = np.zeros(points.shape[:-1], np.int64)
            weight = np.ones(points.shape[:-1], np.float32)
            for k in range(3):
                index = index * SIZE + (high if pick[k] else low)[..., k]
                weight = weight * (f[..., k] if pick[k] else 1 - f[..., k])
            total += self.values[index] * weight
        return total

    def fractal(self, points, octaves, gain=0.5):
        """Octaves of noise, each twice as fine and `gain` times as strong; about 0..1."""
        return self._octaves(points, octaves, gain, lambda value: value)

    def ridged(self, points, octaves, gain=0.5):
        """Like `fractal`, folded so that thin bright veins appear."""
        return self._octaves(points, octaves, gain, lambda value: (1 - np.abs(2 * value - 1)) ** 2)

    def gas(self, points, vein_points):
        """Clouds with sharp edges, and the bright veins within them; both about 0..1."""
        veins = self.ridged(vein_points, 5, 0.55)
        return smoothstep(0.36, 0.80, self.fractal(points, 6, 0.55) * 0.72 + 0.36 * veins), veins

    def _octaves(self, points, octaves, gain, shape):
        total, weight, norm = 0.0, 1.0, 0.0
        for octave in range(octaves):
            points = points @ TURN
            total = total + weight * shape(self.at(points * 2.0 ** octave + 17.3 * octave))
            norm += weight
            weight *= gain
        return total / norm


def smoothstep(low, high, x):
    """0 at `low`, 1 at `high` and a smooth step between; `high` may be the smaller one."""
    t = np.clip((x - low) / (high - low), 0, 1)
    return t * t * (3 - 2 * t)
