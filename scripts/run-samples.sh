#!/usr/bin/env bash
# Installs what is missing, builds, and runs the main job. Until the outline
# command lands, the main job is the drawing host's self-check.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/build.sh
./build/app/cli/envline smoke
