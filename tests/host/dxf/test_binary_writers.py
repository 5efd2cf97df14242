#!/usr/bin/python3
"""Binary drawings as ezdxf writes them (R12, R2000, R2010, R2018), with
every kind of value a binary file stores (strings, handles, reals, 16-, 32-
and 64-bit integers, one-byte booleans, binary chunks, extended data
reals 1040-1042 and 32-bit integers 1071): envline reads each, sees what
ezdxf sees, and writes it as ASCII that ezdxf reads back the same.

usage: test_binary_writers.py BUILD_DIR
"""
import json
import os
import subprocess
import sys
import tempfile

import ezdxf

sys.path.insert(0, os.path.join(os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__)))), "app"))
from cli_cases import Cases  # noqa: E402


def make(version, path):
    doc = ezdxf.new(version)
    # A Chinese layer name where the file holds UTF-8 (R2007 on); before
    # that ezdxf writes it as \U+ escapes in ANSI_1252, which is no binary matter.
    layer = "刀具" if version >= "R2007" else "TOOL"
    doc.layers.add(layer, color=3)
    if version != "R12":
        doc.layers.get("0").dxf.plot = 0  # a boolean (290) in binary: one byte
        doc.appids.add("ENVLINE_TEST")
    msp = doc.modelspace()
    msp.add_line((0, 0), (10, 0), dxfattribs={"layer": layer})
    msp.add_arc((5, 0), 2, 0, 180)
    msp.add_circle((20, 0), 1.5)
    msp.add_text("T-1001", dxfattribs={"insert": (0, 5), "height": 2.5})
    if version == "R12":
        msp.add_polyline2d([(0, 0), (1, 1), (2, 0)])
    else:
        msp.add_lwpolyline([(0, 0, 0.5), (4, 0, 0), (4, 3, 0)], format="xyb", close=True)
        msp.add_ellipse((30, 0), major_axis=(4, 0), ratio=0.5)
        msp.add_spline([(0, 0), (2, 3), (5, 1), (8, 4)])
        line = msp.add_line((0, -5), (10, -5))
        line.set_xdata("ENVLINE_TEST", [(1000, "tool"), (1040, 2.5), (1070, 7), (1071, 123456), (1010, (1, 2, 3))])
    doc.saveas(path, fmt="bin")
    return doc


def main():
    envline = os.path.join(sys.argv[1], "app", "cli", "envline")
    tmp = tempfile.mkdtemp(prefix="envline_binary_")
    cases = Cases()
    for version in ("R12", "R2000", "R2010", "R2018"):
        def check(version=version):
            src = os.path.join(tmp, f"ezdxf_{version}.dxf")
            make(version, src)
            with open(src, "rb") as f:
                assert f.read(22).startswith(b"AutoCAD Binary DXF"), "ezdxf wrote no binary file"
            ez = ezdxf.readfile(src)
            r = subprocess.run([envline, "info", src, "--json"], capture_output=True, text=True)
            assert r.returncode == 0, f"info: exit {r.returncode}: {r.stderr}"
            info = json.loads(r.stdout)
            assert info["binary"], info
            want = {}
            for e in ez.modelspace():
                want[e.dxftype()] = want.get(e.dxftype(), 0) + 1
            assert info["entities"] == want, f"{info['entities']} vs ezdxf {want}"
            out = os.path.join(tmp, f"ascii_{version}.dxf")
            r = subprocess.run([envline, "convert", src, "-o", out], capture_output=True, text=True)
            assert r.returncode == 0, f"convert: exit {r.returncode}: {r.stderr}"
            back = ezdxf.readfile(out)
            assert not back.audit().has_errors, "the ASCII copy does not audit clean"
            assert [e.dxftype() for e in back.modelspace()] == [e.dxftype() for e in ez.modelspace()]
            assert {l.dxf.name for l in back.layers} == {l.dxf.name for l in ez.layers}
            if version != "R12":
                assert back.layers.get("0").dxf.plot == 0, "the plot flag (a one-byte boolean) was lost"
                lines = back.modelspace().query("LINE")
                xd = lines[1].get_xdata("ENVLINE_TEST")
                assert [(t.code, t.value) for t in xd][:5] == [(1000, "tool"), (1040, 2.5), (1070, 7),
                                                              (1071, 123456), (1010, (1, 2, 3))], xd
        cases(f"a binary {version} drawing written by ezdxf", check)
    return cases.report()


if __name__ == "__main__":
    sys.exit(main())
