#!/usr/bin/env bash
# Builds Kestrova and runs every test (no display needed).
set -euo pipefail
cd "$(dirname "$0")/.."
tools/deps.sh
BUILD_DIR=${BUILD_DIR:-build}
# CI leaves the benchmarks out (KESTROVA_BUILD_BENCH=OFF): they are timed by hand, not run here.
cmake -S . -B "$BUILD_DIR" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKESTROVA_BUILD_BENCH="${KESTROVA_BUILD_BENCH:-ON}"
cmake --build "$BUILD_DIR"
export QT_QPA_PLATFORM=offscreen
ctest --test-dir "$BUILD_DIR" --output-on-failure -j "$(nproc)"
