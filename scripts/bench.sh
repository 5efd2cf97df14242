#!/usr/bin/env bash
# Builds and runs the benchmarks: the host, the DXF reader and writer, the
# outline engine (also at drawing scale), the solids, and the outline and solid of every sample.
# Arguments go to the Google Benchmark programs (e.g. --benchmark_filter=...).
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/build.sh
for b in host_bench engine_bench solid_bench view_bench; do
  echo "== $b"
  "./build/bench/$b" "$@"
done
echo "== engine at drawing scale (plain loops against indexed stages)"
./build/bench/engine_scale_bench
echo "== samples"
/usr/bin/python3 bench/outline_samples_bench.py build
echo "== DXF files (envline against ezdxf)"
/usr/bin/python3 bench/dxf_bench.py build
echo "== batch tasks (100 framed tools)"
/usr/bin/python3 bench/batch_bench.py build
echo "== outline methods (slabs against hatch)"
/usr/bin/python3 bench/hatch_vs_slabs.py build
echo "== robust and exact outline side by side"
/usr/bin/python3 bench/robust_outline_bench.py build
echo "== the robust core against GEOS and CGAL"
cmake --build build --target robust_core_bench
/usr/bin/python3 bench/robust_core_bench.py build
