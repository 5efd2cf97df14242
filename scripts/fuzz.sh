#!/usr/bin/env bash
# Builds the drawing reader's libFuzzer target with clang and runs it.
# usage: scripts/fuzz.sh [SECONDS]   (default 600); findings go to fuzz-findings/
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-600}"
cmake -S . -B build-fuzz -G Ninja -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DENVLINE_FUZZ=ON -DENVLINE_BUILD_TESTS=OFF -DENVLINE_BUILD_BENCH=OFF >/dev/null
cmake --build build-fuzz --target dxf_reader_fuzz
mkdir -p build-fuzz/corpus fuzz-findings
cp -n tests/fuzz/seeds/* build-fuzz/corpus/ 2>/dev/null || true
./build-fuzz/tests/fuzz/dxf_reader_fuzz -max_total_time="$seconds" -max_len=65536 -timeout=10 \
  -artifact_prefix=fuzz-findings/ build-fuzz/corpus
