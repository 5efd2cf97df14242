#!/usr/bin/python3
"""Tool drawings with known true profiles, written by ezdxf, for judging
outlines: every tool family of the samples plus threads, bores and recesses
at end faces, slots, parts standing upright, parts drawn in full or as one
half, the profile as lines, polylines or nested mirrored blocks, gaps and
overlaps, flutes and hatches inside, dimensions as entities and exploded,
centre and hidden lines by layer and by entity, several tools on one sheet
in tagged frames.

Every profile is given as the upper silhouette in the tool's own frame: a
list of (x, y, bulge) vertices from (0, 0) on the axis to (L, 0) on the
axis, x-monotone. The truth file (the outline scorer's format) follows from
it exactly.

usage: tool_drawings.py OUT_DIR     (writes the drawings and CASES.json)
"""
import json
import math
import os
import sys

import ezdxf
from ezdxf.math import Matrix44

T8 = math.tan(math.pi / 8)  # bulge of a quarter circle


def cone(r, half_angle_deg):
    """Length along the axis of a cone tip from the axis to radius r."""
    return r / math.tan(math.radians(half_angle_deg))


# The families: upper silhouettes, (0, 0) ... (L, 0).
FAMILIES = {
    "twist_drill": [(0, 0, 0), (cone(5, 59), 5, 0), (100, 5, 0), (100, 0, 0)],
    "step_drill": [(0, 0, 0), (cone(3, 59), 3, 0), (20, 3, 0), (20 + cone(2, 59), 5, 0), (110, 5, 0),
                   (110, 0, 0)],
    "end_mill": [(0, 0, 0), (0, 5, -T8), (1, 6, 0), (40, 6, 0), (42, 5.5, 0), (60, 5.5, 0), (62, 6, 0),
                 (100, 6, 0), (100, 0, 0)],
    "ball_nose": [(0, 0, -T8), (5, 5, 0), (90, 5, 0), (90, 0, 0)],
    "reamer": [(0, 0, 0), (0, 3.5, 0), (0.5, 4, 0), (40, 4, 0), (40, 3, 0), (90, 3, 0), (90, 0, 0)],
    "countersink": [(0, 0, 0), (0, 1, 0), (7, 8, 0), (25, 8, 0), (27, 5, 0), (60, 5, 0), (60, 0, 0)],
    "form_tool": [(0, 0, 0), (0, 4, 0), (5, 4, 1.0), (11, 4, 0), (15, 6, 0), (60, 6, 0), (60, 0, 0)],
    # A tap: thread crest at r 4 with a chamfered start, the thread root drawn inside.
    "tap": [(0, 0, 0), (0, 3.2, 0), (1.5, 4, 0), (30, 4, 0), (31, 3, 0), (80, 3, 0), (80, 0, 0)],
    # A screw-like part: a head with a rounded edge, a shank with a chamfered end.
    "screw": [(0, 0, 0), (0, 7, -T8), (1, 8, 0), (6, 8, 0), (6, 4, 0), (29.5, 4, 0), (30, 3.5, 0), (30, 0, 0)],
}


# ------------------------------------------------------------------ truth
def arc_of(p, q, b):
    """Centre, radius and signed sweep of the edge p->q with bulge b."""
    theta = 4 * math.atan(b)
    dx, dy = q[0] - p[0], q[1] - p[1]
    chord = math.hypot(dx, dy)
    r = chord / (2 * math.sin(abs(theta) / 2))
    mx, my = (p[0] + q[0]) / 2, (p[1] + q[1]) / 2
    h = r * math.cos(theta / 2) * (1 if theta > 0 else -1)
    cx, cy = mx - dy / chord * h, my + dx / chord * h
    return (cx, cy), r, math.degrees(theta)


def truth_of(name, profile):
    pieces = []
    area = 0.0
    volume = 0.0
    for (x0, y0, b), (x1, y1, _) in zip(profile, profile[1:]):
        if b:
            c, r, sweep = arc_of((x0, y0), (x1, y1), b)
            pieces.append({"type": "arc", "center": list(c), "r": r, "p": [x0, y0], "q": [x1, y1],
                           "sweep_deg": sweep})
        else:
            pieces.append({"type": "line", "p": [x0, y0], "q": [x1, y1]})
    # Area and volume by fine sampling of each piece (the scorer compares to 1e-4).
    pts = []
    for (x0, y0, b), (x1, y1, _) in zip(profile, profile[1:]):
        n = 2000 if b else 1
        if b:
            c, r, sweep = arc_of((x0, y0), (x1, y1), b)
            a0 = math.atan2(y0 - c[1], x0 - c[0])
            for k in range(n):
                a = a0 + math.radians(sweep) * k / n
                pts.append((c[0] + r * math.cos(a), c[1] + r * math.sin(a)))
        else:
            pts.append((x0, y0))
    pts.append(profile[-1][:2])
    for (x0, y0), (x1, y1) in zip(pts, pts[1:]):
        area += (x1 - x0) * (y0 + y1) / 2
        volume += math.pi * (x1 - x0) * (y0 * y0 + y0 * y1 + y1 * y1) / 3
    # The arcs' exact areas: add the circular segments left out by the chords.
    for (x0, y0, b), (x1, y1, _) in zip(profile, profile[1:]):
        if b:
            c, r, sweep = arc_of((x0, y0), (x1, y1), b)
            n = 2000
            t = abs(math.radians(sweep)) / n
            seg = n * r * r * (t - math.sin(t)) / 2
            area += seg if sweep < 0 else -seg
    pieces.append({"type": "line", "p": list(profile[-1][:2]), "q": list(profile[0][:2])})
    xs = [p[0] for p in profile]
    return {"id": name, "axis_y": 0.0, "x_range": [min(xs), max(xs)],
            "max_radius": max(p[1] for p in profile), "outline": pieces, "area": abs(area), "volume": abs(volume)}


# ---------------------------------------------------------------- drawing
def setup(version="R2010"):
    doc = ezdxf.new(version, setup=True)
    doc.appids.add("TUKANGE_NAME_IDENTITY")
    doc.layers.add("中心线", linetype="CENTER", color=1)
    doc.layers.add("HIDDEN", linetype="DASHED", color=3)
    doc.layers.add("尺寸线", color=2)
    doc.layers.add("AXIS", color=4)  # contour lines on a layer named like an axis, drawn continuous
    return doc


def mirror_profile(profile):
    return [(x, -y, -b) for x, y, b in profile]


def shorten(p, q, d):
    """p moved towards q by d (negative: away, an overshoot)."""
    L = math.hypot(q[0] - p[0], q[1] - p[1])
    return (p[0] + (q[0] - p[0]) * d / L, p[1] + (q[1] - p[1]) * d / L)


def add_edges(space, profile, layer="0", gaps=0.0, attribs=None):
    """The silhouette as LINE and ARC entities; with gaps, line ends alternately
    fall short and run over along their own line, up to `gaps` apart."""
    attribs = dict(attribs or {}, layer=layer)
    for k, ((x0, y0, b), (x1, y1, _)) in enumerate(zip(profile, profile[1:])):
        if b:
            c, r, sweep = arc_of((x0, y0), (x1, y1), b)
            a0 = math.degrees(math.atan2(y0 - c[1], x0 - c[0]))
            a1 = math.degrees(math.atan2(y1 - c[1], x1 - c[0]))
            start, end = (a0, a1) if sweep > 0 else (a1, a0)
            space.add_arc(c, r, start, end, dxfattribs=attribs)
        else:
            p, q = (x0, y0), (x1, y1)
            if gaps and math.hypot(x1 - x0, y1 - y0) > 4 * gaps:
                # Ends fall short or run over by half the gap each, so ends
                # that should meet are at most `gaps` apart.
                d = gaps / 2 if k % 2 == 0 else -gaps / 2
                p, q = shorten(p, q, d), shorten(q, p, -d)
            space.add_line(p, q, dxfattribs=attribs)


def add_polyline(space, profile, layer="0"):
    space.add_lwpolyline([(x, y, 0, 0, b) for x, y, b in profile], format="xyseb", dxfattribs={"layer": layer})


def add_centre_line(space, x0, x1, by_layer=True, y=0.0):
    if by_layer:
        space.add_line((x0, y), (x1, y), dxfattribs={"layer": "中心线"})
    else:
        space.add_line((x0, y), (x1, y), dxfattribs={"layer": "0", "linetype": "CENTER"})


def add_dimensions(doc, space, length, radius, exploded=False, layer="尺寸线"):
    """A length dimension above the tool and a diameter dimension at its right end."""
    y = radius + 6
    if not exploded:
        dim = space.add_linear_dim(base=(0, y), p1=(0, radius), p2=(length, radius),
                                   dxfattribs={"layer": layer})
        dim.render()
        dim2 = space.add_linear_dim(base=(length + 6, 0), p1=(length, radius), p2=(length, -radius), angle=90,
                                    dxfattribs={"layer": layer})
        dim2.render()
        return
    # Exploded, on layer 0: extension lines from the part, a dimension line with
    # SOLID arrowheads at its ends, and the text.
    a = {"layer": "0"}
    space.add_line((0, radius), (0, y + 2), dxfattribs=a)
    space.add_line((length, radius), (length, y + 2), dxfattribs=a)
    space.add_line((0, y), (length, y), dxfattribs=a)
    space.add_solid([(0, y), (2.5, y + 0.5), (2.5, y - 0.5)], dxfattribs=a)
    space.add_solid([(length, y), (length - 2.5, y + 0.5), (length - 2.5, y - 0.5)], dxfattribs=a)
    space.add_text(f"{length:g}", dxfattribs=dict(a, height=2.5)).set_placement((length / 2, y + 1))


def add_inside(space, profile, flutes=0, hatch=True, hidden_by_layer=True):
    """Flute lines, a hatch, a hidden bore (dashed) and a dashed box that would
    stand out of the part if it were taken for contour."""
    length = max(p[0] for p in profile)
    r = min(p[1] for p in profile[1:-1] if p[1] > 0)
    for k in range(flutes):
        x = length * 0.25 + (length * 0.6) * k / max(1, flutes)
        space.add_line((x, -0.8 * r), (x + r, 0.8 * r), dxfattribs={"layer": "0"})
    if hatch:
        h = space.add_hatch(color=8, dxfattribs={"layer": "0"})
        h.paths.add_polyline_path([(length * 0.5, -r * 0.5), (length * 0.7, -r * 0.5), (length * 0.7, -r * 0.2),
                                   (length * 0.5, -r * 0.2)], is_closed=True)
    attribs = {"layer": "HIDDEN"} if hidden_by_layer else {"layer": "0", "linetype": "DASHED"}
    space.add_lwpolyline([(length * 0.3, r * 0.5), (length * 0.4, r * 0.5), (length * 0.4, r * 2),
                          (length * 0.3, r * 2)], close=True, dxfattribs=attribs)


def add_end_features(space, profile, bore=False, slot=False):
    """A centre bore at the right end face, a slot across the left end face,
    drawn with the end faces cut where they meet them."""
    length = max(p[0] for p in profile)
    if bore:
        b = 1.0
        for s in (1, -1):
            space.add_line((length, s * b), (length - 3, s * b))
            space.add_line((length - 3, s * b), (length - 3.6, 0))
    if slot:
        w = 0.8
        space.add_line((0, w), (2, w))
        space.add_line((2, w), (2, -w))
        space.add_line((2, -w), (0, -w))


def frame_block(doc):
    if "TOOL_FRAME" in doc.blocks:
        return
    blk = doc.blocks.new("TOOL_FRAME")
    blk.add_lwpolyline([(0, 0), (160, 0), (160, 60), (0, 60)], close=True)


def add_frame(space, at, number):
    ref = space.add_blockref("TOOL_FRAME", at)
    ref.set_xdata("TUKANGE_NAME_IDENTITY", [(1000, number)])
    return ref


def draw_tool(doc, space, profile, style="lines", half=False, gaps=0.0, centre_by_layer=True, dims=None,
              flutes=0, hatch=True, hidden_by_layer=True, bore=False, slot=False, xform=None, block_name=None):
    """Draws a tool about the x axis at the origin into space (or a block, then
    inserted with xform)."""
    target = space
    if xform is not None:
        name = block_name or f"TOOL_{len(doc.blocks)}"
        target = doc.blocks.new(name)
    length = max(p[0] for p in profile)
    radius = max(p[1] for p in profile)
    halves = [profile] if half else [profile, mirror_profile(profile)]
    if style == "lines":
        for h in halves:
            add_edges(target, h, gaps=gaps)
    elif style == "polyline":
        for h in halves:
            add_polyline(target, h)
    elif style == "block":
        # The upper half in a block, inserted once as drawn and once mirrored
        # (y scale -1), both inside a second block.
        half_name = f"HALF_{len(doc.blocks)}"
        hb = doc.blocks.new(half_name)
        add_edges(hb, profile)
        whole = doc.blocks.new(half_name + "_WHOLE")
        whole.add_blockref(half_name, (0, 0))
        if not half:
            whole.add_blockref(half_name, (0, 0), dxfattribs={"yscale": -1})
        target.add_blockref(half_name + "_WHOLE", (0, 0))
    # Lines across the body at every step (drawn between the halves).
    for x, y, _ in profile[1:-1]:
        if 0 < x < length and y > 0:
            target.add_line((x, 0 if half else -y), (x, y))
    add_centre_line(target, -4, length + 4, by_layer=centre_by_layer)
    add_inside(target, profile, flutes=flutes, hatch=hatch, hidden_by_layer=hidden_by_layer)
    add_end_features(target, profile, bore=bore, slot=slot)
    if dims:
        add_dimensions(doc, target, length, radius, exploded=(dims == "exploded"))
    if xform is not None:
        ref = space.add_blockref(target.name, (0, 0))
        ref.transform(xform)


def case(cases, out, name, profile, args, draw, version="R2010", vertical=False, expect="pass"):
    doc = setup(version)
    msp = doc.modelspace()
    draw(doc, msp)
    path = os.path.join(out, name + ".dxf")
    doc.saveas(path)
    truth = truth_of(name, profile)
    tpath = os.path.join(out, name + ".truth.json")
    with open(tpath, "w") as f:
        json.dump(truth, f, indent=1)
    cases.append({"name": name, "dxf": path, "truth": tpath, "args": args, "vertical": vertical, "expect": expect})


def make_cases(out):
    os.makedirs(out, exist_ok=True)
    cases = []
    auto = ["--centre", "auto"]
    # Every family, drawn in full as lines with a centre line by layer.
    for fam, prof in FAMILIES.items():
        case(cases, out, f"{fam}_lines", prof, auto, lambda d, m, p=prof: draw_tool(d, m, p))
    # Profile as polylines, exploded dimensions, centre and hidden lines by entity.
    case(cases, out, "end_mill_polyline_exploded_dims", FAMILIES["end_mill"], auto,
         lambda d, m: draw_tool(d, m, FAMILIES["end_mill"], style="polyline", dims="exploded",
                                centre_by_layer=False, hidden_by_layer=False))
    case(cases, out, "reamer_dimension_entities", FAMILIES["reamer"], auto,
         lambda d, m: draw_tool(d, m, FAMILIES["reamer"], dims="entities"))
    # Gaps and overlaps of 0.02 mm between the pieces.
    for fam in ("step_drill", "end_mill", "form_tool", "countersink"):
        case(cases, out, f"{fam}_gaps", FAMILIES[fam], auto,
             lambda d, m, f=fam: draw_tool(d, m, FAMILIES[f], gaps=0.02))
    # Nested, mirrored blocks; moved and rotated by the insert.
    case(cases, out, "ball_nose_nested_blocks", FAMILIES["ball_nose"], auto,
         lambda d, m: draw_tool(d, m, FAMILIES["ball_nose"], style="block"))
    # One half drawn, closed by the axis.
    for fam in ("twist_drill", "form_tool", "screw"):
        case(cases, out, f"{fam}_half", FAMILIES[fam], auto,
             lambda d, m, f=fam: draw_tool(d, m, FAMILIES[f], half=True))
    # Flutes, hatch, bore and slot at the end faces.
    case(cases, out, "twist_drill_flutes_bore", FAMILIES["twist_drill"], auto,
         lambda d, m: draw_tool(d, m, FAMILIES["twist_drill"], flutes=12, bore=True))
    case(cases, out, "screw_slot", FAMILIES["screw"], auto,
         lambda d, m: draw_tool(d, m, FAMILIES["screw"], slot=True, bore=True))
    case(cases, out, "tap_thread_root", FAMILIES["tap"], auto,
         lambda d, m: (draw_tool(d, m, FAMILIES["tap"]),
                       m.add_line((1.5, 3.4), (30, 3.4)), m.add_line((1.5, -3.4), (30, -3.4))))
    # Standing upright (axis vertical), through a rotated block, and with the
    # axis given as a line.
    up = Matrix44.z_rotate(math.pi / 2)
    case(cases, out, "step_drill_vertical", FAMILIES["step_drill"], auto,
         lambda d, m: draw_tool(d, m, FAMILIES["step_drill"], xform=up), vertical=True)
    case(cases, out, "countersink_vertical_axis_line", FAMILIES["countersink"], ["--axis", "0,-10,0,10"],
         lambda d, m: draw_tool(d, m, FAMILIES["countersink"], xform=up, style="polyline"), vertical=True)
    # Without a centre line: the contour's mirror line.
    case(cases, out, "reamer_no_centre_line", FAMILIES["reamer"], auto,
         lambda d, m: [m.add_lwpolyline([(x, y, 0, 0, b) for x, y, b in h], format="xyseb")
                       for h in (FAMILIES["reamer"], mirror_profile(FAMILIES["reamer"]))])
    # Several tools on one sheet, in tagged frames, by tool number.
    def sheet(d, m):
        frame_block(d)
        for k, fam in enumerate(("end_mill", "twist_drill", "form_tool")):
            ox = 200 * k
            add_frame(m, (ox - 20, -30), f"T-{k + 1}")
            draw_tool(d, m, FAMILIES[fam], xform=Matrix44.translate(ox, 0, 0))
    case(cases, out, "sheet_tool_2", [(x + 200, y, b) for x, y, b in FAMILIES["twist_drill"]],
         ["--tool", "T-2", "--centre", "auto"], sheet)
    with open(os.path.join(out, "CASES.json"), "w") as f:
        json.dump(cases, f, indent=1)
    return cases


if __name__ == "__main__":
    make_cases(sys.argv[1])
