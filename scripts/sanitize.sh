#!/usr/bin/env bash
# The sanitizer job: builds everything with AddressSanitizer and
# UndefinedBehaviorSanitizer (float-cast-overflow included, every finding
# fatal) into build-asan/ and runs the tests there. Developers run it before
# closing a piece of work; CI runs it beside scripts/test.sh.
# usage: scripts/sanitize.sh [CTEST_REGEX]   (default: every test)
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
flags="-fsanitize=address,undefined,float-cast-overflow -fno-sanitize-recover=all -fno-omit-frame-pointer"
cmake -S . -B build-asan -G Ninja -DCMAKE_BUILD_TYPE=Debug -DENVLINE_WERROR=ON -DENVLINE_BUILD_BENCH=OFF \
  -DCMAKE_CXX_FLAGS="$flags" -DCMAKE_EXE_LINKER_FLAGS="-fsanitize=address,undefined" >/dev/null
cmake --build build-asan -j "$(nproc)"
# Open CASCADE sets up its STEP translator once per process and never frees
# it: those leaks are suppressed, nothing else. Its libraries keep no frame
# pointers, so allocations are traced with the slow unwinder, or their
# stacks stop inside Open CASCADE's allocator and no suppression matches.
export LSAN_OPTIONS="suppressions=$PWD/scripts/lsan.supp:print_suppressions=0"
export ASAN_OPTIONS="detect_leaks=1:abort_on_error=1:strict_string_checks=1:fast_unwind_on_malloc=0"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
if [ $# -gt 0 ]; then
  ctest --test-dir build-asan --output-on-failure -j "$(nproc)" -R "$1"
else
  ctest --test-dir build-asan --output-on-failure -j "$(nproc)"
fi
