#!/usr/bin/python3
"""The robust outline's core against GEOS and CGAL on the drawings of
robust_outline_bench.py (an ordinary tool, a fluted tool of 3,000 entities,
a sheet of 100 tools, one selection per frame): build/bench/robust_core_bench
times each (median, ms) and prints the ratios to the robust outline.

usage: robust_core_bench.py BUILD_DIR
"""
import os
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, HERE)
import robust_outline_bench  # noqa: E402


def main():
    bench = os.path.join(sys.argv[1], "bench", "robust_core_bench")
    tmp = tempfile.mkdtemp(prefix="envline-core-bench-")
    methods = ["robust graph", "robust", "GEOS", "CGAL"]
    print(f"{'drawing':34} {'sel':>5} {'curves':>6}" + "".join(f" {m:>10}" for m in methods)
          + f" {'GEOS/rob':>8} {'CGAL/rob':>8}")
    for name, path in robust_outline_bench.drawings(tmp).items():
        windows = []
        if "sheet" in name:
            # The frames of robust_outline_bench's sheet: 160 x 60 at (ox - 20, oy - 30).
            windows = [f"{200 * (i % 10) - 19.5},{100 * (i // 10) - 29.5},{200 * (i % 10) + 139.5},"
                       f"{100 * (i // 10) + 29.5}" for i in range(100)]
        short = name.split(" (")[0].split(",")[0]
        subprocess.run([bench, short, path, *windows], check=True)
    return 0


if __name__ == "__main__":
    sys.exit(main())
