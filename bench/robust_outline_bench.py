#!/usr/bin/python3
"""The robust and the exact outline side by side: the compute time of an
ordinary tool, of a fluted tool of 3,000 entities, and the whole run of a
sheet of 100 tools in tagged frames with --all-tools (median of 5 runs).
Targets of the robust method: < 5 ms, < 100 ms and < 1 s.

usage: robust_outline_bench.py BUILD_DIR
"""
import json
import os
import statistics
import subprocess
import sys
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(os.path.dirname(HERE), "tests", "robust"))
import tool_drawings as td  # noqa: E402
from ezdxf.math import Matrix44  # noqa: E402


def drawings(tmp):
    out = {}
    doc = td.setup()
    td.draw_tool(doc, doc.modelspace(), td.FAMILIES["end_mill"], dims="entities")
    out["ordinary tool"] = os.path.join(tmp, "ordinary.dxf")
    doc.saveas(out["ordinary tool"])

    doc = td.setup()
    m = doc.modelspace()
    td.draw_tool(doc, m, td.FAMILIES["twist_drill"], flutes=0)
    # Flutes: helix traces as short lines across the body, 3,000 entities in all.
    n = len(m)
    k = 0
    while len(m) < 3000:
        x = 5 + (k * 0.031) % 90
        y = -4.5 + (k * 0.37) % 9
        m.add_line((x, y), (x + 0.6, min(4.8, y + 0.5)))
        k += 1
    out[f"fluted tool ({len(m)} entities, {len(m) - n} flute lines)"] = os.path.join(tmp, "fluted.dxf")
    doc.saveas(out[f"fluted tool ({len(m)} entities, {len(m) - n} flute lines)"])

    doc = td.setup()
    m = doc.modelspace()
    td.frame_block(doc)
    fams = list(td.FAMILIES)
    for i in range(100):
        ox, oy = 200 * (i % 10), 100 * (i // 10)
        td.add_frame(m, (ox - 20, oy - 30), f"T-{i + 1:03}")
        td.draw_tool(doc, m, td.FAMILIES[fams[i % len(fams)]], xform=Matrix44.translate(ox, oy, 0))
    out["sheet of 100 tools, --all-tools"] = os.path.join(tmp, "sheet.dxf")
    doc.saveas(out["sheet of 100 tools, --all-tools"])
    return out


def run(envline, path, method, tmp):
    args = [envline, "outline", path, "-o", os.path.join(tmp, "out.dxf"), "--centre", "auto", "--json",
            "--method", method]
    sheet = "sheet" in path
    if sheet:
        args.append("--all-tools")
    t = time.perf_counter()
    r = subprocess.run(args, capture_output=True, text=True)
    wall = (time.perf_counter() - t) * 1000
    if not r.stdout.strip():
        return None, wall, r.stderr.strip()[:200]
    res = json.loads(r.stdout)
    results = res if isinstance(res, list) else [res]
    made = sum(1 for x in results if x["status"] == "ok")
    compute = sum(x["timings_ms"]["compute"] for x in results)
    return compute, wall, f"{made}/{len(results)} outlines"


def main():
    envline = os.path.join(sys.argv[1], "app", "cli", "envline")
    tmp = tempfile.mkdtemp(prefix="envline-robust-bench-")
    print(f"{'drawing':48} {'method':7} {'compute ms':>11} {'whole run ms':>13}  result")
    for name, path in drawings(tmp).items():
        for method in ("robust", "exact"):
            runs = [run(envline, path, method, tmp) for _ in range(5)]
            computes = [c for c, _, _ in runs if c is not None]
            compute = statistics.median(computes) if computes else float("nan")
            wall = statistics.median(w for _, w, _ in runs)
            print(f"{name:48} {method:7} {compute:11.2f} {wall:13.1f}  {runs[0][2]}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
