#!/usr/bin/python3
"""Makes the sample tool drawings of envline with ezdxf.

Each drawing holds a tool's side view with both halves, silhouette lines at
every step, a centre line, hidden lines, dimensions on layer 尺寸线, text and
a hatch, inside a drawing frame: a block reference that carries the tool
number as extended data of TUKANGE_NAME_IDENTITY. The drawings come in
R2000 (code page ANSI_936), R2010 and R2018.

Writes the drawings, samples.tsv (file, tool number, selection window and
centre point of every tool) and README.md into the folder of this script.

usage: make_samples.py
"""
import math
import os

import ezdxf

HERE = os.path.dirname(os.path.abspath(__file__))
T8 = math.tan(math.pi / 8)  # bulge of a quarter circle


def tip(radius, angle_deg):
    """x at which a point of the given included angle reaches radius."""
    return radius / math.tan(math.radians(angle_deg / 2))


# Upper half profiles: (x, y, bulge of the segment that starts here), from
# the left end on the axis to the right end on the axis.
TOOLS = {
    "twist_drill": ("T-1001", "麻花钻 Ø10 118°", [(0, 0, 0), (tip(5, 118), 5, 0), (62, 5, 0), (64, 4.8, 0),
                                                (99.5, 4.8, 0), (100, 4.3, 0), (100, 0, 0)]),
    "step_drill": ("T-1002", "阶梯钻 Ø6/Ø10", [(0, 0, 0), (tip(3, 118), 3, 0), (18, 3, 0), (20, 5, 0), (75, 5, 0),
                                             (110, 5, 0), (110, 0, 0)]),
    "end_mill": ("T-1003", "立铣刀 Ø12 R1", [(0, 0, 0), (0, 5, T8), (1, 6, 0), (38, 6, 0), (40, 5, 0), (52, 5, 0),
                                           (54, 6, 0), (100, 6, 0), (100, 0, 0)]),
    "ball_nose_mill": ("T-1004", "球头铣刀 R5", [(0, 0, -T8), (5, 5, 0), (40, 5, 0), (42, 4.5, 0), (50, 4.5, 0),
                                              (52, 5, 0), (90, 5, 0), (90, 0, 0)]),
    "reamer": ("T-1005", "铰刀 Ø8 H7", [(0, 0, 0), (0, 3.5, 0), (0.5, 4, 0), (30, 4, 0), (32, 3.5, 0), (45, 3.5, 0),
                                     (47, 4, 0), (89.5, 4, 0), (90, 3.5, 0), (90, 0, 0)]),
    "countersink": ("T-1006", "锪钻 90° Ø16", [(0, 0, 0), (0, 1, 0), (7, 8, 0), (12, 8, 0), (14, 5, 0), (60, 5, 0),
                                             (60, 0, 0)]),
    "form_tool": ("T-1007", "成形刀", [(0, 0, 0), (0, 6, 0), (5, 6, 0.4), (15, 6, 0), (20, 4, 0), (30, 4, -0.3),
                                    (38, 4, 0), (60, 4, 0), (60, 0, 0)]),
}

# file, tools (name, offset in x), version, code page
DRAWINGS = [
    ("twist_drill.dxf", [("twist_drill", 0)], "R2000", "cp936"),
    ("step_drill.dxf", [("step_drill", 0)], "R2010", None),
    ("end_mill.dxf", [("end_mill", 0)], "R2018", None),
    ("ball_nose_mill.dxf", [("ball_nose_mill", 0)], "R2000", "cp936"),
    ("reamer.dxf", [("reamer", 0)], "R2010", None),
    ("countersink.dxf", [("countersink", 0)], "R2018", None),
    ("form_tool.dxf", [("form_tool", 0)], "R2000", "cp936"),
    ("tool_sheet.dxf", [("twist_drill", 0), ("end_mill", 200), ("ball_nose_mill", 400)], "R2010", None),
]


def setup(doc):
    doc.layers.add("轮廓线", color=7)  # outline layer
    doc.layers.add("中心线", color=1, linetype="CENTER")
    doc.layers.add("HIDDEN", color=8, linetype="DASHED")
    doc.layers.add("尺寸线", color=3)
    doc.layers.add("剖面线", color=9)  # hatch layer
    doc.layers.add("文字", color=7)
    doc.layers.add("图框", color=5)  # frame layer
    doc.appids.add("TUKANGE_NAME_IDENTITY")
    frame = doc.blocks.new("TOOL_FRAME")
    frame.add_lwpolyline([(0, 0), (170, 0), (170, 110), (0, 110)], close=True)
    frame.add_lwpolyline([(5, 5), (165, 5), (165, 105), (5, 105)], close=True)
    frame.add_line((105, 5), (105, 25))
    frame.add_line((105, 25), (165, 25))
    frame.add_text("刀具图", dxfattribs={"insert": (110, 12), "height": 5})


def draw_tool(doc, name, dx):
    number, title, profile = TOOLS[name]
    msp = doc.modelspace()
    length = profile[-1][0]
    top = max(y for _, y, _ in profile)
    pts = [(x + dx, y, b) for x, y, b in profile]
    for side in (1, -1):
        for (x0, y0, b), (x1, y1, _) in zip(pts, pts[1:]):
            a, c = (x0, side * y0), (x1, side * y1)
            if b:
                center, start, end, radius = ezdxf.math.bulge_to_arc(a, c, side * b)
                msp.add_arc(center, radius, math.degrees(start), math.degrees(end), dxfattribs={"layer": "轮廓线"})
            else:
                msp.add_line(a, c, dxfattribs={"layer": "轮廓线"})
    # Silhouette lines across the axis where the diameter changes.
    for (x0, y0, _), (x1, y1, _) in zip(pts[1:], pts[2:]):
        if x0 != x1 and y0 != y1 and y0 > 0:
            msp.add_line((x0, -y0), (x0, y0), dxfattribs={"layer": "轮廓线"})
    msp.add_line((dx - 4, 0), (dx + length + 4, 0), dxfattribs={"layer": "中心线"})
    msp.add_line((dx + 10, 1.2), (dx + length - 8, 1.2), dxfattribs={"layer": "HIDDEN"})  # coolant channel
    msp.add_line((dx + 10, -1.2), (dx + length - 8, -1.2), dxfattribs={"layer": "HIDDEN"})
    dim = msp.add_linear_dim(base=(dx + length / 2, top + 9), p1=(dx, 0), p2=(dx + length, top),
                             dxfattribs={"layer": "尺寸线"})
    dim.render()
    dia = msp.add_linear_dim(base=(dx + length + 9, 0), p1=(dx + length, -top), p2=(dx + length, top), angle=90,
                             dxfattribs={"layer": "尺寸线"})
    dia.render()
    hatch = msp.add_hatch(color=9, dxfattribs={"layer": "剖面线"})
    hatch.set_pattern_fill("ANSI31", scale=0.5)
    hatch.paths.add_polyline_path([(dx + length - 25, -top + 0.6), (dx + length - 12, -top + 0.6),
                                   (dx + length - 12, -2), (dx + length - 25, -2)], is_closed=True)
    msp.add_text(title, dxfattribs={"insert": (dx, -top - 12), "height": 3.5, "layer": "文字"})
    ref = msp.add_blockref("TOOL_FRAME", (dx - 25, -55), dxfattribs={"layer": "图框"})
    ref.set_xdata("TUKANGE_NAME_IDENTITY", [(1000, number)])
    window = (dx - 8, -top - 8, dx + length + 18, top + 16)
    return number, window, (dx + length / 2, 0)


def main():
    rows = []
    for filename, tools, version, encoding in DRAWINGS:
        doc = ezdxf.new(version, setup=True)
        doc.units = ezdxf.units.MM  # tool drawings are in millimetres
        setup(doc)
        for name, dx in tools:
            number, window, centre = draw_tool(doc, name, dx)
            rows.append((filename, number, window, centre))
        path = os.path.join(HERE, filename)
        if encoding:
            doc.encoding = encoding
        doc.saveas(path)
        if encoding == "cp936":
            # ezdxf writes GBK text but leaves the header at ANSI_1252: name the page.
            with open(path, "rb") as f:
                data = f.read()
            with open(path, "wb") as f:
                f.write(data.replace(b"$DWGCODEPAGE\n  3\nANSI_1252", b"$DWGCODEPAGE\n  3\nANSI_936", 1))
        assert not ezdxf.readfile(path).audit().has_errors, filename
    with open(os.path.join(HERE, "samples.tsv"), "w", encoding="utf-8") as f:
        f.write("file\ttool\twindow\tcentre\n")
        for filename, number, w, c in rows:
            f.write(f"{filename}\t{number}\t{w[0]:g},{w[1]:g},{w[2]:g},{w[3]:g}\t{c[0]:g},{c[1]:g}\n")
    with open(os.path.join(HERE, "README.md"), "w", encoding="utf-8") as f:
        f.write("# Sample tool drawings\n\n"
                "Made by `make_samples.py` (ezdxf). Each tool is drawn with both halves, silhouette lines, a\n"
                "centre line (layer 中心线, linetype CENTER), hidden lines (layer HIDDEN, DASHED), dimensions\n"
                "on 尺寸线, a title text and a hatch, in a drawing frame (block TOOL_FRAME) that carries the\n"
                "tool number under TUKANGE_NAME_IDENTITY. The window selects the tool without its frame.\n\n"
                "| file | version | tool | window (x1,y1,x2,y2) | centre point |\n|---|---|---|---|---|\n")
        versions = {d[0]: d[2] + (" ANSI_936" if d[3] else "") for d in DRAWINGS}
        for filename, number, w, c in rows:
            f.write(f"| {filename} | {versions[filename]} | {number} | {w[0]:g},{w[1]:g},{w[2]:g},{w[3]:g} | "
                    f"{c[0]:g},{c[1]:g} |\n")
        f.write("\nRun one with:\n\n    envline outline samples/twist_drill.dxf -o out/twist_drill.dxf "
                "--window <window> --centre auto --png out/twist_drill.png\n")


if __name__ == "__main__":
    main()
