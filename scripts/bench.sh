#!/usr/bin/env bash
# Builds and runs the benchmarks.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/build.sh
./build/bench/host_bench "$@"
