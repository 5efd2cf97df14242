#!/usr/bin/env bash
# Installs what is missing, builds (warnings are errors here), and runs every test.
set -euo pipefail
cd "$(dirname "$0")/.."
ENVLINE_WERROR=ON bash scripts/build.sh
ctest --test-dir build --output-on-failure -j "$(nproc)"
