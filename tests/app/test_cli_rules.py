#!/usr/bin/python3
"""Rules of the command line users rely on: the input drawing is never
written unless --in-place says so (-o or --out-dir naming it, through
another spelling or a link, is a usage error, exit 2, and so is a picture or
solid file naming it; envline run's SAVE of a drawing it read fails); a
failed run (exit 3) writes no drawing unless --write-on-failure; --json on
every subcommand gives one JSON document, an error included, with numbers
rounded; --quiet leaves only errors, --verbose adds the steps; several
drawings go to --out-dir; the toolkit says nothing on standard error when a
picture is made without XDG_RUNTIME_DIR; hostile drawings give exit 1 with
the reason.

usage: test_cli_rules.py BUILD_DIR
"""
import json
import os
import re
import shutil
import sys
import tempfile

from cli_cases import ROOT, Cases, Envline, sample_rows, sha


def main():
    envline = Envline(sys.argv[1])
    rows = sample_rows()
    sample, _, window, centre = rows[0]
    tmp = tempfile.mkdtemp(prefix="envline_rules_")
    src = os.path.join(tmp, sample)
    shutil.copy(os.path.join(ROOT, "samples", sample), src)
    os.symlink(sample, os.path.join(tmp, "link.dxf"))
    before = sha(src)
    cases = Cases()

    def path(name):
        return os.path.join(tmp, name)

    def outline(*args):
        return ["outline", src, "--window", window, "--centre", centre, *args]

    def refused(*args):
        code, _, err = envline(*args)
        assert code == 2, f"{args}: exit {code}: {err}"
        assert sha(src) == before, f"{args}: the input changed"
        return err

    # The input is never written unless --in-place.
    def output_is_input(out):
        assert "in-place" in refused(*outline("-o", out))
        refused("convert", src, "-o", out)
        refused("export", src, "--dir", path("solids"), "-o", out)

    cases.table([(f"-o naming the input ({how}) is refused unless --in-place", out) for how, out in (
        ("itself", src), ("through ./", os.path.join(tmp, ".", sample)), ("through a link", path("link.dxf")))],
        output_is_input)

    def picture_or_solid_is_input(option):
        assert "input drawing" in refused(*outline("-o", path("out.dxf"), option, src))

    cases.table([(f"{o} never overwrites the input", o) for o in ("--png", "--svg", "--sat", "--step", "--stl")],
                picture_or_solid_is_input)
    cases("--out-dir naming the input's folder is refused unless --in-place",
          lambda: refused(*outline("--out-dir", tmp)))

    def in_place_is_asked_for():
        work = path("work.dxf")
        shutil.copy(src, work)
        code, _, err = envline("outline", work, "--in-place", "--window", window, "--centre", centre)
        assert code == 0, err
        assert sha(work) != before, "--in-place wrote nothing"
    cases("--in-place writes the input", in_place_is_asked_for)

    # envline run: SAVE of a drawing the run read goes to -o, --out-dir, or
    # itself with --in-place; otherwise it fails and the drawing stays.
    erase = f"ERASE\nW {window.replace(',', ' ', 2).replace(' ', ',', 1)}\n\n"
    script, close = path("erase.scr"), path("close.scr")
    with open(script, "w") as f:
        f.write(erase + "SAVE\n")
    with open(close, "w") as f:
        f.write(erase + "CLOSE\nY\n")

    def run_save(extra, code, written, which=script):
        work = path("run_in.dxf")
        shutil.copy(src, work)
        c, out, err = envline("run", which, work, *extra)
        assert c == code, f"{extra}: exit {c}: {out} {err}"
        if written:
            assert os.path.exists(written) and sha(written) != before, f"{extra}: {written} not written"
        if written != work:
            assert sha(work) == before, f"{extra}: the input changed"
        return out

    cases.table([
        ("run: SAVE without -o fails and keeps the drawing", [], 1, None),
        ("run: SAVE with -o writes OUT", ["-o", path("run_out.dxf")], 0, path("run_out.dxf")),
        ("run: SAVE with --out-dir writes DIR/NAME", ["--out-dir", path("runs")], 0, path("runs/run_in.dxf")),
        ("run: SAVE with --in-place writes the drawing", ["--in-place"], 0, path("run_in.dxf")),
        ("run: CLOSE answered Y without -o fails and keeps the drawing", [], 1, None, close),
        ("run: CLOSE answered Y with -o writes OUT", ["-o", path("run_close.dxf")], 0, path("run_close.dxf"), close),
    ], run_save)
    cases("run: -o with the input is refused", lambda: refused("run", script, src, "-o", src))

    # A failed run (exit 3) writes no drawing unless asked to.
    def failed_run(command, extra, out):
        for asked in (False, True):
            if os.path.exists(out):
                os.remove(out)
            code, stdout, err = envline(*command, *(["--write-on-failure"] if asked else []))
            assert code == 3, f"exit {code}: {err}"
            assert os.path.exists(out) == asked, f"written={os.path.exists(out)} with asked={asked}: {stdout}"
            if not asked:
                assert "--write-on-failure" in stdout, stdout

    cases.table([
        ("outline: no outline, no drawing unless --write-on-failure",
         ["outline", src, "--window", window, "--centre", "0,5000", "-o", path("failed.dxf")], [], path("failed.dxf")),
        ("export: nothing exported, no drawing unless --write-on-failure",
         ["export", src, "--dir", path("none"), "-o", path("failed_export.dxf")], [], path("failed_export.dxf")),
    ], failed_run)

    # --json on every subcommand, errors included.
    def json_error(args, code):
        r = envline.json(*args, code=code)
        assert r["status"] == "error" and r["exit_code"] == code and r["message"], r

    cases.table([(f"--json error: {a[0]} {what}", a, c) for what, a, c in (
        ("(no such drawing)", ["info", path("missing.dxf")], 1),
        ("(no -o)", ["convert", src], 2),
        ("(unknown option)", ["outline", src, "--bogus"], 2),
        ("(no such drawing)", ["outline", path("missing.dxf"), "-o", path("m.dxf"), "--centre", "0,0"], 1),
        ("(no --dir)", ["export", src], 2),
        ("(unknown task)", ["batch", src, "run", "nope", "-o", path("b.dxf")], 2),
        ("(no such script)", ["run", path("missing.scr")], 2),
        ("(unknown command)", ["nonsense"], 2),
        ("(-o - with --json)", outline("-o", "-"), 2),
        ("(two outputs '-')", outline("-o", "-", "--svg", "-"), 2),
        ("(-o - with --json)", ["convert", src, "-o", "-"], 2),
    )], json_error)

    def json_ok(args, status):
        r = envline.json(*args)
        assert r["status"] == status and r.get("exit_code", 0) == 0, r

    cases.table([(f"--json result: {a[0]}", a, s) for a, s in (
        (["info", src], "ok"),
        (["convert", src, "-o", path("c.dxf")], "ok"),
        (["run", script, src, "-o", path("j.dxf")], "ok"),
    )], json_ok)

    def json_numbers_rounded():
        _, out, _ = envline(*outline("-o", path("n.dxf"), "--json"))
        numbers = re.findall(r"(?<![\w.])-?\d+\.\d+", out)
        assert numbers, out
        digits = [n for n in numbers if len(n.lstrip("-").replace(".", "").lstrip("0")) > 12]
        assert not digits, digits
        json.loads(out)
    cases("--json numbers are rounded to 12 digits", json_numbers_rounded)

    def quiet_and_verbose():
        code, out, err = envline(*outline("-o", path("q.dxf"), "--quiet"))
        assert code == 0 and out == "" and err == "", (out, err)
        code, out, err = envline(*outline("-o", path("v.dxf"), "--verbose"))
        assert code == 0 and "read " in err and "wrote " in err and "vertices" in out, (out, err)
        code, out, err = envline("convert", src, "-o", path("cq.dxf"), "-q")
        assert code == 0 and out == "", out
    cases("--quiet prints nothing on success, --verbose the steps", quiet_and_verbose)

    def several_drawings():
        second = path("second.dxf")
        shutil.copy(os.path.join(ROOT, "samples", rows[1][0]), second)
        r = envline.json("outline", src, second, "--out-dir", path("many"), "--all-tools", "--centre", "auto")
        assert isinstance(r, list) and len(r) == 2, r
        for name in (sample, "second.dxf"):
            assert os.path.exists(path(f"many/{name}")), name
        refused("outline", src, second, "-o", path("x.dxf"), "--centre", "auto")
        refused("outline", src, second, "--out-dir", path("many2"), "--centre", "auto", "--png", path("p.png"))
    cases("several drawings: --out-dir DIR/NAME each, -o and single files refused", several_drawings)

    def no_toolkit_noise():
        env = {k: v for k, v in os.environ.items() if k != "XDG_RUNTIME_DIR"}
        code, _, err = envline(*outline("-o", path("pic.dxf"), "--png", path("pic.png")), env=env)
        assert code == 0, err
        assert "XDG_RUNTIME_DIR" not in err and "QStandardPaths" not in err, err
    cases("no toolkit noise on standard error without XDG_RUNTIME_DIR", no_toolkit_noise)

    def hostile_drawing_is_an_error():
        loop = path("loop.dxf")
        with open(loop, "w") as f:
            f.write("  0\nSECTION\n  2\nBLOCKS\n  0\nBLOCK\n  2\nA\n 70\n0\n 10\n0\n 20\n0\n 30\n0\n"
                    "  0\nINSERT\n  2\nB\n 10\n0\n 20\n0\n 30\n0\n  0\nENDBLK\n"
                    "  0\nBLOCK\n  2\nB\n 70\n0\n 10\n0\n 20\n0\n 30\n0\n"
                    "  0\nINSERT\n  2\nA\n 10\n0\n 20\n0\n 30\n0\n  0\nENDBLK\n  0\nENDSEC\n"
                    "  0\nSECTION\n  2\nENTITIES\n  0\nINSERT\n  2\nA\n 10\n0\n 20\n0\n 30\n0\n  0\nENDSEC\n  0\nEOF\n")
        for args in (["info", loop], ["convert", loop, "-o", path("l2.dxf")],
                     ["outline", loop, "-o", path("l3.dxf"), "--centre", "0,0"],
                     ["export", loop, "--dir", path("l4")]):
            code, _, err = envline(*args)
            assert code == 1, f"{args[0]}: exit {code}: {err}"
            assert "A -> B -> A" in err, f"{args[0]}: {err}"
    cases("a block inserting itself: every command exits 1 naming the blocks", hostile_drawing_is_an_error)

    status = cases.report()
    shutil.rmtree(tmp, ignore_errors=True)
    return status


if __name__ == "__main__":
    sys.exit(main())
