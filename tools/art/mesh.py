"""Meshes made of flat polygons with smoothing groups, and their OBJ files.

A face belongs to one smoothing group or to none. Corners of one group that
meet at one point share a normal, weighted by the angle each face has there;
a face without a group is flat. So an edge is hard exactly where groups differ.
Winding is counter-clockwise seen from outside. Lengths are model units.
"""

import math

import numpy as np

# A normal for what should shine by itself: full light whenever the model's up is
# anywhere near the viewer's up, although its faces look away from both lights.
GLOWING = np.array([0.0, 8.0, 0.0])

ANCHOR_SIZE = 0.05  # model units; far below a pixel and hidden inside the hull


class Face:
    """A convex polygon with one texture coordinate per corner.

    `normal`, if set, replaces the geometric ones and may have any length; it is one
    for all corners or a list of one for each.
    """

    def __init__(self, points, coords, group=None, normal=None):
        self.points = np.asarray(points, float)
        self.coords = np.asarray(coords, float)
        self.group = group
        self.normal = None if normal is None else np.broadcast_to(normal, self.points.shape)


def polygon_normal(points):
    """Unit normal by Newell's sum; it also serves polygons a bit out of plane."""
    following = np.roll(points, -1, axis=0)
    total = np.cross(points, following).sum(axis=0)
    length = np.linalg.norm(total)
    if length < 1e-9:
        raise ValueError("a face without area: %s" % points.tolist())
    return total / length


def without_repeats(points):
    """The indices of the corners that differ from their predecessor."""
    return [i for i in range(len(points))
            if np.linalg.norm(points[i] - points[i - 1]) > 1e-6]


class Mesh:
    def __init__(self):
        self.faces = []
        self._groups = 0

    def new_group(self):
        self._groups += 1
        return self._groups

    def face(self, points, coords, group=None, normal=None):
        """Adds a polygon; `coords` is a list of (u, v) or a map (points, normal) -> list."""
        points = np.asarray(points, float)
        keep = without_repeats(points)
        if len(keep) < 3:
            return
        if callable(coords):
            coords = coords(points, polygon_normal(points[keep]))
        coords = np.asarray(coords, float)
        self.faces.append(Face(points[keep], coords[keep], group, normal))

    def hexahedron(self, near, far, coords, skip=()):
        """A block between two quads whose corners correspond.

        `near` is counter-clockwise seen from outside the near end and `far`
        lists the same corners at the far end. `skip` names faces to leave out:
        "near", "far" or a side 0..3 that starts at that corner of `near`.
        """
        near, far = np.asarray(near, float), np.asarray(far, float)
        if "near" not in skip:
            self.face(near, coords)
        if "far" not in skip:
            self.face(far[::-1], coords)
        for i in range(4):
            j = (i + 1) % 4
            if i not in skip:
                self.face([near[i], far[i], far[j], near[j]], coords)

    def box(self, low, high, coords, skip=(), taper=(1.0, 1.0)):
        """An axis-aligned box; its top (+y) is scaled by `taper` in x and z.

        Sides for `skip`: "near" is the top, "far" the bottom, 0..3 are +x, -z, -x, +z.
        """
        (x0, y0, z0), (x1, y1, z1) = low, high
        cx, cz = (x0 + x1) / 2, (z0 + z1) / 2
        hx, hz = (x1 - x0) / 2, (z1 - z0) / 2
        corners = [(1, 1), (1, -1), (-1, -1), (-1, 1)]
        top = [(cx + hx * a * taper[0], y1, cz + hz * b * taper[1]) for a, b in corners]
        bottom = [(cx + hx * a, y0, cz + hz * b) for a, b in corners]
        self.hexahedron(top, bottom, coords, skip)

    def loft(self, rings, coords, groups=None, closed=True):
        """Skins cross-sections, ordered by rising z, each counter-clockwise seen from +z.

        `coords(i, j)` gives the texture coordinate of ring i, corner j (j may be
        one past the last corner of a closed ring). `groups[j]` is the smoothing
        group of the strip from corner j to j + 1; without it one group serves all.
        """
        rings = [np.asarray(ring, float) for ring in rings]
        count = len(rings[0])
        if groups is None:
            groups = [self.new_group()] * count
        for i in range(len(rings) - 1):
            for j in range(count if closed else count - 1):
                k = (j + 1) % count
                quad = [rings[i][j], rings[i][k], rings[i + 1][k], rings[i + 1][j]]
                uv = [coords(i, j), coords(i, j + 1), coords(i + 1, j + 1), coords(i + 1, j)]
                self._skin_quad(quad, uv, groups[j])

    def _skin_quad(self, quad, uv, group):
        """Bent quads are cut here, so that both halves are truly flat."""
        quad = np.asarray(quad)
        if len(without_repeats(quad)) < 4:
            self.face(quad, uv, group)
            return
        self.face(quad[[0, 1, 2]], [uv[0], uv[1], uv[2]], group)
        self.face(quad[[0, 2, 3]], [uv[0], uv[2], uv[3]], group)

    def fan(self, ring, centre, ring_coords, centre_coord, group=None, normal=None):
        """Closes a ring, counter-clockwise seen from outside, with triangles to a centre."""
        for j in range(len(ring)):
            k = (j + 1) % len(ring)
            self.face([ring[j], ring[k], centre],
                      [ring_coords[j], ring_coords[k], centre_coord], group, normal)

    def add(self, other):
        """Takes over the faces of another mesh; its smoothing groups stay its own."""
        for face in other.faces:
            group = None if face.group is None else face.group + self._groups
            self.faces.append(Face(face.points, face.coords, group, face.normal))
        self._groups += other._groups

    def mirrored(self):
        """The mesh reflected at x = 0, still wound counter-clockwise."""
        mesh = Mesh()
        mesh._groups = self._groups
        flip = np.array([-1.0, 1.0, 1.0])
        mesh.faces = [Face(f.points[::-1] * flip, f.coords[::-1], f.group,
                           None if f.normal is None else f.normal[::-1] * flip)
                      for f in self.faces]
        return mesh

    def add_both_sides(self, half):
        self.add(half)
        self.add(half.mirrored())

    def move(self, way):
        for face in self.faces:
            face.points = face.points + np.asarray(way, float)


def point_key(point):
    return tuple(np.round(point, 4) + 0.0)


def corner_angle(points, i):
    a = points[i - 1] - points[i]
    b = points[(i + 1) % len(points)] - points[i]
    cosine = np.dot(a, b) / (np.linalg.norm(a) * np.linalg.norm(b))
    return math.acos(max(-1.0, min(1.0, cosine)))


def corner_normals(mesh):
    """For every face the unit normals of its corners."""
    flat = [polygon_normal(face.points) for face in mesh.faces]
    sums = {}
    for face, normal in zip(mesh.faces, flat):
        if face.group is None:
            continue
        for i, point in enumerate(face.points):
            key = (face.group, point_key(point))
            sums[key] = sums.get(key, 0.0) + normal * corner_angle(face.points, i)
    result = []
    for face, normal in zip(mesh.faces, flat):
        if face.normal is not None:
            result.append(list(face.normal))
        elif face.group is None:
            result.append([normal] * len(face.points))
        else:
            total = [sums[(face.group, point_key(p))] for p in face.points]
            result.append([t / np.linalg.norm(t) for t in total])
    return result


class Pool:
    """Numbers equal lines of an OBJ file from 1, so that each is written once."""

    def __init__(self, keyword):
        self.keyword = keyword
        self.numbers = {}

    def number(self, values, digits):
        text = " ".join("%.*f" % (digits, v + 0.0) for v in values)
        text = " ".join(part if float(part) else part.lstrip("-") for part in text.split())
        return self.numbers.setdefault(text, len(self.numbers) + 1)

    def lines(self):
        return ["%s %s" % (self.keyword, text) for text in self.numbers]


def anchor_triangle(centre):
    """A speck inside the hull that faces (-x, -y); see write_obj."""
    across = np.array([1.0, -1.0, 0.0]) * ANCHOR_SIZE
    along = np.array([0.0, 0.0, 1.0]) * ANCHOR_SIZE
    centre = np.asarray(centre, float)
    return [centre, centre + across, centre + along]


class Shading:
    """How a model's normals are stretched and bent before they are written.

    The lights stand at the viewer's left and above, so half of all sides would get no light but
    the ambient one, and a team colour at half its strength is hardly seen before the sky. `lift`,
    which is added upwards, lights all sides of a ship that is anywhere near upright; `relief`, the
    length left to the normals themselves, decides how much light still tells the sides apart.
    Who looks straight down or up sees neither: for them, what is level bends outwards by up to
    `crown` towards the borders of an area of half sides `reach` (x, z), as if the ship were domed.
    """

    STEPS = 8  # of the crown in one unit: finer ones would only make the files larger

    def __init__(self, scale=1.0, relief=1.0, lift=0.0, crown=0.0, reach=(1.0, 1.0)):
        self.scale = scale
        self.relief = relief
        self.lift = lift
        self.crown = crown
        self.reach = np.array(reach)

    def apply(self, normal, place):
        """The normal to write for a face whose middle is at `place`."""
        outwards = np.clip(place[[0, 2]] / self.reach, -1, 1) * self.crown * abs(normal[1])
        x, z = np.round(outwards * self.STEPS) / self.STEPS
        return (normal * self.relief + np.array([x, self.lift, z])) * self.scale


def write_obj(path, name, mesh, anchor, shading):
    """Writes triangles with texture coordinates and shaded normals.

    The client scales models with glScalef and never asks OpenGL to normalise, so a
    model drawn at scale s is lit as if its normals were 1/s times as long: its file
    holds normals of about length s, but for what should shine: those are many times longer.

    Explosion quads set no normal of their own, they inherit the last one drawn. The
    last triangle of every file, hidden at `anchor`, leaves one that lights them fully.
    """
    points, coords, normals = Pool("v"), Pool("vt"), Pool("vn")
    normal_digits = 3 - math.floor(math.log10(shading.scale))
    body = []

    def corner(point, coord, normal):
        return "%d/%d/%d" % (points.number(point, 3), coords.number(coord, 4),
                             normals.number(normal, normal_digits))

    for face, face_normals in zip(mesh.faces, corner_normals(mesh)):
        if face.normal is None:
            middle = face.points.mean(axis=0)
            face_normals = [shading.apply(n, middle) for n in face_normals]
        else:
            face_normals = [n * shading.scale for n in face_normals]
        corners = [corner(p, c, n) for p, c, n in zip(face.points, face.coords, face_normals)]
        for i in range(1, len(corners) - 1):
            body.append("f %s %s %s" % (corners[0], corners[i], corners[i + 1]))

    speck = anchor_triangle(anchor)
    facing = polygon_normal(np.asarray(speck))
    uv = np.mean(mesh.faces[0].coords, axis=0)
    body.append("f " + " ".join(corner(p, uv, facing) for p in speck))

    head = ["# Vantor: made by tools/art/make-art", "o " + name]
    lines = head + points.lines() + coords.lines() + normals.lines() + body
    with open(path, "w", encoding="ascii", newline="\n") as file:
        file.write("\n".join(lines) + "\n")
    return len(body)


def planar(units, v_centre, u_shift=0.0):
    """A texture map that looks along the axis a face faces most; panels run along z.

    `units` is the model length that one whole texture covers. The other direction is
    centred at `v_centre` on the model's axis.
    """
    def coords(points, normal):
        axis = int(np.argmax(np.abs(normal)))
        along, across = [(2, 1), (2, 0), (0, 1)][axis]
        return [(p[along] / units + u_shift, p[across] / units + v_centre) for p in points]
    return coords


def constant(u, v):
    """A texture map that gives every corner one coordinate: a plain tone."""
    return lambda points, normal: [(u, v)] * len(points)


def arc_coords(rings, units, v_start, u_shift=0.0):
    """Texture coordinates for a loft: u along z, v along the girth of each ring."""
    table = []
    for ring in rings:
        ring = np.asarray(ring, float)
        closed = np.vstack([ring, ring[:1]])
        steps = np.linalg.norm(np.diff(closed, axis=0), axis=1)
        table.append(np.concatenate([[0.0], np.cumsum(steps)]))

    def coords(i, j):
        z = np.asarray(rings[i], float)[j % len(rings[i])][2]
        return (z / units + u_shift, v_start + table[i][j] / units)
    return coords


def ring_points(count, radius, z, centre=(0.0, 0.0), turn=0.0, squash=1.0):
    """A regular ring around the z axis, counter-clockwise seen from +z."""
    angles = [2 * math.pi * j / count + turn for j in range(count)]
    return [(centre[0] + radius * math.cos(a), centre[1] + radius * squash * math.sin(a), z)
            for a in angles]


def disc_coords(count, centre, radius, turn=0.0):
    """Texture coordinates of a ring that shows a round cell of the texture."""
    return [(centre[0] + radius * math.cos(2 * math.pi * j / count + turn),
             centre[1] + radius * math.sin(2 * math.pi * j / count + turn))
            for j in range(count)]
