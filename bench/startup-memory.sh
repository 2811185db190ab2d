#!/usr/bin/env bash
# Start-up time (process start to the main window on the screen) and peak memory of the idle main
# window on the demo installation, each as a ratio against a minimal Qt Widgets window measured
# in the same run, under Xvfb. Goals: start-up within 1.5x, memory within 1.3x.
#   RUNS=n  runs of each program for the start-up median (default 15)
set -euo pipefail
cd "$(dirname "$0")/.."
if [ -z "${DISPLAY:-}" ]; then
    exec xvfb-run -a -s "-screen 0 1024x768x24" "$0" "$@"
fi
top=$PWD
BUILD_DIR=${BUILD_DIR:-build}
runs=${RUNS:-15}
cmake --build "$BUILD_DIR" --target bench_window_minimal bench_window_frontend >/dev/null
minimal=$top/$BUILD_DIR/bench/bench_window_minimal
frontend=$top/$BUILD_DIR/bench/bench_window_frontend

run=$(mktemp -d)
trap 'rm -rf "$run"' EXIT
cp -a demo/. "$run/"
mkdir -p "$run/floppy" "$run/usb"
printf '%s\r\n' "C: fixed $run/c" "A: removable $run/floppy" "E: removable $run/usb" "******" \
    >"$run/c/Kestrova/Devices.cfg"
# No machine control is on the demo's background port here: switch the background receive off.
sed -i '2s/: *2\r$/: 0\r/' "$run/c/Kestrova/Kestrova.cms"
cd "$run/c/Kestrova"

microseconds() {
    local start end
    start=$(date +%s%N)
    "$@" >/dev/null 2>&1
    end=$(date +%s%N)
    echo $(((end - start) / 1000))
}
peak_kb() { /usr/bin/time -f %M "$@" idle 2>&1 >/dev/null | tail -n 1; }
median() { sort -n | awk '{ v[NR] = $1 } END { print (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'; }

# One warm-up each, so that both start from the same file cache.
microseconds "$minimal" >/dev/null
microseconds "$frontend" >/dev/null
min_times=() fe_times=() min_mem=() fe_mem=()
for ((i = 0; i < runs; i++)); do
    min_times+=("$(microseconds "$minimal")")
    fe_times+=("$(microseconds "$frontend")")
done
for ((i = 0; i < 3; i++)); do
    min_mem+=("$(peak_kb "$minimal")")
    fe_mem+=("$(peak_kb "$frontend")")
done
t_min=$(printf '%s\n' "${min_times[@]}" | median)
t_fe=$(printf '%s\n' "${fe_times[@]}" | median)
m_min=$(printf '%s\n' "${min_mem[@]}" | median)
m_fe=$(printf '%s\n' "${fe_mem[@]}" | median)
awk -v tm="$t_min" -v tf="$t_fe" -v mm="$m_min" -v mf="$m_fe" -v n="$runs" 'BEGIN {
    printf "start-up to window shown (median of %d): baseline %.1f ms, front end %.1f ms, ratio %.2f (goal 1.5)\n", n, tm / 1000, tf / 1000, tf / tm
    printf "peak memory, idle window (median of 3):  baseline %d KiB, front end %d KiB, ratio %.2f (goal 1.3)\n", mm, mf, mf / mm
}'
