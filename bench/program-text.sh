#!/usr/bin/env bash
# Strip Numbers and Remove Spaces on a program of about 100 MB (4 million lines of NC text), and
# Renumber on 32,000 lines (start 0, increment 1), each against cp of the same file and a
# one-line awk doing the same change, measured in the same run; with the peak resident memory
# of each rewrite. Goals: within 2.5x of cp, faster than awk, memory under 64 MB whatever the size.
#   LINES=n  lines of the large program (default 4800000, about 100 MB)   RUNS=n  runs of each, best taken (default 3)
# The machine may be shared: elapsed time is what the goals name, processor time shows the work
# itself when other programs compete for the processors.
set -euo pipefail
cd "$(dirname "$0")/.."
BUILD_DIR=${BUILD_DIR:-build}
lines=${LINES:-4800000}
runs=${RUNS:-3}
cmake --build "$BUILD_DIR" --target bench_program_text >/dev/null
tool=$PWD/$BUILD_DIR/bench/bench_program_text

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
printf '%s\r\n' "C: fixed $work" "******" >"$work/Devices.cfg"
cd "$work"

# Realistic punching text, the same every run: block numbers, moves, tool changes, comments,
# a block delete now and then, CR LF line ends.
make_program() {
    awk -v n="$1" 'BEGIN {
        srand(7); printf "%%\r\nO1234 (SHEET 2500X1250 T2)\r\n";
        for (i = 1; i <= n - 3; i++) {
            r = i % 50;
            if (r == 0) printf "N%d T%d (TOOL %d)\r\n", i * 10 % 100000, int(rand() * 40) + 1, int(rand() * 40) + 1;
            else if (r == 25) printf "/N%d G00 X%.3f Y%.3f\r\n", i * 10 % 100000, rand() * 2500, rand() * 1250;
            else if (r == 1) printf "N%d G01 X%.1f Y%.1f F%d\r\n", i * 10 % 100000, rand() * 2500, rand() * 1250, 2000 + int(rand() * 8) * 500;
            else printf "N%d X%.1f Y%.1f\r\n", i * 10 % 100000, rand() * 2500, rand() * 1250;
        }
        printf "M30\r\n";
    }' >"$2"
}

# Elapsed and processor milliseconds of a command, and its peak resident memory in kB.
# Each command runs $repeat times in a row (the same rewrite applies again to its own result).
timed() { /usr/bin/time -f '%e %U %S %M' sh -c 'for i in $(seq '"$repeat"'); do "$@"; done' sh "$@" 2>&1 >/dev/null |
    tail -n 1 | awk -v r="$repeat" '{ printf "%d %d %d\n", $1 * 1000 / r, ($2 + $3) * 1000 / r, $4 }'; }
best() { sort -n -k1,1 | head -n 1; } # the run least disturbed by the rest of the machine

measure() { # label source tool-op awk-program
    local label=$1 source=$2 op=$3 awkprog=$4 cp awk ours i
    cp=$(for i in $(seq "$runs"); do rm -f Copy.prg; timed cp "$source" Copy.prg; done | best)
    awk=$(for i in $(seq "$runs"); do timed sh -c "awk '$awkprog' '$source' >Awk.prg"; done | best)
    cp "$source" Work.prg
    ours=$(for i in $(seq "$runs"); do timed "$tool" "$op"; done | best)
    echo "$label|$cp|$awk|$ours" | awk -F'|' '{
        split($2, c, " "); split($3, a, " "); split($4, o, " ");
        printf "%-15s elapsed: cp %5d  awk %5d  ours %5d ms = %5.2fx cp %5.2fx awk | cpu: cp %5d  awk %5d  ours %5d ms | peak %5.1f MB\n",
               $1, c[1], a[1], o[1], o[1] / (c[1] ? c[1] : 1), o[1] / (a[1] ? a[1] : 1), c[2], a[2], o[2], o[3] / 1024 }'
}

make_program "$lines" Large.prg
make_program 32001 Small.prg
echo "Large program: $(wc -l <Large.prg) lines, $(($(stat -c %s Large.prg) / 1048576)) MB; small: $(wc -l <Small.prg) lines"
repeat=1
measure "Strip Numbers" Large.prg strip '{ sub(/^\/? *[Nn][Nn0-9]* */, ""); print }'
measure "Remove Spaces" Large.prg spaces '{ gsub(/ /, ""); if (length($0)) print }'
repeat=30 # a small program: times are per run of 30 in a row
measure "Renumber 32000" Small.prg renumber '{ sub(/^N[N0-9]* */, ""); printf "N%d %s\n", NR - 1, $0 }'
