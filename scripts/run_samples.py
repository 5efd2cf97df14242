#!/usr/bin/python3
"""The main job: the envelope line of every sample tool (each tool of the
multi-tool sheet by its window), written to out/ as DXF, PNG and JSON, and
its revolved solid as SAT, STEP and STL, with a one-line summary per tool.
Then the batch example: the frames of the sample sheet become one task kept
in the drawing, which is run and exported with a report.

usage: run_samples.py BUILD_DIR [OUT_DIR]
"""
import json
import os
import subprocess
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))


def main():
    build = sys.argv[1]
    out = sys.argv[2] if len(sys.argv) > 2 else os.path.join(ROOT, "out")
    os.makedirs(out, exist_ok=True)
    envline = os.path.join(build, "app", "cli", "envline")
    failures = 0
    with open(os.path.join(ROOT, "samples", "samples.tsv"), encoding="utf-8") as f:
        rows = [line.rstrip("\n").split("\t") for line in f][1:]
    sheets = {r[0] for r in rows if sum(1 for x in rows if x[0] == r[0]) > 1}
    for filename, tool, window, _centre in rows:
        stem = os.path.splitext(filename)[0] + (f"_{tool}" if filename in sheets else "")
        cmd = [envline, "outline", os.path.join(ROOT, "samples", filename), "-o", os.path.join(out, stem + ".dxf"),
               "--window", window, "--centre", "auto", "--png", os.path.join(out, stem + ".png"), "--json"]
        cmd += [a for k in ("sat", "step", "stl") for a in (f"--{k}", os.path.join(out, f"{stem}.{k}"))]
        r = subprocess.run(cmd, capture_output=True, text=True)
        with open(os.path.join(out, stem + ".json"), "w", encoding="utf-8") as j:
            j.write(r.stdout)
        if r.returncode != 0:
            failures += 1
            print(f"{tool:8} {filename:20} failed (exit {r.returncode}): {r.stderr.strip()}")
            continue
        res = json.loads(r.stdout)
        o = res["outline"]
        t = res["timings_ms"]
        # Rounding noise around zero (-1.8e-16) is shown as 0.
        box = ", ".join(f"{round(v, 9) + 0.0:g}" for v in o["box"])
        print(f"{tool:8} {filename:20} {res['message']}  {len(o['vertices']):2} vertices  box ({box})  "
              f"area {o['area']:.1f}  {t['read'] + t['compute'] + t['write']:.1f} ms + solid {t['solid'] + t['stl']:.1f} ms"
              f"  -> {stem}.dxf/.png/.json/.sat/.step/.stl")
    print(f"{len(rows) - failures} outlines made, {failures} failed; results in {out}")
    failures += batch_example(envline, out)
    return 1 if failures else 0


def batch_example(envline, out):
    """A task of the sample sheet's frames, run and exported with a report."""
    sheet = os.path.join(out, "tool_sheet_batch.dxf")
    steps = [["new-task", "刀具图纸", "-o", sheet],
             ["add-frames", "刀具图纸", "--in-place"],
             ["run", "--in-place"],
             ["export", "--dir", os.path.join(out, "batch_solids"), "--formats", "sat,step",
              "--report", os.path.join(out, "tool_sheet_batch.xlsx"), "--in-place"],
             ["tasks"]]
    source = os.path.join(ROOT, "samples", "tool_sheet.dxf")
    print("batch: the frames of tool_sheet.dxf as one task")
    for step in steps:
        r = subprocess.run([envline, "batch", sheet if step[0] != "new-task" else source, *step, "--quiet"],
                           capture_output=True, text=True)
        for line in r.stdout.splitlines():
            print("  " + line)
        if r.returncode != 0:
            print(f"  envline batch {step[0]} failed (exit {r.returncode}): {r.stderr.strip()}")
            return 1
    print(f"batch results: {sheet}, batch_solids/, tool_sheet_batch.xlsx")
    return 0


if __name__ == "__main__":
    sys.exit(main())
