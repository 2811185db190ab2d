#!/usr/bin/env bash
# The DNC service under load: LINES pseudo-terminals (default 16), each with a simulated control
# sending PROGRAMS programs (default 100) of 20 KB with their header lines, all at once. Reported
# against the service with a single line, the background receive the window runs, measured in the
# same run with the same programs: total throughput, CPU seconds per MB of the service's process
# (goal: no more per MB than the single line), CPU while LINES lines listen idle for 10 s (goal:
# under 0.5 % of a core), and the resident memory sampled every tenth of a second over the run (goal:
# flat).
#   LINES=n PROGRAMS=n bench/dnc-load.sh
set -euo pipefail
cd "$(dirname "$0")/.."
top=$PWD
BUILD_DIR=${BUILD_DIR:-build}
lines=${LINES:-16}
programs=${PROGRAMS:-100}
cmake --build "$BUILD_DIR" --target kestrova kestrova-dnc kestrova-machine >/dev/null
machine=$top/$BUILD_DIR/tools/kestrova-machine
dnc=$top/$BUILD_DIR/dnc/kestrova-dnc
hz=$(getconf CLK_TCK)

work=$(mktemp -d)
pids=()
cleanup() {
    kill "${pids[@]}" 2>/dev/null || true
    wait 2>/dev/null || true
    rm -rf "$work"
}
trap cleanup EXIT

# One 20 KB program without "%", the trailer that ends it on the line.
awk 'BEGIN { for (i = 1; n < 20480; i++) { l = sprintf("N%d G01 X%.3f Y%.3f F2000 (BENCH)\r\n", i * 10, i * 1.5, i * 0.75); printf "%s", l; n += length(l) } }' \
    >"$work/program.nc"
bytes=$(stat -c %s "$work/program.nc")

# An installation of `count` machines M01.. on COM1.., all served.
lay_out() { # DIR COUNT
    local dir=$1 count=$2 n name
    QT_QPA_PLATFORM=offscreen "$top/$BUILD_DIR/Frontend/kestrova" --lay-out-demo "$dir" >/dev/null
    local program_dir=$dir/c/Kestrova data=$dir/c/Kestrova/Setup/Data
    : >"$program_dir/Machine.lst.new"
    : >"$program_dir/Dnc.cfg"
    for n in $(seq "$count"); do
        name=$(printf 'M%02d' "$n")
        printf '%d,"Bench machine %d","%s","Setman","P"\r\n' "$n" "$n" "$name" >>"$program_dir/Machine.lst.new"
        printf 'Machine                                      : %d\r\n' "$n" >>"$program_dir/Dnc.cfg"
        for file in "$data"/PUNCH25.*; do cp "$file" "$data/$name.${file##*.}"; done
        sed -i "s/^\\(Port *: \\).*/\\1$n\\r/" "$data/$name.cms"
        mkdir -p "$dir/c/Jobs/$name/Parts"
    done
    printf '******\r\n' >>"$program_dir/Machine.lst.new"
    printf '******\r\n' >>"$program_dir/Dnc.cfg"
    mv "$program_dir/Machine.lst.new" "$program_dir/Machine.lst"
    # The window's background port stays off: the service has the lines.
    sed -i '2s/: *2\r$/: 0\r/' "$program_dir/Kestrova.cms"
}

cpu_ticks() { awk '{ print $14 + $15 }' "/proc/$1/stat"; }
rss_kb() { awk '/^VmRSS/ { print $2 }' "/proc/$1/status"; }

# Runs one load: prints "seconds cpu_seconds rss_min rss_max idle_cpu_percent rss_quarter rss_end".
load() { # COUNT
    local count=$1 dir=$work/run-$1 n name commands service start end before after idle0 idle1
    lay_out "$dir" "$count"
    local devices=$dir/c/Kestrova/Devices.cfg controls=()
    for n in $(seq "$count"); do
        name=$(printf 'M%02d' "$n")
        commands=("wait-open 60000" "sleep 200")
        for k in $(seq "${PROGRAMS_ON_LINE:-$programs}"); do
            commands+=("send \"$work/program.nc\" header=$name,Parts,P$k trailer=1,37")
        done
        commands+=("wait-close")
        "$machine" --devices "$devices" --port "$n" "${commands[@]}" >/dev/null &
        controls+=($!)
        pids+=($!)
        until grep -qi "^COM$n port" "$devices" 2>/dev/null; do sleep 0.02; done
    done
    "$dnc" "$dir/c/Kestrova" 2>"$dir/dnc.log" &
    service=$!
    pids+=("$service")
    until grep -q serving "$dir/dnc.log" 2>/dev/null; do sleep 0.02; done
    before=$(cpu_ticks "$service")
    start=$(date +%s%N)
    local expected=$((count * ${PROGRAMS_ON_LINE:-$programs})) rss_min=999999999 rss_max=0 rss rss_quarter=0 filed=0
    while [ "$filed" -lt "$expected" ]; do
        sleep 0.1
        rss=$(rss_kb "$service")
        ((rss < rss_min)) && rss_min=$rss
        ((rss > rss_max)) && rss_max=$rss
        [ -f "$dir/c/Kestrova/Transfer.log" ] &&
            filed=$(tr -d '\r' <"$dir/c/Kestrova/Transfer.log" | grep -c ' received$' || true)
        # Once the lines are busy, memory must stay where it is until the end.
        ((rss_quarter == 0 && filed * 4 >= expected)) && rss_quarter=$rss
    done
    end=$(date +%s%N)
    after=$(cpu_ticks "$service")
    local rss_end
    rss_end=$(rss_kb "$service")
    # Every line listening, nothing arriving.
    idle0=$(cpu_ticks "$service")
    sleep 10
    idle1=$(cpu_ticks "$service")
    kill -TERM "$service"
    wait "$service" || true
    kill "${controls[@]}" 2>/dev/null || true
    # Every program filed whole.
    for n in $(seq "$count"); do
        name=$(printf 'M%02d' "$n")
        for k in 1 "${PROGRAMS_ON_LINE:-$programs}"; do
            cmp -s "$work/program.nc" "$dir/c/Jobs/$name/Parts/P$k.prg" ||
                { echo "dnc-load: $name P$k is not the program sent" >&2; exit 1; }
        done
    done
    awk -v ns=$((end - start)) -v cpu=$((after - before)) -v idle=$((idle1 - idle0)) -v hz="$hz" \
        -v lo="$rss_min" -v hi="$rss_max" -v q="$rss_quarter" -v e="$rss_end" \
        'BEGIN { printf "%.3f %.3f %d %d %.3f %d %d\n", ns / 1e9, cpu / hz, lo, hi, idle / hz / 10 * 100, q, e }'
}

# The single line takes as many programs as all the lines together: the same megabytes, measured
# as precisely.
read -r one_s one_cpu _ _ _ _ _ < <(PROGRAMS_ON_LINE=$((programs * lines)) load 1)
read -r all_s all_cpu all_lo all_hi all_idle all_quarter all_end < <(load "$lines")
awk -v b="$bytes" -v p="$programs" -v n="$lines" \
    -v s1="$one_s" -v c1="$one_cpu" -v sn="$all_s" -v cn="$all_cpu" -v lo="$all_lo" -v hi="$all_hi" \
    -v idle="$all_idle" -v q="$all_quarter" -v e="$all_end" 'BEGIN {
    mb1 = b * p * n / 1e6; mbn = b * p * n / 1e6
    printf "programs of %d bytes, %d per line on %d lines, %d on the single line\n", b, p, n, p * n
    printf "1 line:   %.1f MB in %.2f s = %.2f MB/s, %.3f CPU s = %.4f CPU s/MB\n", mb1, s1, mb1 / s1, c1, c1 / mb1
    printf "%d lines: %.1f MB in %.2f s = %.2f MB/s, %.3f CPU s = %.4f CPU s/MB\n", n, mbn, sn, mbn / sn, cn, cn / mbn
    printf "CPU per MB, %d lines against 1 line: %.2fx (goal: at most 1.00x)\n", n, (cn / mbn) / (c1 / mb1)
    printf "idle, %d lines listening: %.2f %% of a core over 10 s (goal: under 0.5 %%)\n", n, idle
    printf "resident memory over the run: %d to %d KB; a quarter through %d KB, at the end %d KB (%.2fx; goal: flat)\n", lo, hi, q, e, e / q
}'
