"""Meshes made of flat polygons with smoothing groups, and their OBJ files.

Corners of one smoothing group that meet at one point share a normal, weighted by the angle each face has there.
A face without a group is flat. So an edge is hard exactly where groups differ; any object can name a group.
Corners run counter-clockwise seen from outside. Lengths are model units.

Texture coordinates of a face are one of:
  a list of (u, v), one per corner;
  one (u, v), which gives a plain tone;
  a texture map, which is a function (points, normal) that returns such a list.
"""

import dataclasses
import math

import numpy as np

# A normal for what should shine by itself. It gives full light while the model's up is anywhere near the viewer's up,
# although the faces look away from both lights.
GLOWING = np.array([0.0, 8.0, 0.0])
DARK = np.zeros(3)  # a normal for what takes no light but the ambient one

MIRROR = np.array([-1.0, 1.0, 1.0])
BACK = [0, 3, 2, 1]  # the corners of a quad in the order that shows its other side


@dataclasses.dataclass
class Face:
    """A convex polygon. `normals`, if set, replaces the geometric ones and may have any length."""

    points: np.ndarray
    coords: np.ndarray
    group: object
    normals: np.ndarray

    def mirrored(self):
        """The face reflected at x = 0, still wound counter-clockwise."""
        normals = None if self.normals is None else self.normals[::-1] * MIRROR
        return Face(self.points[::-1] * MIRROR, self.coords[::-1], self.group, normals)


def polygon_normal(points):
    """Unit normal by Newell's sum, which also serves polygons a bit out of plane."""
    following = np.roll(points, -1, axis=0)
    total = np.cross(points, following).sum(axis=0)
    length = np.linalg.norm(total)
    if length < 1e-9:
        raise ValueError("a face without area: %s" % points.tolist())
    return total / length


def strips(ring, following, closed=True):
    """The quads between the corresponding corners of two rings, each with the number of its first corner."""
    for j in range(len(ring) if closed else len(ring) - 1):
        k = (j + 1) % len(ring)
        yield j, np.array([ring[j], ring[k], following[k], following[j]], float)


class Mesh:
    def __init__(self):
        self.faces = []

    def face(self, points, coords, group=None, normal=None):
        """Adds a polygon without the corners that repeat their predecessor.

        `normal` is one for all corners or a list of one for each.
        """
        points = np.asarray(points, float)
        keep = [i for i in range(len(points)) if np.linalg.norm(points[i] - points[i - 1]) > 1e-6]
        if len(keep) < 3:
            return
        if callable(coords):
            coords = coords(points, polygon_normal(points[keep]))
        coords = np.broadcast_to(coords, (len(points), 2))
        normals = None if normal is None else np.broadcast_to(normal, points.shape)[keep]
        self.faces.append(Face(points[keep], coords[keep], group, normals))

    def bent(self, quad, coords, group=None):
        """Adds a quad that need not be flat, as two triangles."""
        for corners in ([0, 1, 2], [0, 2, 3]):
            self.face(quad[corners], coords if callable(coords) else np.broadcast_to(coords, (4, 2))[corners], group)

    def block(self, top, foot, coords, caps=1):
        """A block between two quads whose corners correspond.

        `top` is counter-clockwise seen from outside. `caps` ends are closed, the top first.
        """
        if caps > 0:
            self.face(top, coords)
        if caps > 1:
            self.face(foot[::-1], coords)
        for _, quad in strips(top, foot):
            self.face(quad[BACK], coords)

    def box(self, low, high, coords, caps=1, taper=(1.0, 1.0)):
        """An axis-aligned block whose top (+y) is scaled by `taper` in x and z."""
        (x, y, z), (wide, tall, long) = low, np.subtract(high, low) / 2

        def quad(height, scale_x, scale_z):
            return [(x + wide * (1 + a * scale_x), height, z + long * (1 + b * scale_z))
                    for a, b in [(1, 1), (1, -1), (-1, -1), (-1, 1)]]
        self.block(quad(high[1], *taper), quad(y, 1, 1), coords, caps)

    def loft(self, rings, coords, groups=None, closed=True):
        """Skins smooth cross-sections, ordered by rising z, each counter-clockwise seen from +z.

        `coords(i, j)` gives the texture coordinate of ring i, corner j; j may be one past the last corner of a
        closed ring. `groups[j]` is the smoothing group of the strip that begins at corner j; the default is one
        group for all.
        """
        groups = groups or [object()] * len(rings[0])
        for i, (ring, following) in enumerate(zip(rings, rings[1:])):
            for j, quad in strips(ring, following, closed):
                corners = [coords(i, j), coords(i, j + 1), coords(i + 1, j + 1), coords(i + 1, j)]
                self.bent(quad, corners, groups[j])

    def fan(self, ring, centre, ring_coords, centre_coord, group=None, normal=None):
        """Closes a ring, counter-clockwise seen from outside, with triangles to a centre."""
        for j in range(len(ring)):
            k = (j + 1) % len(ring)
            self.face([ring[j], ring[k], centre], [ring_coords[j], ring_coords[k], centre_coord], group, normal)

    def glow(self, ring, z, cell):
        """Closes a round section towards -z with a round cell (centre, radius) of the texture, which shines."""
        middle = np.mean(ring, axis=0)[:2]
        self.fan(ring[::-1], (*middle, z), circle(len(ring), *cell)[::-1], cell[0], normal=GLOWING)

    def add_both_sides(self, half):
        """Takes over a half's faces and their mirror images."""
        self.faces += half.faces + [face.mirrored() for face in half.faces]

    def move(self, way):
        for face in self.faces:
            face.points = face.points + way


def corner_angle(points, i):
    a = points[i - 1] - points[i]
    b = points[(i + 1) % len(points)] - points[i]
    cosine = np.dot(a, b) / (np.linalg.norm(a) * np.linalg.norm(b))
    return math.acos(max(-1.0, min(1.0, cosine)))


def corner_normals(faces):
    """For every face the unit normals of its corners."""
    def key(face, point):
        return face.group, tuple(np.round(point, 4) + 0.0)

    flat = [polygon_normal(face.points) for face in faces]
    sums = {}
    for face, normal in zip(faces, flat):
        for i, point in enumerate(face.points):
            corner = key(face, point)
            sums[corner] = sums.get(corner, 0.0) + normal * corner_angle(face.points, i)
    for face, normal in zip(faces, flat):
        if face.group is None:
            yield [normal] * len(face.points)
        else:
            totals = [sums[key(face, point)] for point in face.points]
            yield [total / np.linalg.norm(total) for total in totals]


@dataclasses.dataclass
class Shading:
    """How a model's normals are stretched and bent before they are written.

    The client scales models with glScalef and never asks OpenGL to normalise. So a model drawn at scale s is lit as
    if its normals were 1/s times as long, and its file holds normals of about length s.

    The lights stand at the viewer's left and above. Without more, half of all sides would get only the ambient light,
    and a team colour at half its strength is hardly seen before the sky. `lift` is added upwards and lights all sides
    of a ship that is anywhere near upright. `relief` is the length left to the normals themselves: it decides how much
    the light still tells the sides apart. A viewer straight above or below would see neither. For that viewer level
    faces bend outwards by up to `crown` towards the borders of an area of half sides `reach` (x, z), like a dome.
    """

    scale: float = 1.0
    relief: float = 1.0
    lift: float = 0.0
    crown: float = 0.0
    reach: tuple = (1.0, 1.0)

    STEPS = 8  # of the crown in one unit; finer steps would only make the files larger

    def apply(self, normal, place):
        """The normal to write for a face whose middle is at `place`."""
        outwards = np.clip(place[[0, 2]] / self.reach, -1, 1) * self.crown * abs(normal[1])
        x, z = np.round(outwards * self.STEPS) / self.STEPS
        return (normal * self.relief + np.array([x, self.lift, z])) * self.scale


# A speck hidden inside the hull: the last triangle of every file. Explosion quads set no normal of their own but
# inherit the last one drawn. This one faces (-x, -y) and lights them fully.
SPECK = np.array([(0.0, 0.0, 0.0), (0.05, -0.05, 0.0), (0.0, 0.0, 0.05)])


def write_obj(path, name, mesh, shading):
    """Writes triangles with texture coordinates and shaded normals. Returns their number."""
    lines = {"v": {}, "vt": {}, "vn": {}}  # for each keyword its different lines, numbered from 1
    digits = {"v": 3, "vt": 4, "vn": 3 - math.floor(math.log10(shading.scale))}
    triangles = []

    def number(keyword, values):
        rounded = [round(float(value), digits[keyword]) + 0.0 for value in values]  # + 0.0: no line says -0
        text = " ".join([keyword] + ["%.*f" % (digits[keyword], value) for value in rounded])
        return lines[keyword].setdefault(text, len(lines[keyword]) + 1)

    def write(points, coords, normals):
        corners = ["%d/%d/%d" % (number("v", p), number("vt", c), number("vn", n))
                   for p, c, n in zip(points, coords, normals)]
        triangles.extend("f %s %s %s" % (corners[0], *pair) for pair in zip(corners[1:], corners[2:]))

    for face, geometric in zip(mesh.faces, corner_normals(mesh.faces)):
        if face.normals is None:
            normals = [shading.apply(normal, face.points.mean(axis=0)) for normal in geometric]
        else:
            normals = face.normals * shading.scale
        write(face.points, face.coords, normals)
    write(SPECK, [mesh.faces[0].coords.mean(axis=0)] * 3, [polygon_normal(SPECK)] * 3)

    text = ["# Vantor: made by tools/art/make-art", "o " + name, *lines["v"], *lines["vt"], *lines["vn"], *triangles]
    path.write_text("\n".join(text) + "\n", encoding="ascii")
    return len(triangles)


def panel_axes(normal):
    """The axes along and across the panels of a face that looks along `normal`; panels run along z if they can."""
    return [(2, 1), (2, 0), (0, 1)][int(np.argmax(np.abs(normal)))]


def planar(units, v_centre, u_shift=0.0, middle=0.0):
    """A texture map that looks along the axis a face faces most.

    `units` is the model length that one whole texture covers. `v_centre` is the v of the plane x = `middle` or y = 0.
    """
    def coords(points, normal):
        along, across = panel_axes(normal)
        places = points - (middle, 0.0, 0.0)
        return [(p[along] / units + u_shift, p[across] / units + v_centre) for p in places]
    return coords


def arc_coords(rings, units, v_start, u_shift=0.0):
    """Texture coordinates for a loft: u along z, v along the girth of each ring."""
    girths = []
    for ring in rings:
        steps = np.linalg.norm(np.diff([*ring, ring[0]], axis=0), axis=1)
        girths.append(np.concatenate([[0.0], np.cumsum(steps)]))

    def coords(i, j):
        return rings[i][0][2] / units + u_shift, v_start + girths[i][j] / units
    return coords


def circle(count, centre, radius):
    """Points around a centre (x, y), counter-clockwise."""
    angles = [2 * math.pi * j / count for j in range(count)]
    return [(centre[0] + radius * math.cos(a), centre[1] + radius * math.sin(a)) for a in angles]


def round_section(count, radius, z, centre):
    """A round cross-section of a part that runs along z."""
    return [(x, y, z) for x, y in circle(count, centre, radius)]
