#!/usr/bin/python3
"""The robust outline judged from outside: generated tool drawings with known
true profiles are outlined by `envline outline` (robust, the default) and
scored by the shared outline scorer; the warnings and refusals a designer
must see (a pipe tee, a sheet without a window, a window that cuts the part,
a centre point off the centre line, separate bodies); and, when the shared
corpus of real drawings is beside the checkout, every rotational part in it
against the profile read off the drawing by hand.

usage: test_robust_outline.py BUILD_DIR
"""
import json
import math
import os
import subprocess
import sys
import tempfile

import ezdxf
from ezdxf.math import Matrix44

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(os.path.dirname(HERE))
sys.path.insert(0, os.path.join(ROOT, "tests", "app"))
sys.path.insert(0, HERE)

from cli_cases import Cases  # noqa: E402
import tool_drawings  # noqa: E402

SCORER = next((p for p in (os.environ.get("ENVLINE_OUTLINE_SCORE"),
                           os.path.join(ROOT, "..", "shared", "tools", "outline_score", "score_outline.py"),
                           "/work/shared/tools/outline_score/score_outline.py") if p and os.path.exists(p)), None)
CORPUS = next((p for p in (os.path.join(ROOT, "..", "shared", "corpus", "real"), "/work/shared/corpus/real")
               if os.path.isdir(p)), None)

# Every rotational part of the real corpus: the arguments, and the profile
# read off the drawing (vertices x, y, bulge, from the axis at one end to the
# axis at the other; None: the outline is only checked, not compared).
CORPUS_CASES = [
    # A vendor's centre drill: 470 line pieces, dimensions exploded with SOLID
    # arrowheads, a logo; axis on the CENTER line y = 0. Pilot Ø4 at both
    # ends with 118° points, 60° cones to the Ø10 body.
    ("editool_centerdrill_111100_4_vendor_R2000.dxf", ["--centre", "auto"], "centre drill"),
    # A tap with DIMENSION entities, a LEADER, a slotted shank end (ignored) and
    # a cone point; CENTER axis y = 0.
    ("editool_tool_drawing_dims_tst_R2007.dxf", ["--centre", "auto"], "tap"),
    ("editool_tool_outline_961170_R2000.dxf", ["--centre", "auto"], [
        None]),
    ("editool_tool_outline_46440_R2000.dxf", ["--centre", "auto"], [None]),
    ("editool_tool_outline_334850_tinytip_R2000.dxf", ["--centre", "auto"], [None]),
    # The flange side view (x 60..85, y -21..21, axis y = 0): Ø42 with a 1 mm chamfer.
    ("qcad_flange_paperspace_R2013.dxf", ["--window", "55,-25,90,25", "--centre", "auto"],
     [(60, 0, 0), (60, 21, 0), (84, 21, 0), (85, 20, 0), (85, 0, 0)]),
    # The same flange with a frame in model space, side view at x 105..130, axis y = -10.
    ("qcad_flange_with_border_titleblock_R2010.dxf", ["--window", "100,-35,135,15", "--centre", "auto"],
     [(105, -10, 0), (105, 11, 0), (129, 11, 0), (130, 10, 0), (130, -10, 0)]),
    # The screw: head Ø20 tapering to Ø18.78, undercut with fillets, Ø10 shank, chamfered end.
    ("qcad_screw_sideview_R2007.dxf", ["--centre", "auto"], "screw"),
    # The same screw at a tenth of the size, written by dxflib.
    ("librecad_screw_sideview_dxflib_R2000.dxf", ["--centre", "auto"], "screw/10"),
    # The bevel gear: the sectioned side view about y = 0 (the end view on the
    # same centre line is a separate body, left out with a warning).
    ("qcad_bevelgear_halfsection_dims_R2010.dxf", ["--centre", "auto"],
     [(0, 0, 0), (0, 35, 0), (17.998, 35, 0), (31.828, 48.83, 0), (42.43, 36.838, 0), (42.43, 0, 0)]),
    # The hex bolt standing upright, no centre line: the mirror line x = 0.
    ("qcad_bolt_DIN931_M4x25_front_R2010.dxf", ["--centre", "auto"], "bolt"),
    # The countersunk screw standing upright: 90° head Ø8 over a Ø4 shank.
    ("qcad_countersunk_screw_DIN7991_M4x10_front_R2010.dxf", ["--centre", "auto"],
     [(0, -10, 0), (-1.5705, -10, 0), (-2, -9.5705, 0), (-2, -2.3, 0), (-4, -0.3, 0), (-4, 0, 0), (0, 0, 0)]),
]


def run(envline, *args):
    r = subprocess.run([envline, "outline", *args], capture_output=True, text=True)
    return r.returncode, r.stdout, r.stderr


def outline_vertices(path):
    doc = ezdxf.readfile(path)
    found = [e for e in doc.modelspace() if e.dxf.layer == "TempEncircleLine"]
    assert len(found) == 1, f"{len(found)} outlines in {path}"
    return [(p[0], p[1], p[4]) for p in found[0].get_points("xyseb")], found[0].closed


def turned_back(path, out):
    """The outline of an upright part turned a quarter clockwise, so that its
    axis runs along +x as the scorer expects."""
    doc = ezdxf.readfile(path)
    for e in doc.modelspace():
        if e.dxf.layer == "TempEncircleLine":
            e.transform(Matrix44.z_rotate(-math.pi / 2))
    doc.saveas(out)
    return out


def score(truth, dxf):
    r = subprocess.run([sys.executable, SCORER, truth, dxf, "--json"], capture_output=True, text=True)
    try:
        rep = json.loads(r.stdout)
    except json.JSONDecodeError:
        rep = {"raw": r.stdout[-600:] + r.stderr[-600:]}
    return r.returncode == 0, rep


def tee_drawing(path):
    """A flanged pipe tee: a main pipe along x, a branch along y, both axes drawn
    as centre lines. Not a body of revolution."""
    doc = tool_drawings.setup()
    m = doc.modelspace()
    m.add_lwpolyline([(-50, -10), (50, -10), (50, 10), (10, 10), (10, 40), (-10, 40), (-10, 10), (-50, 10)],
                     close=True)
    m.add_line((-55, 0), (55, 0), dxfattribs={"layer": "中心线"})
    m.add_line((0, -15), (0, 45), dxfattribs={"layer": "中心线"})
    doc.saveas(path)


def two_bodies_drawing(path):
    doc = tool_drawings.setup()
    m = doc.modelspace()
    for x0 in (0, 40):
        m.add_lwpolyline([(x0, -5), (x0 + 30, -5), (x0 + 30, 5), (x0, 5)], close=True)
    m.add_line((-5, 0), (75, 0), dxfattribs={"layer": "中心线"})
    doc.saveas(path)


def main():
    build = sys.argv[1]
    envline = os.path.join(build, "app", "cli", "envline")
    tmp = tempfile.mkdtemp(prefix="envline-robust-")
    cases = Cases()
    generated = tool_drawings.make_cases(os.path.join(tmp, "gen"))

    def scored(c):
        def check():
            out = os.path.join(tmp, c["name"] + "_out.dxf")
            code, stdout, stderr = run(envline, c["dxf"], "-o", out, *c["args"])
            assert code == 0, f"exit {code}: {stdout} {stderr}"
            vertices, closed = outline_vertices(out)
            assert closed
            assert all(math.dist(a[:2], b[:2]) > 1e-9 for a, b in zip(vertices, vertices[1:] + vertices[:1])), \
                "a repeated vertex"
            if SCORER is None:
                return
            judged = turned_back(out, out + ".turned.dxf") if c["vertical"] else out
            ok, rep = score(c["truth"], judged)
            assert ok, json.dumps(rep)[:1500]
        return check

    for c in generated:
        cases(f"scored: {c['name']}", scored(c))

    def sheet_without_window():
        sheet = next(c for c in generated if c["name"] == "sheet_tool_2")
        code, _, err = run(envline, sheet["dxf"], "-o", os.path.join(tmp, "s.dxf"), "--centre", "auto")
        assert code == 2 and "--tool" in err and all(f"tool T-{k}" in err for k in (1, 2, 3)), err
        code, out, err = run(envline, sheet["dxf"], "-o", os.path.join(tmp, "s.dxf"), "--centre", "auto",
                             "--all-tools", "--json")
        assert code == 0, err
        results = json.loads(out)
        assert [r["tool"] for r in results] == ["T-1", "T-2", "T-3"], out[:300]
        assert all(r["status"] == "ok" and r["method"] == "robust" for r in results)
        boxes = [r["outline"]["box"] for r in results]
        assert [round(b[0]) for b in boxes] == [0, 200, 400] and [round(b[2]) for b in boxes] == [100, 300, 460], boxes
        code, _, err = run(envline, sheet["dxf"], "-o", os.path.join(tmp, "s.dxf"), "--centre", "auto",
                           "--tool", "T-9")
        assert code == 2 and "T-9" in err and "T-1" in err, err
    cases("a sheet: no window lists the frames, --all-tools does each, --tool picks one", sheet_without_window)

    # Warnings: (what, drawing, arguments, texts each of which a warning
    # holds, a further check of the result or None).
    em = next(c for c in generated if c["name"] == "end_mill_lines")["dxf"]
    tee, two = os.path.join(tmp, "tee.dxf"), os.path.join(tmp, "two.dxf")
    tee_drawing(tee)
    two_bodies_drawing(two)

    def one_body_kept(r):
        assert r["outline"]["box"] in ([0, 0, 30, 5], [40, 0, 70, 5]), r["outline"]
        assert r["parameters"]["gap"] > 0 and r["parameters"]["chord_tol"] == 0.001, r["parameters"]
    warned = [
        ("the window cuts the part", em, ["--window", "-8,-20,70,20", "--centre", "auto"], ["window cuts"], None),
        ("a centre point off the centre line", em, ["--centre", "50,0.5"], ["none of the", "not the mirror"], None),
        ("two bodies", two, ["--centre", "auto"], ["several separate bodies"], one_body_kept),
        # Symmetric about its branch's axis: only the second centre line
        # across the part tells that it is no body of revolution.
        ("a pipe tee", tee, ["--centre", "auto"], ["crosses the part", "not a body of revolution"], None),
    ]
    if CORPUS:
        warned.append(("the real pipe tee", os.path.join(CORPUS, "librecad_pipe_tee_two_axes_dxflib_R2000.dxf"),
                       ["--centre", "auto"], ["crosses the part", "not a body of revolution"], None))
    for what, path, args, texts, further in warned:
        def check(path=path, args=args, texts=texts, further=further):
            code, out, err = run(envline, path, "-o", os.path.join(tmp, "w.dxf"), *args, "--json")
            assert code == 0, (code, out, err)
            r = json.loads(out)
            assert all(any(t in w["text"] for w in r["warnings"]) for t in texts), r["warnings"]
            if further:
                further(r)
        cases(f"warning: {what}", check)

    def wide_gap():
        # Gaps of 0.2 mm: refused with the place and a hint, right with --gap 0.3.
        path = os.path.join(tmp, "wide_gap.dxf")
        doc = tool_drawings.setup()
        m = doc.modelspace()
        prof = tool_drawings.FAMILIES["step_drill"]
        for h in (prof, tool_drawings.mirror_profile(prof)):
            tool_drawings.add_edges(m, h, gaps=0.2)
        tool_drawings.add_centre_line(m, -4, 114)
        doc.saveas(path)
        out = os.path.join(tmp, "wide_gap_out.dxf")
        code, stdout, stderr = run(envline, path, "-o", out, "--centre", "auto")
        assert code == 3 and "does not close" in stdout and "--gap" in stdout, (code, stdout, stderr)
        code, stdout, stderr = run(envline, path, "-o", out, "--centre", "auto", "--gap", "0.3")
        assert code == 0, (stdout, stderr)
        truth = os.path.join(tmp, "wide_gap.truth.json")
        with open(truth, "w") as f:
            json.dump(tool_drawings.truth_of("wide_gap", prof), f)
        if SCORER:
            ok, rep = score(truth, out)
            assert ok, json.dumps(rep)[:1500]
    cases("a gap wider than the tolerance is refused, and joined with --gap", wide_gap)

    def exact_settings_refused():
        # The exact method's settings mean nothing to the robust method: given
        # without --method exact they are a usage error, not silently ignored.
        em = next(c for c in generated if c["name"] == "end_mill_lines")
        for option in (["--driver", "hatch"], ["--driver=slabs"], ["--keep-dashed"], ["--point-tol", "0.01"]):
            code, _, err = run(envline, em["dxf"], "-o", os.path.join(tmp, "x.dxf"), *em["args"], *option)
            assert code == 2 and option[0].split("=")[0] in err and "--method exact" in err, (option, code, err)
    cases("the exact method's settings without --method exact are refused", exact_settings_refused)

    def exact_checked():
        # The exact method keeps its own result, and every outline it makes
        # passes the same checks or is refused with the reason.
        for c in generated:
            if c["vertical"] or c["name"].startswith("sheet"):
                continue
            out = os.path.join(tmp, c["name"] + "_exact.dxf")
            code, stdout, stderr = run(envline, c["dxf"], "-o", out, "--method", "exact", *c["args"])
            assert code in (0, 3), (c["name"], code, stderr)
            if code == 3:
                assert "failed its check" in stdout or "no outline" in stdout, (c["name"], stdout)
            else:
                vertices, closed = outline_vertices(out)
                assert closed and vertices
    cases("the exact method's outlines pass the checks or are refused", exact_checked)

    if CORPUS:
        for name, args, expected in CORPUS_CASES:
            def real(name=name, args=args, expected=expected):
                out = os.path.join(tmp, "real_" + name)
                code, stdout, stderr = run(envline, os.path.join(CORPUS, name), "-o", out, *args)
                assert code == 0, f"exit {code}: {stdout} {stderr}"
                vertices, closed = outline_vertices(out)
                assert closed
                if isinstance(expected, list) and expected != [None]:
                    assert len(vertices) == len(expected), vertices
                    for got, want in zip(vertices, expected):
                        assert math.dist(got[:2], want[:2]) < 2e-3 and abs(got[2] - want[2]) < 1e-3, (vertices, expected)
            cases(f"real drawing: {name}", real)

    return cases.report()


if __name__ == "__main__":
    sys.exit(main())
