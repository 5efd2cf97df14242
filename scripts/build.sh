#!/usr/bin/env bash
# Configures and builds envline (Release-with-debug-info, Ninja) into build/.
# ENVLINE_WERROR=ON makes warnings errors (scripts/test.sh does; users' builds do not).
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DENVLINE_WERROR="${ENVLINE_WERROR:-OFF}" >/dev/null
cmake --build build -j "$(nproc)"
