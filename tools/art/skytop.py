"""The upper end of the sky: the soft gas of the dome and the top face, whose cell the client twists.

Drivers cut the top quad in two triangles, along one diagonal or the other. Either way four lines of the cell are seen
at the borders of the face: its first row at the border to -z, its last row, mirrored, at the border to +z, and its two
diagonals at the borders to -x and +x. Each line must have the colours of the side face that it meets. Both diagonals
pass through the cell's middle, so the side faces must have one colour in the middles of those two borders. The cell's
left and right ends lie on the quad's own diagonal or nowhere.
"""

import numpy as np

from noise import ValueNoise, smoothstep
from skylayout import directions, rise

GROUND = np.array([0.020, 0.024, 0.040])
GAS = np.array([0.12, 0.11, 0.21])
VEINS = np.array([0.22, 0.20, 0.30])
EVEN = 0.42       # the dome's gas, of 0..1, where it must be the same everywhere
SOFT = 0.55       # the share of GAS in the dome's thickest gas
CLOSEST = 0.004   # of the cell: a line's colour is kept this far beside it


def dome_gas(points):
    """How thick the gas is at points of the cube: large clouds, alike at (-1, 1, 0) and (1, 1, 0)."""
    cloud = smoothstep(0.25, 0.78, ValueNoise(8).fractal(directions(points) * 2.6 + 19, 4))
    x, y, z = np.moveaxis(np.abs(points), -1, 0)
    beside = np.maximum(x, 1e-9)
    even = smoothstep(0.55, 0.05, z / beside) * smoothstep(0.5, 0.95, y / beside)
    return cloud * (1 - even) + EVEN * even


def dome(points):
    """The sky's ground colour and the gas that grows towards the top, without fine detail."""
    amount = smoothstep(0.25, 0.95, rise(points))
    return GROUND + SOFT * (amount * dome_gas(points))[..., None] * GAS


def shear_of_quarter(u, v):
    """The shear with which things must be painted to look straight.

    The two triangles shear the cell's upper and lower quarter in opposite ways. The left and right quarters are shown
    twice or never, depending on the driver's cut.
    """
    upper, lower = v < np.minimum(u, 1 - u), v > np.maximum(u, 1 - u)
    return upper * 1 - lower * 1


def borders(u, v):
    """For each line that meets a side face: its distance, and the place of its nearest point on the cube."""
    one = np.ones_like(u)
    return [(v, np.stack([2 * u - 1, one, -one], -1)),
            (1 - v, np.stack([1 - 2 * u, one, one], -1)),
            (np.abs(u - v) / 2 ** 0.5, np.stack([-one, one, u + v - 1], -1)),
            (np.abs(u + v - 1) / 2 ** 0.5, np.stack([one, one, v - u], -1))]


def ground(u, v):
    """The dome's colour on the four lines, blended in between."""
    total, weights = 0.0, 0.0
    for distance, points in borders(u, v):
        weight = 1 / np.maximum(distance, CLOSEST) ** 2
        total = total + weight[..., None] * dome(points)
        weights = weights + weight
    return total / weights[..., None]


def clouds(u, v):
    """Gas with more detail within each quarter, nothing on the four lines."""
    noise = ValueNoise(6)
    diagonals = np.minimum(np.abs(u - v), np.abs(u + v - 1))
    reach = smoothstep(0.0, 0.34, diagonals) * smoothstep(0.0, 0.2, np.minimum(v, 1 - v))
    place = np.stack([u - shear_of_quarter(u, v) * v, v, 0 * v], axis=-1) * 3.0
    warp = noise.fractal(place + 3, 4)[..., None] - 0.5
    cloud, veins = noise.gas(place + warp + 9, place * 1.3 + warp + 7)
    cloud = cloud * reach
    return cloud[..., None] * GAS + (cloud ** 2 * veins)[..., None] * VEINS


def paint(rng, rows, columns, tints):
    """The whole cell: gas and stars, no star on one of the lines."""
    v, u = np.meshgrid((np.arange(rows) + 0.5) / rows, (np.arange(columns) + 0.5) / columns, indexing="ij")
    canvas = ground(u, v) + clouds(u, v)
    y, x = np.mgrid[-8:9, -8:9]
    y = y * columns / rows
    for i in range(1700):
        across, down = rng.random(2)
        diagonals = min(abs(across - down), abs(across + down - 1))
        if min(across, down, 1 - across, 1 - down) < 0.015 or diagonals < 0.012:
            continue
        shear = shear_of_quarter(across, down)
        distance = np.hypot(x - shear * y, y)
        size = 1.5 if shear else 0.6
        spot = (0.12 + 0.60 * rng.random() ** 3) * np.exp(-distance ** 2 / size)
        if shear and i % 20 == 0:  # a bright one
            spot = rng.uniform(0.9, 1.8) * (np.exp(-distance ** 2 / 1.6) + 0.05 * np.exp(-distance / 2))
        row, column = int(down * rows), int(across * columns)
        canvas[row - 8:row + 9, column - 8:column + 9] += spot[..., None] * tints[rng.integers(0, len(tints))]
    return canvas
