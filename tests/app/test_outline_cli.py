#!/usr/bin/python3
"""End-to-end tests of `envline outline`, judged by ezdxf: the samples and
drawings ezdxf writes go through the command; the outline must be on
TempEncircleLine, closed, start and end on the axis, with arcs as bulges;
selection modes, the automatic centre, the lower side, exit codes and
messages, the input left alone, and valid pictures.

usage: test_outline_cli.py BUILD_DIR
"""
import json
import math
import os
import shutil
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ET

import ezdxf

from cli_cases import ROOT, Cases, sample_rows, sha

T8 = math.tan(math.pi / 8)


class Run:
    def __init__(self, envline, tmp):
        self.envline, self.tmp = envline, tmp

    def __call__(self, *args):
        r = subprocess.run([self.envline, "outline", *args], capture_output=True, text=True)
        return r.returncode, r.stdout, r.stderr


def outline_of(path):
    doc = ezdxf.readfile(path)
    assert not doc.audit().has_errors, f"{path} does not audit clean"
    found = [e for e in doc.modelspace() if e.dxf.layer == "TempEncircleLine"]
    assert len(found) == 1, f"{len(found)} outlines in {path}"
    assert found[0].dxftype() == "LWPOLYLINE"
    return found[0]



def shaft_drawing(path, centre_lines=((0, "CENTER"),), version="R2010"):
    """A stepped shaft with a corner arc, both halves, and the given centre lines."""
    doc = ezdxf.new(version, setup=True)
    doc.layers.add("尺寸线")
    msp = doc.modelspace()
    pts = [(0, 0), (0, 4), (1, 5), (15, 5), (17, 3), (40, 3), (40, 0)]
    for s in (1, -1):
        for (x0, y0), (x1, y1) in zip(pts, pts[1:]):
            if (x0, y0) == (15, 5):
                msp.add_arc((15, s * 3), 2, 0 if s > 0 else 270, 90 if s > 0 else 360)
            else:
                msp.add_line((x0, s * y0), (x1, s * y1))
    for y, linetype in centre_lines:
        msp.add_line((-3, y), (43, y), dxfattribs={"linetype": linetype})
    msp.add_line((0, 9), (40, 9), dxfattribs={"layer": "尺寸线"})
    doc.saveas(path)
    return [e.dxf.handle for e in msp]


def main():
    build = sys.argv[1]
    envline = os.path.join(build, "app", "cli", "envline")
    tmp = tempfile.mkdtemp(prefix="envline-outline-")
    run = Run(envline, tmp)
    case = Cases()


    # Every sample, by its window, with the automatic centre.
    rows = sample_rows()
    for filename, tool, window, centre in rows:
        def sample(filename=filename, tool=tool, window=window):
            src = os.path.join(ROOT, "samples", filename)
            before = sha(src)
            out = os.path.join(tmp, f"{tool}.dxf")
            png, svg = os.path.join(tmp, f"{tool}.png"), os.path.join(tmp, f"{tool}.svg")
            code, stdout, stderr = run(src, "-o", out, "--window", window, "--centre", "auto", "--png", png,
                                       "--svg", svg)
            assert code == 0, f"exit {code}: {stderr}"
            assert "计算包络线成功" in stdout, stdout
            assert sha(src) == before, "the input changed"
            pl = outline_of(out)
            pts = list(pl.get_points("xyb"))
            assert pl.closed, "not closed"
            assert abs(pts[0][1]) < 1e-9 and abs(pts[-1][1]) < 1e-9, f"ends off the axis: {pts[0]} {pts[-1]}"
            assert all(y >= -1e-9 for _, y, _ in pts), "part of the lower half is in the outline"
            if tool in ("T-1003", "T-1004", "T-1007"):
                assert any(abs(b) > 0.1 for _, _, b in pts), "arcs were not restored"
            if tool == "T-1004":
                assert abs(pts[0][2] + T8) < 1e-9, f"ball nose bulge {pts[0][2]}"
            with open(png, "rb") as f:
                assert f.read(8) == b"\x89PNG\r\n\x1a\n", "the PNG is not a PNG"
            assert ET.parse(svg).getroot().tag.endswith("svg"), "the SVG is not SVG"
        case(f"sample {filename} {tool}", sample)

    shaft = os.path.join(tmp, "shaft.dxf")
    handles = shaft_drawing(shaft)
    expect = [(0, 0), (0, 4), (1, 5), (15, 5), (17, 3), (40, 3), (40, 0)]

    def vertices_ok(path, mirror=1):
        pts = [(round(x, 9), round(y, 9)) for x, y, _ in outline_of(path).get_points("xyb")]
        want = [(x, mirror * y) for x, y in expect]
        assert pts == want, f"{pts} != {want}"

    def selection_modes():
        for extra in (["--crossing", "-1,-6,41,6"], ["--handles", ",".join(handles)], ["--layer", "0"]):
            out = os.path.join(tmp, "sel.dxf")
            code, _, err = run(shaft, "-o", out, "--centre", "20,0", *extra)
            assert code == 0, f"{extra}: exit {code} {err}"
            vertices_ok(out)
        code, _, err = run(shaft, "-o", os.path.join(tmp, "x.dxf"), "--centre", "20,0", "--handles", "FFFFF")
        assert code == 2 and "FFFFF" in err, err
    case("selection by crossing window, handles and layer", selection_modes)

    def json_result():
        out = os.path.join(tmp, "j.dxf")
        code, stdout, _ = run(shaft, "-o", out, "--centre", "auto", "--json", "--method", "exact")
        assert code == 0
        r = json.loads(stdout)
        assert r["status"] == "ok" and r["message"] == "计算包络线成功" and r["method"] == "exact"
        assert r["outline"]["closed"] is True and len(r["outline"]["vertices"]) == 7
        assert abs(r["outline"]["vertices"][3][2] + T8) < 1e-9, r["outline"]["vertices"]
        # chamfer 4.5, Ø10 70, the corner under its chord 8, Ø6 69, and the
        # circular segment of the radius-2 corner beyond its chord
        area = 4.5 + 70 + 8 + 69 + (math.pi - 2)
        assert abs(r["outline"]["area"] - area) < 1e-9, r["outline"]["area"]
        assert r["outline"]["box"] == [0, 0, 40, 5]
        assert r["counts"]["segments_after_conversion"] > 14
        assert set(r["timings_ms"]) == {"read", "compute", "write", "solid", "stl"}
        assert r["solid"] == {"route": "", "files": []}, r["solid"]
        assert r["parameters"]["arc_step"] == 0.3 and r["parameters"]["side"] == "upper"
        # The robust method (the default) gives the same outline here and says
        # how it chose the axis and which tolerances it used.
        code, stdout, _ = run(shaft, "-o", out, "--centre", "auto", "--json")
        assert code == 0
        r = json.loads(stdout)
        assert r["method"] == "robust" and len(r["outline"]["vertices"]) == 7
        assert abs(r["outline"]["area"] - area) < 1e-9, r["outline"]["area"]
        assert r["axis"]["direction"] == [1, 0] and "symmetric" in r["axis"]["chosen_because"], r["axis"]
        assert r["parameters"]["gap"] > 0 and r["parameters"]["chord_tol"] == 0.001, r["parameters"]
    case("--json result", json_result)

    def lower_side():
        out = os.path.join(tmp, "lower.dxf")
        code, _, _ = run(shaft, "-o", out, "--centre", "20,0", "--side", "lower")
        assert code == 0
        vertices_ok(out, -1)
    case("lower side", lower_side)

    def hatch_driver():
        # The boundary of the region between frame and tool: the corners of
        # the profile, the radius-2 corner as chords on its arc, no bulges,
        # and no frame, axis or clone left in the drawing.
        out = os.path.join(tmp, "hatch.dxf")
        code, stdout, err = run(shaft, "-o", out, "--centre", "20,0", "--driver", "hatch", "--json", "--method", "exact")
        assert code == 0, err
        assert json.loads(stdout)["parameters"]["driver"] == "hatch"
        pts = [(round(x, 6), round(y, 6), b) for x, y, b in outline_of(out).get_points("xyb")]
        assert [p[:2] for p in pts[:4]] == expect[:4] and [p[:2] for p in pts[-3:]] == expect[-3:], pts
        assert all(b == 0 for _, _, b in pts)
        for x, y, _ in pts[4:-3]:
            assert abs(math.hypot(x - 15, y - 3) - 2) < 0.02, (x, y)
        doc = ezdxf.readfile(out)
        layers = {e.dxf.layer for e in doc.modelspace()}
        assert "TempEncircleLineClone" not in layers, layers
        assert len(doc.modelspace()) == len(ezdxf.readfile(shaft).modelspace()) + 1
        code, _, err = run(shaft, "-o", out, "--centre", "20,0", "--driver", "bogus")
        assert code == 2 and "--driver" in err, err
    case("--driver hatch", hatch_driver)

    def auto_centre():
        # Without a centre line: the contour's mirror line.
        none = os.path.join(tmp, "none.dxf")
        shaft_drawing(none, centre_lines=())
        code, out, err = run(none, "-o", os.path.join(tmp, "x.dxf"), "--centre", "auto")
        assert code == 0 and "middle of the contour" in out, (out, err)
        # Of two centre lines, the one the contour is symmetric about.
        two = os.path.join(tmp, "two.dxf")
        shaft_drawing(two, centre_lines=((2, "DASHDOT"), (0, "CENTER")))
        code, out, err = run(two, "-o", os.path.join(tmp, "x.dxf"), "--centre", "auto")
        assert code == 0 and "horizontal at y = 0" in out and "symmetric" in out, (out, err)
        # Only a centre line the contour fits nowhere: refused, with what was looked at.
        off = os.path.join(tmp, "off.dxf")
        shaft_drawing(off, centre_lines=((2, "DASHDOT"),))
        code, out, err = run(off, "-o", os.path.join(tmp, "x.dxf"), "--centre", "auto")
        assert code == 3 and "cannot find the part's axis" in out and "looked at centre line" in out, (out, err)
    case("--centre auto chooses the centre line and says why, or refuses", auto_centre)

    def exit_codes():
        code, _, err = run(os.path.join(tmp, "missing.dxf"), "-o", os.path.join(tmp, "x.dxf"), "--centre", "0,0")
        assert code == 1 and "missing.dxf" in err, err
        bad = os.path.join(tmp, "bad.dxf")
        with open(bad, "w") as f:
            f.write("  0\nSECTION\n  2\nENTITIES\n  0\nLINE\n 10\nnot-a-number\n")
        code, _, err = run(bad, "-o", os.path.join(tmp, "x.dxf"), "--centre", "0,0")
        assert code == 1 and "line 8" in err, err
        code, out, _ = run(shaft, "-o", os.path.join(tmp, "x.dxf"), "--centre", "0,0", "--window", "100,100,200,200")
        assert code == 3 and "计算包络线失败" in out, out
        code, out, _ = run(shaft, "-o", os.path.join(tmp, "x.dxf"), "--centre", "0,0", "--layer", "尺寸线")
        assert code == 3 and "计算包络线失败" in out, out
        code, _, err = run(shaft, "-o", os.path.join(tmp, "x.dxf"))
        assert code == 2 and "--centre" in err
        code, _, _ = run(shaft, "--centre", "0,0")
        assert code == 2
        code, _, err = run(shaft, "-o", "/nonexistent-dir/x.dxf", "--centre", "20,0")
        assert code == 1 and "nonexistent-dir" in err, err
    case("exit codes and messages", exit_codes)

    def in_place():
        copy = os.path.join(tmp, "inplace.dxf")
        shutil.copy(shaft, copy)
        before = sha(copy)
        code, _, _ = run(copy, "--in-place", "--centre", "20,0")
        assert code == 0 and sha(copy) != before
        vertices_ok(copy)
    case("--in-place writes the drawing itself", in_place)

    return case.report()


if __name__ == "__main__":
    sys.exit(main())
