#!/usr/bin/python3
"""Rules of the command line users rely on: the input drawing is never
written unless --in-place says so (-o naming it, through another spelling
or a link, is a usage error, exit 2, and so is a picture or solid file
naming it); the toolkit says nothing on standard error when a picture is
made without XDG_RUNTIME_DIR; hostile drawings give exit 1 with the reason.

usage: test_cli_rules.py BUILD_DIR
"""
import os
import shutil
import subprocess
import sys
import tempfile

from cli_cases import ROOT, Cases, sample_rows, sha


def main():
    envline = os.path.join(sys.argv[1], "app", "cli", "envline")
    sample, _, window, centre = sample_rows()[0]
    tmp = tempfile.mkdtemp(prefix="envline_rules_")
    src = os.path.join(tmp, sample)
    shutil.copy(os.path.join(ROOT, "samples", sample), src)
    os.symlink(sample, os.path.join(tmp, "link.dxf"))
    before = sha(src)
    cases = Cases()

    def run(*args, env=None):
        r = subprocess.run([envline, *args], capture_output=True, text=True, env=env)
        return r.returncode, r.stdout, r.stderr

    def refused(*args):
        code, _, err = run(*args)
        assert code == 2, f"{args}: exit {code}: {err}"
        assert sha(src) == before, f"{args}: the input changed"
        return err

    def output_is_input():
        same = [src, os.path.join(tmp, ".", sample), os.path.join(tmp, "link.dxf")]
        for out in same:
            assert "in-place" in refused("outline", src, "-o", out, "--window", window, "--centre", centre)
            refused("convert", src, "-o", out)
            refused("export", src, "--dir", os.path.join(tmp, "solids"), "-o", out)

    def outputs_never_overwrite_the_input():
        for option in ("--png", "--svg", "--sat", "--step", "--stl"):
            err = refused("outline", src, "-o", os.path.join(tmp, "out.dxf"), "--window", window, "--centre", centre,
                          option, src)
            assert "input drawing" in err, err

    def in_place_is_asked_for():
        work = os.path.join(tmp, "work.dxf")
        shutil.copy(src, work)
        code, _, err = run("outline", work, "--in-place", "--window", window, "--centre", centre)
        assert code == 0, err
        assert sha(work) != before, "--in-place wrote nothing"

    def no_toolkit_noise():
        env = {k: v for k, v in os.environ.items() if k != "XDG_RUNTIME_DIR"}
        code, _, err = run("outline", src, "-o", os.path.join(tmp, "pic.dxf"), "--window", window, "--centre", centre,
                           "--png", os.path.join(tmp, "pic.png"), env=env)
        assert code == 0, err
        assert "XDG_RUNTIME_DIR" not in err and "QStandardPaths" not in err, err

    def hostile_drawing_is_an_error():
        loop = os.path.join(tmp, "loop.dxf")
        with open(loop, "w") as f:
            f.write("  0\nSECTION\n  2\nBLOCKS\n  0\nBLOCK\n  2\nA\n 70\n0\n 10\n0\n 20\n0\n 30\n0\n"
                    "  0\nINSERT\n  2\nB\n 10\n0\n 20\n0\n 30\n0\n  0\nENDBLK\n"
                    "  0\nBLOCK\n  2\nB\n 70\n0\n 10\n0\n 20\n0\n 30\n0\n"
                    "  0\nINSERT\n  2\nA\n 10\n0\n 20\n0\n 30\n0\n  0\nENDBLK\n  0\nENDSEC\n"
                    "  0\nSECTION\n  2\nENTITIES\n  0\nINSERT\n  2\nA\n 10\n0\n 20\n0\n 30\n0\n  0\nENDSEC\n  0\nEOF\n")
        for args in (["info", loop], ["convert", loop, "-o", os.path.join(tmp, "l2.dxf")],
                     ["outline", loop, "-o", os.path.join(tmp, "l3.dxf"), "--centre", "0,0"],
                     ["export", loop, "--dir", os.path.join(tmp, "l4")]):
            code, _, err = run(*args)
            assert code == 1, f"{args[0]}: exit {code}: {err}"
            assert "A -> B -> A" in err, f"{args[0]}: {err}"

    cases("-o naming the input (also via ./ or a link) is refused unless --in-place", output_is_input)
    cases("pictures and solids never overwrite the input", outputs_never_overwrite_the_input)
    cases("--in-place writes the input", in_place_is_asked_for)
    cases("no toolkit noise on standard error without XDG_RUNTIME_DIR", no_toolkit_noise)
    cases("a block inserting itself: every command exits 1 naming the blocks", hostile_drawing_is_an_error)
    status = cases.report()
    shutil.rmtree(tmp, ignore_errors=True)
    return status


if __name__ == "__main__":
    sys.exit(main())
