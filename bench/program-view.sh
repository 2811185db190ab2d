#!/usr/bin/env bash
# Reading and drawing a program of about 100 MB (4.8 million lines of NC text) in the program
# view, against reading its bytes with cat, in the same run: time to the first complete frame,
# the longest the event loop waited meanwhile, peak memory per byte of program (over the same
# window without a program), and the time per frame while panning. Goals: the window never
# freezes, under 2 bytes of memory per byte of program, panning under 50 ms per frame.
#   LINES=n  lines of the program (default 4800000)   RUNS=n  runs of each, best taken (default 3)
set -euo pipefail
cd "$(dirname "$0")/.."
BUILD_DIR=${BUILD_DIR:-build}
lines=${LINES:-4800000}
runs=${RUNS:-3}
cmake --build "$BUILD_DIR" --target bench_program_view >/dev/null
tool=$PWD/$BUILD_DIR/bench/bench_program_view

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
printf '%s\r\n' "C: fixed $work" "******" >"$work/Devices.cfg"
cd "$work"

# Punching text: hits in rows on a 2500 x 1250 sheet with a tool change every 50 blocks, a
# positioning rapid and a block delete now and then, an arc or two, CR LF line ends.
awk -v n="$lines" 'BEGIN {
    srand(7); printf "%%\r\nO1234 (SHEET 2500X1250 T2)\r\n";
    for (i = 1; i <= n - 3; i++) {
        r = i % 50;
        if (r == 0) printf "N%d T%d (TOOL %d)\r\n", i * 10 % 100000, int(rand() * 40) + 1, int(rand() * 40) + 1;
        else if (r == 25) printf "/N%d G00 X%.3f Y%.3f\r\n", i * 10 % 100000, rand() * 2500, rand() * 1250;
        else if (r == 1) printf "N%d G01 X%.1f Y%.1f F%d\r\n", i * 10 % 100000, rand() * 2500, rand() * 1250, 2000 + int(rand() * 8) * 500;
        else if (r == 40) { d = 10 + rand() * 40; printf "N%d G91 G02 X%.1f Y0 R%.1f\r\nG90 G01\r\n", i * 10 % 100000, d, d / 2 + rand() * 30; }
        else printf "N%d X%.1f Y%.1f\r\n", i * 10 % 100000, rand() * 2500, rand() * 1250;
    }
    printf "M30\r\n";
}' >Work.prg
size=$(stat -c %s Work.prg)
echo "Program: $(wc -l <Work.prg) lines, $((size / 1048576)) MB"

ms() { /usr/bin/time -f '%e %M' "$@" 2>&1 >/dev/null | tail -n 1 | awk '{ printf "%d %d\n", $1 * 1000, $2 }'; }
cat_ms=$(for i in $(seq "$runs"); do ms cat Work.prg; done | sort -n | head -n 1 | cut -d' ' -f1)
idle_kb=$(for i in $(seq "$runs"); do ms "$tool" idle; done | sort -n -k2 | head -n 1 | cut -d' ' -f2)
best=""
for i in $(seq "$runs"); do
    out=$(/usr/bin/time -f 'peak %M' "$tool" view 2>&1)
    first=$(echo "$out" | awk '/^first-frame/ { print $2 }')
    if [ -z "$best" ] || [ "$first" -lt "$(echo "$best" | awk '/^first-frame/ { print $2 }')" ]; then best=$out; fi
done
echo "$best" | awk -v cat="$cat_ms" -v idle="$idle_kb" -v size="$size" '
    /^first-frame/ { first = $2 } /^first-paint/ { paint = $2 } /^longest-pause/ { pause = $2 } /^elements/ { elements = $2 }
    /^pan/ { mean = $2; p95 = $3; max = $4; frames = $5 } /^peak/ { peak = $2 }
    END {
        printf "cat >/dev/null        %6d ms\n", cat;
        printf "first complete frame  %6d ms = %.1fx cat   (%d elements, the frame itself %d ms; longest pause of the event loop while reading %d ms)\n",
               first, first / (cat ? cat : 1), elements, paint, pause;
        printf "peak memory           %6.1f MB, %.1f MB over the empty view = %.2f bytes per program byte (%.2f with the empty view)\n",
               peak / 1024, (peak - idle) / 1024, (peak - idle) * 1024 / size, peak * 1024 / size;
        printf "panning               %6.2f ms a frame on average, %.2f ms at the 95th percentile, %.2f ms at most (%d frames)\n",
               mean, p95, max, frames;
    }'
