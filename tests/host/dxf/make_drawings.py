#!/usr/bin/python3
"""Writes test drawings with ezdxf, an independent writer, into OUTDIR: one
tool-like drawing per version from R12 to R2018, plus a Chinese R2000 file in
code page ANSI_936.

usage: make_drawings.py OUTDIR
"""
import math
import os
import sys

import ezdxf

VERSIONS = ["R12", "R2000", "R2004", "R2007", "R2010", "R2013", "R2018"]


def build(version, chinese):
    doc = ezdxf.new(version, setup=True)
    # ezdxf reads back neither its R2000 nor its R2004 files with escaped
    # characters (\U+....), so Chinese goes only where it is stored as such:
    # UTF-8 files (R2007 and later) and the GBK file.
    dim_layer = "尺寸线" if chinese else "DIMENSIONS"
    doc.layers.add(dim_layer, color=3)
    doc.layers.add("HIDDEN_LINES", color=8, linetype="DASHED")
    doc.layers.add("AXIS", color=1, linetype="CENTER")
    doc.appids.add("TUKANGE_NAME_IDENTITY")
    msp = doc.modelspace()
    # A stepped shaft, both halves, with a chamfer and a corner radius.
    outline = [(0, 0), (0, 5), (18, 5), (20, 3), (40, 3), (40, 0)]
    for (x0, y0), (x1, y1) in zip(outline, outline[1:]):
        msp.add_line((x0, y0), (x1, y1))
        msp.add_line((x0, -y0), (x1, -y1))
    msp.add_arc((30, 3), 1, 0, 180)
    msp.add_circle((50, 0), 2)
    msp.add_line((-5, 0), (45, 0), dxfattribs={"layer": "AXIS"})
    msp.add_line((5, -4), (15, -4), dxfattribs={"layer": "HIDDEN_LINES"})
    msp.add_line((0, 8), (40, 8), dxfattribs={"layer": dim_layer})
    msp.add_text("计算包络线成功" if chinese else "OUTLINE OK", dxfattribs={"height": 2.5, "insert": (0, 12)})
    msp.add_point((1, 1))
    msp.add_solid([(60, 0), (62, 0), (60, 2), (62, 2)])
    msp.add_3dface([(70, 0, 0), (72, 0, 0), (72, 2, 1), (70, 2, 1)])
    msp.add_polyline2d([(0, 20), (10, 20), (10, 25)], dxfattribs={"closed": True})
    msp.add_polyline3d([(0, 30, 0), (5, 30, 2), (5, 35, 4)])
    if version != "R12":
        msp.add_lwpolyline([(0, 40, 0, 0, 0.5), (10, 40, 0, 0, 0), (10, 45, 0, 0, -0.25)], format="xyseb",
                           dxfattribs={"closed": True})
        msp.add_ellipse((80, 0), major_axis=(4, 0), ratio=0.5, start_param=0, end_param=math.pi)
        msp.add_spline([(0, 50), (5, 55), (10, 50), (15, 52)])
        msp.add_mtext("多行文字 text" if chinese else "multi line text", dxfattribs={"char_height": 2, "insert": (0, 60)})
        hatch = msp.add_hatch(color=2)
        hatch.paths.add_polyline_path([(90, 0), (95, 0), (95, 5)], is_closed=True)
        dim = msp.add_linear_dim(base=(0, -10), p1=(0, -5), p2=(40, -3), dxfattribs={"layer": dim_layer})
        dim.render()
        group = doc.groups.new("SHAFT")
        group.extend(list(msp.query("LINE"))[:2])
        xdict = doc.rootdict.add_new_dict("EXISTING_DICT")
        xrec = xdict.add_xrecord("EXISTING_REC")
        xrec.extend([(1, "hello"), (40, 2.5), (90, 7)])
    # A drawing frame: a block reference tagged with the tool number.
    frame = doc.blocks.new("FRAME")
    frame.add_lwpolyline([(0, 0), (120, 0), (120, 80), (0, 80)], dxfattribs={"closed": True}) \
        if version != "R12" else frame.add_polyline2d([(0, 0), (120, 0), (120, 80), (0, 80)], dxfattribs={"closed": True})
    frame.add_attdef("NO", (5, 5), dxfattribs={"height": 2})
    ref = msp.add_blockref("FRAME", (-10, -20))
    ref.add_attrib("NO", "T-0815", (5, 5))
    ref.set_xdata("TUKANGE_NAME_IDENTITY", [(1000, "T-0815")])
    return doc


def main():
    out = sys.argv[1]
    os.makedirs(out, exist_ok=True)
    for v in VERSIONS:
        build(v, chinese=v >= "R2007" and v != "R12").saveas(os.path.join(out, f"tool_{v}.dxf"))
    gbk = build("R2000", chinese=True)
    gbk.encoding = "cp936"
    path = os.path.join(out, "tool_R2000_gbk.dxf")
    gbk.saveas(path)
    # ezdxf writes GBK text but leaves the header at ANSI_1252: name the page.
    with open(path, "rb") as f:
        data = f.read()
    data = data.replace(b"$DWGCODEPAGE\n  3\nANSI_1252", b"$DWGCODEPAGE\n  3\nANSI_936", 1)
    with open(path, "wb") as f:
        f.write(data)


if __name__ == "__main__":
    main()
