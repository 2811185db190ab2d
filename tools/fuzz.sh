#!/usr/bin/env bash
# Runs one fuzz target under libFuzzer for a given time.
#
#   tools/fuzz.sh TARGET [SECONDS [LIBFUZZER OPTIONS...]]
#                                       e.g. tools/fuzz.sh background_receive 600
#                                            tools/fuzz.sh rainer_index 600 -max_len=1024
#   tools/fuzz.sh --list
#
# Builds the targets with clang (address and undefined-behaviour checks on) in build-fuzz. New
# inputs go to build-fuzz/corpus/TARGET, starting from the checked-in corpus of
# tests/fuzz/corpus/TARGET; a finding is written to build-fuzz/findings/TARGET/ and ends the run
# with a non-zero status: add it to the checked-in corpus once it is fixed, so that every build
# replays it.
set -euo pipefail
cd "$(dirname "$0")/.."
top=$PWD
targets=$(sed -n '/^set(KESTROVA_FUZZ_TARGETS/,/^)/p' tests/fuzz/CMakeLists.txt | sed '1d;$d' | tr -d ' ')
if [ "${1:-}" = "--list" ] || [ $# -lt 1 ]; then
    echo "$targets"
    exit 0
fi
target=$1
seconds=${2:-600}
shift $(($# < 2 ? $# : 2))
echo "$targets" | grep -qx "$target" || { echo "unknown target $target; see --list" >&2; exit 2; }

tools/deps.sh
for p in clang libclang-rt-14-dev; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || {
        SUDO=""
        [ "$(id -u)" -ne 0 ] && SUDO="sudo"
        $SUDO apt-get update -qq
        DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq clang libclang-rt-14-dev
    }
done

BUILD_DIR=${FUZZ_BUILD_DIR:-build-fuzz}
flags="-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer -g"
cmake -S . -B "$BUILD_DIR" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER=clang++ \
    -DKESTROVA_BUILD_BENCH=OFF -DKESTROVA_LIBFUZZER=ON -DCMAKE_CXX_FLAGS="$flags" \
    -DCMAKE_EXE_LINKER_FLAGS="-fsanitize=address,undefined" >/dev/null
cmake --build "$BUILD_DIR" -j "${JOBS:-2}" --target "fuzz_$target"

corpus=$BUILD_DIR/corpus/$target
findings=$BUILD_DIR/findings/$target
mkdir -p "$corpus" "$findings"
export QT_QPA_PLATFORM=offscreen
# The targets rewrite their scratch files for every input; on a disk each rewrite would be
# flushed (the host does so on closing a file it truncated, and the rewrites sync), which makes
# the run wait on the disk. In memory they cost nothing.
if [ -z "${FUZZ_TMPDIR:-}" ] && [ -d /dev/shm ] && [ -w /dev/shm ]; then
    FUZZ_TMPDIR=/dev/shm
fi
[ -n "${FUZZ_TMPDIR:-}" ] && export TMPDIR=$FUZZ_TMPDIR
export ASAN_OPTIONS=detect_leaks=0:halt_on_error=1
export UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1
cd "$findings"
exec "$top/$BUILD_DIR/tests/fuzz/fuzz_$target" -max_total_time="$seconds" -rss_limit_mb=2048 -timeout=10 \
    -print_final_stats=1 "$@" "$top/$corpus" "$top/tests/fuzz/corpus/$target"
