#!/usr/bin/env bash
# Configures and builds envline (Release-with-debug-info, Ninja) into build/.
# ENVLINE_WERROR=ON makes warnings errors (scripts/test.sh does; users' builds do not).
# Unset, the build folder keeps what it was configured with, so running the
# samples after the tests does not rebuild everything.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
werror=()
[ -n "${ENVLINE_WERROR:-}" ] && werror=(-DENVLINE_WERROR="$ENVLINE_WERROR")
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "${werror[@]}" >/dev/null
cmake --build build -j "$(nproc)"
