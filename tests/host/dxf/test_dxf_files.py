#!/usr/bin/python3
"""Drawing files against an independent reader and writer (ezdxf):
- drawings ezdxf writes in every version from R12 to R2018 go through
  `envline convert` with nothing lost;
- edits made through the host (a new outline, a task store, a layer off,
  a moved line, an erased circle) read back right in every version;
- an R2010 drawing with Chinese names and text converts to every version
  from R2000 to R2018 (R2000 and R2004 in the code page ANSI_936, which
  holds them; ANSI_1252 when asked, with a warning for what it cannot hold),
  an R12 one to R2000 and every real drawing to R2018, losing only what a
  warning names;
- every entity, opened for write and so written from what the host built
  of it, reads back in ezdxf as the original did;
- Chinese names and text survive R2000 ANSI_936 and R2010 UTF-8 files;
- every real drawing of the shared corpus round-trips and rebuilds (when it
  is present).

usage: test_dxf_files.py BUILD_DIR [CORPUS_DIR]
"""
import glob
import os
import re
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor

HERE = os.path.dirname(os.path.abspath(__file__))
PY = sys.executable


def run(cmd):
    r = subprocess.run(cmd, capture_output=True, text=True)
    return r.returncode, r.stdout + r.stderr


def main():
    build = sys.argv[1]
    corpus = sys.argv[2] if len(sys.argv) > 2 else ""
    envline = os.path.join(build, "app", "cli", "envline")
    helper = os.path.join(build, "tests", "dxf_edit_helper")
    compare = os.path.join(HERE, "compare_drawings.py")
    check = os.path.join(HERE, "check_edit.py")
    tmp = tempfile.mkdtemp(prefix="envline-dxf-")
    code, out = run([PY, os.path.join(HERE, "make_drawings.py"), tmp])
    if code:
        print(out)
        print("0 passed, 1 failed")
        return 1
    cases = []

    def round_trip(src, name, extra=()):
        dst = os.path.join(tmp, "out_" + name)
        code, out = run([envline, "convert", src, "-o", dst, *extra])
        if code:
            return f"convert failed: {out}"
        code, out = run([PY, compare, src, dst] + (["--converted"] if extra else []))
        return out if code else None

    def edit(src, name):
        dst = os.path.join(tmp, "edit_" + name)
        code, out = run([helper, src, dst])
        if code:
            return f"edit failed: {out}"
        lines = dict(line.split(" ", 1) for line in out.splitlines() if " " in line)
        code, out = run([PY, check, src, dst, lines.get("changed", ""), lines.get("added", "")])
        return out if code else None

    def convert_newer(src, name, version="R2018"):
        # Into a newer version, perhaps from R12 (everything re-encoded):
        # nothing may be lost but what a warning names.
        dst = os.path.join(tmp, f"newer_{name}")
        code, out = run([envline, "convert", src, "-o", dst, "--version", version])
        if code:
            return f"convert failed: {out}"
        left_out = re.findall(r"^warning: \S+ ([0-9A-F]+) cannot be ", out, re.M)
        code, out = run([PY, compare, src, dst, "--converted", "--rebuilt", "--ignore-handles", ",".join(left_out) or "-"])
        return out if code else None

    def rebuild(src, name):
        # Every entity written from what the host built of it, judged
        # against the original by ezdxf.
        dst = os.path.join(tmp, "rebuilt_" + name)
        code, out = run([helper, src, dst, "--rebuild"])
        if code:
            return f"rebuild failed: {out}"
        code, out = run([PY, compare, src, dst, "--rebuilt"])
        return out if code else None

    def chinese(name, encoding):
        data = open(os.path.join(tmp, "edit_" + name), "rb").read()
        missing = [t for t in ("尺寸线", "计算包络线成功") if t.encode(encoding) not in data]
        return f"{name}: {missing} not stored as {encoding}" if missing else None

    generated = sorted(glob.glob(os.path.join(tmp, "tool_*.dxf")))
    for src in generated:
        name = os.path.basename(src)
        cases.append((f"round trip {name}", lambda s=src, n=name: round_trip(s, n)))
        cases.append((f"edit {name}", lambda s=src, n=name: edit(s, n)))
        cases.append((f"rebuild {name}", lambda s=src, n=name: rebuild(s, n)))
    cases.append(("convert R12 to R2000", lambda: convert_newer(os.path.join(tmp, "tool_R12.dxf"), "R12.dxf", "R2000")))
    r2010 = os.path.join(tmp, "tool_R2010.dxf")
    for version in ("R2000", "R2004", "R2007", "R2013", "R2018"):
        cases.append((f"convert R2010 to {version}",
                      lambda v=version: round_trip(r2010, f"conv_{v}.dxf", ("--version", v))))

    def code_page(page, expect_code, expect_text):
        dst = os.path.join(tmp, f"page_{page}.dxf")
        r = subprocess.run([envline, "convert", r2010, "-o", dst, "--version", "R2000", "--codepage", page],
                           capture_output=True, text=True)
        ok = r.returncode == expect_code and all(t in r.stderr for t in expect_text)
        if ok and expect_code == 0:
            ok = b"$DWGCODEPAGE\n  3\n" + page.encode() in open(dst, "rb").read()
        return None if ok else f"exit {r.returncode}: {r.stderr}"
    cases.append(("--codepage ANSI_1252: escapes with a warning",
                  lambda: code_page("ANSI_1252", 0, ["cannot be held", "ANSI_1252"])))
    cases.append(("an unknown --codepage is a usage error", lambda: code_page("KLINGON", 2, ["code page"])))
    gbk = os.path.join(tmp, "tool_R2000_gbk.dxf")
    cases.append(("convert R2000 ANSI_936 to R2010 UTF-8",
                  lambda: round_trip(gbk, "conv_gbk_R2010.dxf", ("--version", "R2010"))))
    if corpus and os.path.isdir(corpus):
        for src in sorted(glob.glob(os.path.join(corpus, "*.dxf"))):
            name = os.path.basename(src)
            cases.append((f"corpus {name}", lambda s=src, n=name: round_trip(s, "corpus_" + n)))
            cases.append((f"corpus rebuild {name}", lambda s=src, n=name: rebuild(s, "corpus_" + n)))
            cases.append((f"corpus to R2018 {name}", lambda s=src, n=name: convert_newer(s, "corpus_" + n)))
    else:
        print("the shared corpus is not here; its cases are skipped")

    def info():
        import json
        code, out = run([envline, "info", os.path.join(tmp, "tool_R2010.dxf"), "--json"])
        if code:
            return out
        facts = json.loads(out)
        want = {"version": "R2010", "codepage": "UTF-8"}
        problems = [f"{k} is {facts.get(k)}" for k, v in want.items() if facts.get(k) != v]
        if facts["entities"].get("LINE") != 13 or facts["layers"].get("尺寸线") != 2:
            problems.append(f"counts {facts['entities']} {facts['layers']}")
        frames = [(f["tool_number"], f["box"]) for f in facts["tool_frames"]]
        if frames != [("T-0815", [-10, -20, 110, 60])]:
            problems.append(f"frames {frames}")
        kinds = {l["name"]: l["kind"] for l in facts["linetypes"]}
        if kinds.get("CENTER") != "centre" or kinds.get("DASHED") != "dashed":
            problems.append(f"linetype kinds {kinds}")
        return "\n".join(problems) or None

    cases.append(("envline info --json", info))
    with ThreadPoolExecutor(max_workers=os.cpu_count() or 2) as pool:
        results = list(pool.map(lambda c: (c[0], c[1]()), cases))
    # The Chinese checks read files the edit cases wrote.
    results.append(("chinese R2000 ANSI_936", chinese("tool_R2000_gbk.dxf", "gbk")))
    results.append(("chinese R2010 UTF-8", chinese("tool_R2010.dxf", "utf-8")))
    failed = 0
    for name, problem in results:
        if problem:
            failed += 1
            print(f"FAIL {name}\n  " + problem.strip().replace("\n", "\n  "))
        else:
            print(f"ok   {name}")
    print(f"{len(results) - failed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
