#!/usr/bin/python3
"""Read, compute and write times of `envline outline` on every sample, the
median of several runs each, against the 50 ms target; and the times of its
solid: revolve plus SAT plus STEP (target under 50 ms), and the STL mesh.

usage: outline_samples_bench.py BUILD_DIR [RUNS]
"""
import json
import os
import statistics
import subprocess
import sys
import tempfile

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))


def main():
    build = sys.argv[1]
    runs = int(sys.argv[2]) if len(sys.argv) > 2 else 7
    envline = os.path.join(build, "app", "cli", "envline")
    tmp = tempfile.mkdtemp()
    out = os.path.join(tmp, "out.dxf")
    solid = [os.path.join(tmp, "tool." + k) for k in ("sat", "step", "stl")]
    with open(os.path.join(ROOT, "samples", "samples.tsv"), encoding="utf-8") as f:
        rows = [line.rstrip("\n").split("\t") for line in f][1:]
    print(f"{'sample':22} {'tool':7} {'read':>7} {'compute':>8} {'write':>7} {'total':>7} {'solid':>7} {'stl':>7}"
          f"  (ms, median of {runs})")
    worst = worst_solid = 0.0
    for filename, tool, window, _ in rows:
        times = []
        for _ in range(runs):
            r = subprocess.run([envline, "outline", os.path.join(ROOT, "samples", filename), "-o", out, "--window",
                                window, "--centre", "auto", "--json", "--sat", solid[0], "--step", solid[1], "--stl", solid[2]], capture_output=True, text=True, check=True)
            times.append(json.loads(r.stdout)["timings_ms"])
        med = {k: statistics.median(t[k] for t in times) for k in ("read", "compute", "write", "solid", "stl")}
        total = med["read"] + med["compute"] + med["write"]
        worst = max(worst, total)
        worst_solid = max(worst_solid, med["solid"])
        print(f"{filename:22} {tool:7} {med['read']:7.2f} {med['compute']:8.2f} {med['write']:7.2f} {total:7.2f}"
              f" {med['solid']:7.2f} {med['stl']:7.2f}")
    print(f"slowest outline: {worst:.2f} ms (target: under 50 ms)")
    print(f"slowest solid (revolve + SAT + STEP): {worst_solid:.2f} ms (target: under 50 ms)")


if __name__ == "__main__":
    main()
