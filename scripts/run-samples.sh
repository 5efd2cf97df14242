#!/usr/bin/env bash
# Installs what is missing, builds, and runs the main job: the envelope line
# of every sample drawing, written to out/ (DXF, PNG and JSON).
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/build.sh
/usr/bin/python3 scripts/run_samples.py build out
