#!/usr/bin/env bash
# Builds the tests with AddressSanitizer and UndefinedBehaviorSanitizer in a build directory of
# their own and runs them. Any report ends the test that made it, so CI fails on it.
#
#   tools/sanitize.sh            the tests of the parsers, the files and the serial lines
#   tools/sanitize.sh --all      every test
#
# The selection is what fits CI's time on two cores beside the normal build; the tests left out
# are the forms and the main window, which drive Qt's widgets more than the program's own code.
set -euo pipefail
cd "$(dirname "$0")/.."
tools/deps.sh
BUILD_DIR=${SANITIZE_BUILD_DIR:-build-sanitize}
JOBS=${JOBS:-$(nproc)}
selection=(test_platform test_settings test_filestore test_comms test_comms_transfer test_comms_pty
    test_comms_transfer_pty test_dnc_pty test_exchange test_editing test_fuzz_replay)
[ "${1:-}" = "--all" ] && selection=()

flags="-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer"
cmake -S . -B "$BUILD_DIR" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DKESTROVA_BUILD_BENCH=OFF \
    -DCMAKE_CXX_FLAGS="$flags" -DCMAKE_EXE_LINKER_FLAGS="$flags" >/dev/null

export ASAN_OPTIONS=abort_on_error=0:halt_on_error=1:detect_leaks=1:strict_string_checks=1:detect_stack_use_after_return=1
export UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1
export LSAN_OPTIONS=suppressions=$PWD/tools/sanitize.supp:print_suppressions=0
export QT_QPA_PLATFORM=offscreen

if [ ${#selection[@]} -eq 0 ]; then
    cmake --build "$BUILD_DIR" -j "$JOBS"
    ctest --test-dir "$BUILD_DIR" --output-on-failure -j "$JOBS"
else
    # Only the test programs of the selection that exist in this tree, and what they run.
    targets=()
    for t in "${selection[@]}"; do
        grep -rqs "kestrova_test($t\b" tests --include=CMakeLists.txt && targets+=("$t")
    done
    cmake --build "$BUILD_DIR" -j "$JOBS" --target "${targets[@]}" kestrova-machine kestrova-dnc
    label=$(IFS='|'; echo "^(${targets[*]})\$")
    ctest --test-dir "$BUILD_DIR" --output-on-failure -j "$JOBS" -L "$label"
fi
