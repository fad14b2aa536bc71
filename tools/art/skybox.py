"""skybox.png: stars, a galaxy band, nebulae, the sun and a ringed planet.

All but the top face are painted by direction, so they meet without seams. The client twists the top face's cell, and
no picture can undo that. So skytop.py paints it: at its borders it has the colour that the soft gas of the dome has at
the upper ends of the side faces.
"""

import numpy as np
from PIL import Image

import skytop
from noise import ValueNoise, smoothstep
from skylayout import CELLS, TOP_CELL, affine, cell_points, cell_slices, directions, rise

WIDTH, HEIGHT = 4096, 2048


def unit(*v):
    return np.asarray(v, float) / np.linalg.norm(v)


# The client's main light comes from the viewer's left, which is +x at the start (look +z).
SUN = unit(1.0, 0.05, 0.1)
GALAXY_POLE = unit(0.42, 0.88, -0.22)
GALAXY_HEART = unit(0.45, -0.10, 1.0)
PLANET = unit(-0.36, 0.20, 1.0)
PLANET_RADIUS = 0.125                 # radians as seen from here
RING_POLE = unit(0.42, 0.86, -0.30)
RING_INNER, RING_OUTER = 1.32, 2.15   # planet radii

# direction, angular size (radians), strength, colour outside and inside
NEBULAE = [
    (unit(0.30, 0.16, 1.0), 0.52, 0.62, (0.10, 0.32, 0.62), (0.35, 0.85, 0.95)),
    (unit(-0.75, -0.30, 1.0), 0.50, 0.62, (0.45, 0.10, 0.40), (1.00, 0.50, 0.55)),
    # behind the blue team: gold, on which its ships stand out
    (unit(-1.0, 0.06, -0.10), 0.66, 0.95, (0.52, 0.24, 0.08), (1.00, 0.78, 0.42)),
    # behind the red team: teal
    (unit(1.0, -0.28, -0.42), 0.56, 0.80, (0.05, 0.28, 0.34), (0.35, 0.90, 0.80)),
    (unit(0.25, 0.12, -1.0), 0.62, 0.80, (0.26, 0.14, 0.50), (0.75, 0.55, 1.00)),
    (unit(0.2, -1.0, 0.3), 0.62, 0.70, (0.06, 0.22, 0.42), (0.45, 0.70, 1.00)),
]


# the light along the horizon, behind most ships: direction and colour
HORIZON_HEIGHT = 0.34
HORIZON = [((-1.0, 0.0, 0.0), (0.150, 0.105, 0.060)), ((1.0, 0.0, 0.0), (0.078, 0.074, 0.062)),
           ((0.0, 0.0, -1.0), (0.120, 0.085, 0.165)), ((0.0, 0.0, 1.0), (0.085, 0.100, 0.125))]


def horizon(d):
    """Thin gas all around, thick enough that dark blue ships do not drown in black."""
    noise = ValueNoise(7)
    wobble = noise.fractal(d * 1.8 + 31, 4) - 0.5
    thickness = 0.45 + 1.1 * smoothstep(0.25, 0.75, noise.fractal(d * 3.2 + 13 + wobble[..., None], 6, 0.55))
    thickness = thickness * np.exp(-((d[..., 1] + 0.35 * wobble) / HORIZON_HEIGHT) ** 2)
    shares = [np.maximum(0, d @ np.array(axis)) ** 2 for axis, _ in HORIZON]
    colour = sum(share[..., None] * np.array(tint) for share, (_, tint) in zip(shares, HORIZON))
    return thickness[..., None] * colour


def galaxy(d):
    """The band of far stars with its dust lanes."""
    noise = ValueNoise(1)
    height = d @ GALAXY_POLE
    wobble = noise.fractal(d * 2.5 + 5, 4) - 0.5
    height = height + 0.10 * wobble
    heart = np.clip(d @ GALAXY_HEART, 0, 1) ** 3
    width = 0.13 + 0.09 * heart
    clouds = noise.fractal(d * 6 + 9, 6, 0.58)
    band = np.exp(-(height / width) ** 2) * (0.30 + 0.75 * heart) * (0.35 + 1.1 * clouds)
    dust = smoothstep(0.46, 0.74, noise.ridged(d * 4.5 + 40, 6, 0.55))
    dust = dust * np.exp(-(height / (width * 0.55)) ** 2)
    band = band * (1 - 0.82 * dust)
    core = np.exp(-(height / (width * 0.5)) ** 2) * heart * (1 - 0.7 * dust)
    cold, warm = np.array([0.34, 0.42, 0.62]), np.array([0.95, 0.74, 0.50])
    return 0.66 * (band[..., None] * cold + 0.55 * core[..., None] * warm)


def nebulae(d):
    noise = ValueNoise(2)
    total = np.zeros(d.shape)
    warp = np.stack([noise.fractal(d * 2.2 + s, 4) for s in (3.0, 23.0, 43.0)], axis=-1) - 0.5
    for i, (centre, size, strength, outer, inner) in enumerate(NEBULAE):
        angle = np.arccos(np.clip((d + 0.30 * warp) @ centre, -1, 1))
        reach = np.exp(-(angle / size) ** 2 * 1.6)
        near = reach > 0.01
        place = (d + 0.55 * warp)[near] * 3.4 + 11 * i
        cloud, veins = noise.gas(place, place * 1.3 + 7)
        cloud = cloud * reach[near]
        glow = cloud ** 2.2 * (0.5 + veins)
        total[near] += strength * (cloud[:, None] * np.array(outer)
                                   + 0.9 * glow[:, None] * np.array(inner))
    return total


def sun(d):
    """Disc, corona, a wide halo and faint rays."""
    angle = np.arccos(np.clip(d @ SUN, -1, 1))
    right = unit(*np.cross(SUN, (0, 1, 0)))
    up = np.cross(right, SUN)
    around = np.arctan2(d @ up, d @ right)
    rays = (np.abs(np.cos(around * 3)) ** 40 + 0.5 * np.abs(np.cos(around * 3 + 0.7)) ** 60)
    disc = smoothstep(0.036, 0.024, angle)
    corona = 1.5 * np.exp(-angle / 0.036) + 0.38 * np.exp(-angle / 0.13)
    halo = 0.06 * np.exp(-(angle / 0.5) ** 2) + 0.30 * rays * np.exp(-angle / 0.10)
    return (disc[..., None] * np.array([1.6, 1.6, 1.5])
            + corona[..., None] * np.array([1.0, 0.92, 0.74])
            + halo[..., None] * np.array([1.0, 0.70, 0.42]))


def planet_light(points):
    """Colour and cover (0..1) of the ringed planet at points of the cube, from 3 x 3 samples for each pixel."""
    colour, cover = np.zeros(points.shape), np.zeros(points.shape[:-1])
    length = np.linalg.norm(points, axis=-1)
    near = points @ PLANET > np.cos(PLANET_RADIUS * RING_OUTER * 1.15) * length
    down, right = points[1, 0] - points[0, 0], points[0, 1] - points[0, 0]
    for i in range(9 if near.any() else 0):
        sample = points[near] + down * (i // 3 - 1) / 3 + right * (i % 3 - 1) / 3
        part = planet_close(directions(sample))
        colour[near] += part[0] / 9
        cover[near] += part[1] / 9
    return colour, cover


def planet_close(d):
    """Colour and cover in directions near the planet. Lengths are its radii; its distance makes it look PLANET_RADIUS."""
    distance = 1 / np.sin(PLANET_RADIUS)
    centre = PLANET * distance
    along = d @ centre
    miss = np.sqrt(np.maximum(distance ** 2 - along ** 2, 0))
    pixel = distance * 0.0016
    ball = smoothstep(1 + pixel / 2, 1 - pixel / 2, miss)
    depth = np.sqrt(np.maximum(1 - miss ** 2, 0))
    normal = d * (along - depth)[:, None] - centre
    surface = planet_surface(normal)
    shade = smoothstep(-0.10, 0.75, normal @ SUN) * (1 - 0.75 * ring_shadow(normal))
    rim = (1 - np.clip(depth, 0, 1)) ** 3
    lit = surface * (0.012 + shade[:, None]) + (rim * shade)[:, None] * np.array([.35, .5, .8])
    haze = np.exp(-np.maximum(miss - 1, 0) / 0.035) * (miss > 1)
    haze = haze * smoothstep(-0.2, 0.7, (d * along[:, None] - centre) @ SUN) * 0.55

    hit = (centre @ RING_POLE) / (d @ RING_POLE)
    place = d * hit[:, None] - centre
    ring_colour, ring_cover = ring(place)
    in_front = (hit < along) | (miss > 1)
    ring_cover = ring_cover * np.where(in_front, 1, 1 - ball)
    colour = lit * ball[:, None] + haze[:, None] * np.array([0.35, 0.5, 0.8])
    colour = colour * (1 - ring_cover)[:, None] + ring_colour * ring_cover[:, None]
    return colour, np.clip(ball + ring_cover * (1 - ball), 0, 1)


def planet_surface(normal):
    noise = ValueNoise(3)
    latitude = normal @ RING_POLE
    swirl = noise.fractal(normal * 2.0 + 6, 5) - 0.5
    bands = noise.fractal(np.stack([latitude * 7 + swirl * 0.9, swirl * 0.6 + 3, 0 * swirl], -1), 5)
    storms = noise.fractal(normal * np.array([5, 11, 5]) + swirl[:, None] * 3, 5)
    mix = np.clip((bands - 0.5) * 2.2 + 0.5 + 0.3 * (storms - 0.5), 0, 1)[:, None]
    return np.array([0.42, 0.25, 0.17]) * (1 - mix) + np.array([0.92, 0.76, 0.56]) * mix


def ring_density(radius):
    noise = ValueNoise(4)
    line = np.stack([radius * 16, 0 * radius + 2, 0 * radius + 5], -1)
    density = smoothstep(0.25, 0.7, noise.fractal(line, 4, 0.7))
    gap = smoothstep(0.0, 0.03, np.abs(radius - 1.80) - 0.025)
    return density * gap * smoothstep(RING_INNER, RING_INNER + 0.06, radius) * smoothstep(
        RING_OUTER, RING_OUTER - 0.06, radius)


def ring(place):
    radius = np.linalg.norm(place, axis=1)
    cover = ring_density(radius) * 0.8
    toward = place @ SUN
    beside = np.sqrt(np.maximum(radius ** 2 - toward ** 2, 0))
    shadow = smoothstep(0.96, 1.02, beside) * (toward < 0) + (toward >= 0)
    return np.array([0.82, 0.70, 0.56]) * (0.04 + 0.80 * shadow)[:, None], cover


def ring_shadow(normal):
    """How much of the sunlight the ring takes from each point of the ball."""
    steps = -(normal @ RING_POLE) / (SUN @ RING_POLE)
    radius = np.linalg.norm(normal + SUN * steps[:, None], axis=1)
    return np.where(steps > 0, ring_density(radius), 0)


def sky_colour(points):
    """Light from the directions of points on the cube, and how much the planet covers."""
    d = directions(points)
    fade = smoothstep(0.97, 0.50, rise(points))[..., None]
    colour = skytop.dome(points) + fade * (horizon(d) + galaxy(d) + nebulae(d) + sun(d))
    planet, cover = planet_light(points)
    return colour * (1 - cover[..., None]) + planet, cover


class Stars:
    """Point lights in all directions; one list serves every face."""

    TINTS = np.array([(1.0, 0.72, 0.50), (1.0, 0.86, 0.70), (1.0, 0.97, 0.92),
                      (0.85, 0.91, 1.0), (0.68, 0.80, 1.0)])

    def __init__(self, rng):
        def anywhere(count):
            return directions(rng.standard_normal((count, 3)))
        field, milky = anywhere(11000), anywhere(60000)
        milky = milky[rng.random(len(milky)) < 0.36 * np.exp(-((milky @ GALAXY_POLE) / 0.16) ** 2)]
        faint = np.vstack([field, milky])
        bright, brilliant = anywhere(420), anywhere(42)
        self.where = np.vstack([faint, bright, brilliant])
        self.light = np.concatenate([0.12 + 0.60 * rng.random(len(faint)) ** 3,
                                     rng.uniform(0.6, 1.1, len(bright)),
                                     rng.uniform(1.5, 2.6, len(brilliant))])
        self.size = np.concatenate([np.full(len(faint), 0.0010),
                                    rng.uniform(0.0011, 0.0015, len(bright)),
                                    rng.uniform(0.0016, 0.0022, len(brilliant))])
        self.colour = self.TINTS[rng.integers(0, len(self.TINTS), len(self.where))]

    def paint(self, canvas, points, hidden):
        """Adds the stars that fall on a cell whose pixels show `points` of the cube."""
        d = directions(points)
        axis = int(np.argmax(np.abs(points.mean(axis=(0, 1)))))
        sign = np.sign(points[0, 0, axis])
        # pixel coordinates are affine in the cube point: find them from the cell's corners
        rows, columns = points.shape[:2]
        across = [k for k in range(3) if k != axis]
        basis = affine([(points[r, c, across], (r, c)) for r, c in ((0, 0), (0, columns - 1), (rows - 1, 0))])
        ahead = self.where[:, axis] * sign
        for i in np.flatnonzero(ahead > 0.5):
            hit = self.where[i] / ahead[i]
            row, column = np.array([*hit[across], 1.0]) @ basis
            reach = 4 if self.light[i] < 1.2 else 26
            top, left = max(0, int(row) - reach), max(0, int(column) - reach)
            part = np.s_[top:max(0, int(row) + reach + 2), left:max(0, int(column) + reach + 2)]
            if canvas[part].size:
                canvas[part] += self.spot(i, d[part], hidden[part])

    def spot(self, i, d, hidden):
        angle = np.sqrt(np.maximum(0, 2 - 2 * (d @ self.where[i])))
        value = self.light[i] * np.exp(-(angle / self.size[i]) ** 2)
        if self.light[i] > 1.2:  # a soft glow and a small cross
            side = np.abs(d @ unit(*np.cross(self.where[i], (0.1, 1, 0))))
            height = np.sqrt(np.maximum(0, angle ** 2 - side ** 2))
            cross = np.exp(-side / 0.0008 - height / 0.008) + np.exp(-height / 0.0008 - side / 0.008)
            value = value + 0.07 * np.exp(-angle / 0.006) + 0.45 * cross
            value = value * smoothstep(0.034, 0.020, angle)
        return (value * (1 - hidden))[..., None] * self.colour[i]


def tone(colour):
    """Bright light runs to white softly instead of being cut."""
    bright = 1 - np.exp(-np.maximum(colour - 0.6, 0) / 0.4)
    return np.where(colour > 0.6, 0.6 + 0.4 * bright, colour)


def make(path):
    rng = np.random.default_rng(2012)
    stars = Stars(rng)
    image = np.zeros((HEIGHT, WIDTH, 3), np.uint8)

    def put(canvas, cell):
        image[cell_slices(cell, WIDTH, HEIGHT)] = np.rint(tone(canvas) * 255)
    for face, cell in CELLS.items():
        points = cell_points(face, WIDTH, HEIGHT)
        canvas, hidden = sky_colour(points)
        stars.paint(canvas, points, hidden)
        put(canvas, cell)
    rows, columns = cell_slices(TOP_CELL, WIDTH, HEIGHT)
    put(skytop.paint(rng, rows.stop - rows.start, columns.stop - columns.start, Stars.TINTS), TOP_CELL)
    Image.fromarray(image, "RGB").save(path, compress_level=9)
