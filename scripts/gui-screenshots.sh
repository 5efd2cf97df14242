#!/usr/bin/env bash
# Runs the desktop window's end-to-end flow on a virtual screen (Xvfb) and
# keeps a picture of each step in DIR (default out/screenshots): the sample
# opened, the dialog, the selection prompt, the outline, the save dialog,
# the export message, and the batch dialog over a drawing without tasks and
# over the sample sheet after running its task. Needs a build (bash
# scripts/build.sh).
set -euo pipefail
cd "$(dirname "$0")/.."
out="${1:-out/screenshots}"
mkdir -p "$out"
display=":$((90 + RANDOM % 100))"
Xvfb "$display" -screen 0 1600x1000x24 -nolisten tcp >/dev/null 2>&1 &
xvfb=$!
trap 'kill "$xvfb" 2>/dev/null || true' EXIT
sleep 1
DISPLAY="$display" QT_QPA_PLATFORM=xcb ENVLINE_SCREENSHOTS="$out" build/tests/gui_window_tests
ls "$out"/*.png
