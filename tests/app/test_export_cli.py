#!/usr/bin/python3
"""End-to-end tests of the solids: `envline outline --sat/--step/--stl` and
`envline export` on every sample. Volumes are judged by Pappus' theorem over
ezdxf's own flattening of the outline, by satcheck and by the STL mesh; files
must be named by tool number; 3DSOLIDs kept in the drawing must load in
ezdxf's ACIS reader.

usage: test_export_cli.py BUILD_DIR
"""
import json
import math
import os
import shutil
import struct
import subprocess
import sys
import tempfile

import ezdxf

from cli_cases import ROOT, Cases, sample_rows, sha
import ezdxf.math
from ezdxf.acis import api as acis

# The shared SAT checker beside the checkout (or where ENVLINE_SATCHECK says).
SATCHECK = next((p for p in (os.environ.get("ENVLINE_SATCHECK", ""),
                             os.path.join(ROOT, "..", "shared", "tools", "satcheck", "satcheck.py"),
                             "/work/shared/tools/satcheck/satcheck.py") if p and os.path.exists(p)), None)



def pappus(polyline, axis_y):
    """The volume of the outline revolved about y = axis_y: V = π |∮ r² dx|, with
    ezdxf's arcs of the bulges integrated by composite Simpson in the angle."""
    pts = list(polyline.get_points("xyb"))
    v = 0.0
    for (xa, ya, bulge), (xb, yb, _) in zip(pts, pts[1:] + pts[:1]):
        ra, rb = ya - axis_y, yb - axis_y
        if abs(bulge) < 1e-12:
            v += (xb - xa) * (ra * ra + ra * rb + rb * rb) / 3
            continue
        centre, start, end, radius = ezdxf.math.bulge_to_arc((xa, ra), (xb, rb), bulge)
        if bulge < 0:  # ezdxf gives the arc counter-clockwise from its end
            start, end = end, start
        sweep = (end - start) % math.tau if bulge > 0 else -((start - end) % math.tau)
        n = 400
        h = sweep / n
        acc = 0.0
        for i in range(n + 1):
            t = start + i * h
            r = centre.y + radius * math.sin(t)
            f = r * r * (-radius * math.sin(t))  # r² dx/dt
            acc += f * (1 if i in (0, n) else 4 if i % 2 else 2)
        v += acc * h / 3
    return abs(math.pi * v)


def stl_volume(path):
    """The signed volume of a binary STL mesh, by the divergence theorem."""
    with open(path, "rb") as f:
        data = f.read()
    (n,) = struct.unpack_from("<I", data, 80)
    assert len(data) == 84 + 50 * n, f"{path}: {n} triangles but {len(data)} bytes"
    v = 0.0
    for i in range(n):
        t = struct.unpack_from("<12f", data, 84 + 50 * i)
        a, b, c = t[3:6], t[6:9], t[9:12]
        v += (a[0] * (b[1] * c[2] - b[2] * c[1]) - a[1] * (b[0] * c[2] - b[2] * c[0])
              + a[2] * (b[0] * c[1] - b[1] * c[0])) / 6
    return v


def satcheck(path, volume=None):
    """satcheck's facts about a SAT file. Without satcheck, ezdxf's ACIS
    reader must load it and the axis is read from its first cone surface."""
    if SATCHECK is None:
        with open(path, encoding="ascii") as f:
            text = f.read()
        assert text.startswith("700 0 1 0") and len(acis.load(text)) == 1, f"{path}: not a SAT 7.0 body"
        cone = next(line for line in text.splitlines() if line.startswith("cone-surface"))
        direction = [float(v) for v in cone.split()[7:10]]
        return {"revolved_axis": {"direction": direction}}
    args = ["--json"] + (["--expect-volume", repr(volume)] if volume is not None else [])
    r = subprocess.run(["/usr/bin/python3", SATCHECK, *args, path], capture_output=True, text=True)
    assert r.returncode == 0, f"satcheck {path}: {r.stdout[-800:]} {r.stderr[-400:]}"
    return json.loads(r.stdout)["facts"]


def outlines(path):
    doc = ezdxf.readfile(path)
    assert not doc.audit().has_errors, f"{path} does not audit clean"
    return doc, [e for e in doc.modelspace().query("LWPOLYLINE") if e.dxf.layer == "TempEncircleLine"]


def main():
    build = sys.argv[1]
    envline = os.path.join(build, "app", "cli", "envline")
    tmp = tempfile.mkdtemp(prefix="envline-export-")
    case = Cases()

    def run(*args):
        r = subprocess.run([envline, *args], capture_output=True, text=True)
        return r.returncode, r.stdout, r.stderr


    rows = sample_rows()

    # Every sample: the outline and its solid in all three formats, as drawn and along +Z.
    for filename, tool, window, _ in rows:
        def sample(filename=filename, tool=tool, window=window):
            src = os.path.join(ROOT, "samples", filename)
            out = os.path.join(tmp, f"{tool}_outline.dxf")
            for orient in ("drawing", "z"):
                files = {k: os.path.join(tmp, f"{tool}_{orient}.{k}") for k in ("sat", "step", "stl")}
                code, stdout, stderr = run("outline", src, "-o", out, "--window", window, "--centre", "auto",
                                           "--orient", orient, "--sat", files["sat"], "--step", files["step"],
                                           "--stl", files["stl"])
                assert code == 0, f"exit {code}: {stderr}"
                assert "solid (curve route)" in stdout, stdout
                _, found = outlines(out)
                assert len(found) == 1, f"{len(found)} outlines"
                want = pappus(found[0], 0.0)
                facts = satcheck(files["sat"], want)
                axis = facts["revolved_axis"]["direction"]
                expect_axis = [1.0, 0.0, 0.0] if orient == "drawing" else [0.0, 0.0, 1.0]
                assert all(abs(abs(a) - e) < 1e-9 for a, e in zip(axis, expect_axis)), f"axis {axis}"
                with open(files["step"], encoding="ascii", errors="replace") as f:
                    step = f.read()
                assert step.startswith("ISO-10303-21;") and "ADVANCED_FACE" in step, "not an AP214 B-rep"
                mesh = stl_volume(files["stl"])
                assert abs(abs(mesh) - want) < 2e-3 * want, f"STL volume {mesh} vs {want}"
        case(f"sample {filename} {tool}: SAT, STEP and STL", sample)

    # Export from a drawing with outlines: names by tool number, the input untouched.
    sheet = os.path.join(ROOT, "samples", "tool_sheet.dxf")
    sheet_rows = [r for r in rows if r[0] == "tool_sheet.dxf"]
    with_outlines = os.path.join(tmp, "sheet_outlines.dxf")

    def prepare_sheet():
        shutil.copy(sheet, with_outlines)
        for _, tool, window, _ in sheet_rows:
            code, _, err = run("outline", with_outlines, "--in-place", "--window", window, "--centre", "auto")
            assert code == 0, f"{tool}: exit {code} {err}"
        _, found = outlines(with_outlines)
        assert len(found) == 3, f"{len(found)} outlines"
    case("three outlines on the tool sheet", prepare_sheet)

    def export_by_tool_number():
        before = sha(with_outlines)
        out_dir = os.path.join(tmp, "sheet")
        code, stdout, stderr = run("export", with_outlines, "--dir", out_dir, "--formats", "sat,stl")
        assert code == 0, f"exit {code}: {stderr}"
        assert stdout.strip().endswith("导出成功"), stdout
        assert sorted(os.listdir(out_dir)) == sorted(
            f"{t}.{k}" for t in ("T-1001", "T-1003", "T-1004") for k in ("sat", "stl")), os.listdir(out_dir)
        assert sha(with_outlines) == before, "the input changed"
        for t in ("T-1001", "T-1003", "T-1004"):
            satcheck(os.path.join(out_dir, f"{t}.sat"))
    case("export names files by the tool number of the frame", export_by_tool_number)

    def keep_solid_and_delete_outline():
        out_dir = os.path.join(tmp, "kept")
        out = os.path.join(tmp, "kept.dxf")
        doc, found = outlines(with_outlines)
        handle = found[1].dxf.handle
        code, _, stderr = run("export", with_outlines, "--dir", out_dir, "--handles", handle, "--keep-solid",
                              "--delete-outline", "-o", out)
        assert code == 0, f"exit {code}: {stderr}"
        assert os.listdir(out_dir) == ["T-1003.sat"], os.listdir(out_dir)
        doc, left = outlines(out)
        assert handle not in [e.dxf.handle for e in left] and len(left) == 2, "the outline was not deleted"
        solids = doc.modelspace().query("3DSOLID")
        assert len(solids) == 1, f"{len(solids)} solids kept"
        bodies = acis.load(solids[0].acis_data)
        assert len(bodies) == 1, "ezdxf cannot load the kept solid"
        faces = [f for lump in bodies[0].lumps() for shell in lump.shells() for f in shell.faces()]
        assert len(faces) >= 3, f"{len(faces)} faces"
    case("a kept solid is a 3DSOLID ezdxf reads; --delete-outline erases", keep_solid_and_delete_outline)

    def newer_versions_warn():
        converted = os.path.join(tmp, "sheet2018.dxf")
        code, _, err = run("convert", with_outlines, "-o", converted, "--version", "R2018")
        assert code == 0, err
        out = os.path.join(tmp, "kept2018.dxf")
        code, _, stderr = run("export", converted, "--dir", os.path.join(tmp, "k18"), "--keep-solid", "-o", out)
        assert code == 0, f"exit {code}: {stderr}"
        assert "left out" in stderr and "SAT" in stderr, stderr
        assert not ezdxf.readfile(out).modelspace().query("3DSOLID"), "a solid in a form we do not write"
        assert len(os.listdir(os.path.join(tmp, "k18"))) == 3
    case("R2018 drawings keep the SAT file and warn about the solid", newer_versions_warn)

    def outline_outside_frames():
        doc = ezdxf.new("R2010")
        doc.units = ezdxf.units.MM  # ezdxf's default is metres
        doc.layers.add("TempEncircleLine")
        doc.modelspace().add_lwpolyline([(0, 0), (0, 5), (20, 5), (20, 0)], close=True,
                                        dxfattribs={"layer": "TempEncircleLine"})
        src = os.path.join(tmp, "free.dxf")
        doc.saveas(src)
        handle = doc.modelspace()[0].dxf.handle
        code, stdout, stderr = run("export", src, "--dir", os.path.join(tmp, "free"), "--orient", "z")
        assert code == 0, f"exit {code}: {stderr}"
        name = os.path.join(tmp, "free", f"outline_{handle}.sat")
        facts = satcheck(name, 500 * math.pi)
        assert facts["revolved_axis"]["direction"][2] != 0, facts["revolved_axis"]
    case("an outline in no frame is named by its handle", outline_outside_frames)

    def names_do_not_collide_and_handles_select_any_polyline():
        doc = ezdxf.readfile(sheet)
        msp = doc.modelspace()
        # Two outlines inside T-1001's frame, and one on another layer.
        first = msp.add_lwpolyline([(0, 0), (0, 5), (20, 5), (20, 0)], close=True,
                                   dxfattribs={"layer": "TempEncircleLine"})
        second = msp.add_lwpolyline([(30, 0), (30, 4), (60, 4), (60, 0)], close=True,
                                    dxfattribs={"layer": "TempEncircleLine"})
        other = msp.add_lwpolyline([(70, 0), (70, 3), (90, 3), (90, 0)], close=True)
        src = os.path.join(tmp, "two_in_one_frame.dxf")
        doc.saveas(src)
        out_dir = os.path.join(tmp, "two")
        code, _, stderr = run("export", src, "--dir", out_dir)
        assert code == 0, f"exit {code}: {stderr}"
        names = sorted(os.listdir(out_dir))
        assert names == sorted(["T-1001.sat", f"T-1001_{second.dxf.handle}.sat"]), names
        satcheck(os.path.join(out_dir, "T-1001.sat"), 500 * math.pi)
        satcheck(os.path.join(out_dir, f"T-1001_{second.dxf.handle}.sat"), 480 * math.pi)
        code, _, stderr = run("export", src, "--dir", os.path.join(tmp, "picked"), "--handles",
                              f"{other.dxf.handle},{first.dxf.handle}")
        assert code == 0, f"exit {code}: {stderr}"
        assert sorted(os.listdir(os.path.join(tmp, "picked"))) == ["T-1001.sat", f"T-1001_{first.dxf.handle}.sat"]
    case("outlines sharing a frame get distinct names; --handles picks any polyline",
         names_do_not_collide_and_handles_select_any_polyline)

    def bad_usage():
        code, _, err = run("export", with_outlines)
        assert code == 2 and "--dir" in err, err
        code, _, err = run("export", with_outlines, "--dir", tmp, "--formats", "iges")
        assert code == 2 and "iges" in err, err
        code, _, err = run("export", with_outlines, "--dir", tmp, "--handles", "FFFFF")
        assert code == 2 and "FFFFF" in err, err
        code, _, err = run("export", os.path.join(tmp, "missing.dxf"), "--dir", tmp)
        assert code == 1 and "missing.dxf" in err, err
    case("bad usage is named", bad_usage)

    print(f"files in {tmp}" + ("" if SATCHECK else "; satcheck not found, SAT files loaded by ezdxf only"))
    return case.report()


if __name__ == "__main__":
    sys.exit(main())
