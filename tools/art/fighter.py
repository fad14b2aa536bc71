"""fighter.obj: nose along +z, up +y, drawn at 0.05; 78 model units long, 88 wide.

The camera sits 100 model units behind and 40 above, so it sees mostly the stern, the upper wings and the fins. The stern
is short, so that all of it is in the picture. An enemy 300 units away is a few pixels: wings, fins and engines are wide
and thick so that it can be seen.
"""

import mesh
from textures import (FIGHTER_BRIGHT, FIGHTER_DARK, FIGHTER_GLASS, FIGHTER_GLOW,
                      FIGHTER_HULL, FIGHTER_UNITS, FIGHTER_VENT, FIGHTER_WINGS)

SCALE = 0.05
SHADING = mesh.Shading(SCALE, relief=0.45, lift=0.68, crown=0.6, reach=(30.0, 40.0))

# z, half width, height of the side chine, top, bottom
FUSELAGE = [
    (-23.0, 4.6, 0.6, 4.4, -3.2),
    (-14.0, 5.8, 0.6, 5.4, -4.0),
    (0.0, 6.4, 0.3, 5.4, -4.4),
    (12.0, 5.8, 0.0, 4.2, -4.0),
    (26.0, 4.2, -0.4, 2.6, -3.2),
    (40.0, 2.3, -0.8, 0.9, -2.2),
    (51.0, 0.5, -1.1, -0.7, -1.4),
]

# z, half width, foot, top
CANOPY = [
    (-6.0, 1.6, 4.0, 5.6),
    (3.0, 3.0, 3.6, 8.0),
    (11.0, 3.0, 2.6, 7.2),
    (19.0, 2.2, 1.8, 4.7),
    (25.0, 0.5, 1.4, 2.4),
]

# z, radius
NACELLE = [(-22.0, 5.6), (-16.0, 6.5), (-4.0, 6.5), (7.0, 5.2)]
NACELLE_CENTRE = (11.6, 0.8)
POD_CENTRE = (40.6, 1.6)
NACELLE_SIDES = 10


def hull_map(v_centre=0.625, shift=0.0):
    return mesh.planar(FIGHTER_UNITS, v_centre, shift)


def fuselage(shape):
    rings = []
    for z, w, chine, top, bottom in FUSELAGE:
        shoulder = chine + (top - chine) * 0.72
        rings.append([(w, chine, z), (w * 0.62, shoulder, z), (w * 0.2, top, z),
                      (-w * 0.2, top, z), (-w * 0.62, shoulder, z), (-w, chine, z),
                      (-w * 0.5, bottom, z), (w * 0.5, bottom, z)])
    upper, lower = object(), object()
    coords = mesh.arc_coords(rings, FIGHTER_UNITS, FIGHTER_HULL[0] + 0.30)
    shape.loft(rings, coords, [upper] * 5 + [lower] * 3)
    shape.face(rings[0][::-1], hull_map(0.7))
    shape.face(rings[-1], hull_map(0.7))


def canopy(shape):
    rings = []
    for z, w, foot, top in CANOPY:
        shoulder = foot + (top - foot) * 0.68
        rings.append([(w, foot, z), (w * 0.72, shoulder, z), (0, top, z), (-w * 0.72, shoulder, z), (-w, foot, z)])
    u0, v0, u1, v1 = FIGHTER_GLASS
    first, last = CANOPY[0][0], CANOPY[-1][0]

    def coords(i, j):
        along = (CANOPY[i][0] - first) / (last - first)
        return (u0 + (u1 - u0) * along, v0 + (v1 - v0) * j / 4)
    shape.loft(rings, coords, closed=False)
    shape.face(rings[0][::-1], FIGHTER_BRIGHT)


def nacelle(half):
    """One engine: intake in front, glowing nozzle at the back."""
    def ring(z, radius):
        return mesh.round_section(NACELLE_SIDES, radius, z, NACELLE_CENTRE)
    rings = [ring(z, r) for z, r in NACELLE]
    half.loft(rings, mesh.arc_coords(rings, FIGHTER_UNITS, FIGHTER_HULL[0] + 0.2, 0.4))

    edge, throat = ring(-25.5, 4.9), ring(-24.4, 4.5)
    half.loft([edge, rings[0]], lambda i, j: (0.52 + 0.02 * j, 0.02 + 0.15 * i))
    for _, quad in mesh.strips(edge, throat):
        half.face(quad[mesh.BACK], FIGHTER_DARK)
    half.glow(throat, -24.4, FIGHTER_GLOW)

    lip, mouth = rings[-1], ring(4.0, 4.2)
    for _, quad in mesh.strips(lip, mouth):
        half.face(quad, FIGHTER_BRIGHT)
    half.fan(mouth, (*NACELLE_CENTRE, 5.0), [FIGHTER_DARK] * NACELLE_SIDES, FIGHTER_DARK, object())


def wing_section(x, y, lead, trail, thick):
    """Four corners of a wing's cut, seen from its tip: nose, top, tail, bottom."""
    middle = lead + (trail - lead) * 0.42
    return [(x, y, lead), (x, y + thick, middle), (x, y, trail), (x, y - thick, middle)]


def skin_wing(half, sections, coords):
    """Joins wing cuts, root first, and closes both ends."""
    for inner, outer in zip(sections, sections[1:]):
        for _, quad in mesh.strips(inner, outer):
            half.bent(quad[mesh.BACK], coords)
    half.face(sections[0], coords)
    half.face(sections[-1][::-1], coords)


def wing(half):
    skin_wing(half, [wing_section(15.0, 0.9, 12.0, -21.0, 2.5),
                     wing_section(24.0, 0.2, 0.5, -21.5, 2.0),
                     wing_section(40.0, 1.6, -10.0, -23.0, 1.3)], hull_map(FIGHTER_WINGS, 0.17))
    # the strake from the nose to the engine
    skin_wing(half, [wing_section(3.8, -0.2, 29.0, -4.0, 1.1),
                     wing_section(8.6, 0.3, 10.0, -4.0, 0.9)], hull_map(0.45, 0.55))


def fins(half):
    """A tail fin that leans outwards, and a smaller one on the pod at the wing's tip."""
    half.block([(22.6, 20.5, -27.0), (21.6, 20.5, -27.0), (21.6, 22.5, -17.0), (22.6, 22.5, -17.0)],
               [(14.4, 5.0, -21.0), (12.6, 5.0, -21.0), (12.2, 5.0, 2.0), (14.6, 5.0, 2.0)], hull_map(0.5, 0.3))
    half.block([(44.0, 10.0, -25.0), (43.2, 10.0, -25.0), (43.2, 11.0, -18.0), (44.0, 11.0, -18.0)],
               [(41.6, 3.2, -22.0), (39.8, 3.2, -22.0), (39.8, 3.2, -7.0), (41.6, 3.2, -7.0)], hull_map(0.5, 0.3))


def pod(half):
    """The pod at the wing's tip: a small engine behind, a gun in front."""
    def ring(z, radius):
        return mesh.round_section(6, radius, z, POD_CENTRE)
    body = [ring(-25.0, 2.3), ring(-19.0, 3.0), ring(-8.0, 2.7), ring(-2.0, 1.0)]
    half.loft(body, mesh.arc_coords(body, FIGHTER_UNITS, 0.45, 0.2))
    half.face(body[0][::-1], mesh.circle(6, *FIGHTER_GLOW)[::-1], normal=mesh.GLOWING)
    half.face(body[-1], FIGHTER_DARK)
    barrel = [ring(-2.0, 0.7)[::2], ring(13.0, 0.55)[::2]]
    half.loft(barrel, lambda i, j: FIGHTER_VENT[:2])
    half.face(barrel[1], FIGHTER_BRIGHT)


def spine(shape):
    """A dark ridge behind the canopy and the grille between the engines."""
    shape.box((-1.1, 4.0, -20.0), (1.1, 6.0, -5.0), hull_map(0.6, 0.75), taper=(0.6, 0.75))
    u0, v0, u1, v1 = FIGHTER_VENT
    shape.face([(3.6, -2.0, -23.2), (-3.6, -2.0, -23.2), (-3.2, 2.8, -23.2), (3.2, 2.8, -23.2)],
               [(u0, v0), (u1, v0), (u1, v1), (u0, v1)])


def make(path):
    shape, half = mesh.Mesh(), mesh.Mesh()
    fuselage(shape)
    canopy(shape)
    spine(shape)
    nacelle(half)
    wing(half)
    fins(half)
    pod(half)
    shape.add_both_sides(half)
    return mesh.write_obj(path, "fighter", shape, SHADING)
