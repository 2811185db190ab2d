#!/usr/bin/env bash
# The demo's DNC service: serves two machines of the demo installation, each with a simulated
# control of its own. RAINER answers on COM2 (the window's background port, which the window then
# leaves to the service) and LASER30 on COM3. Each control sends a program with its header
# lines, slowly enough to be watched in "DNC Monitor", asks the service for a program by name,
# then for the list of the machine's programs, and does so again every half minute.
# Starts the controls and the service in the background and prints their process ids.
#
#   tools/demo-dnc.sh BUILD_DIR DEMO_RUN_DIR
set -euo pipefail
build=$1
run=$2
program_dir=$run/c/Kestrova
devices=$program_dir/Devices.cfg
data=$program_dir/Setup/Data

# Dnc.cfg in the suite's line format; each served machine's own settings give its port.
printf 'Machine                                      : 2, Kestrova\r\nMachine                                      : 3\r\n******\r\n' \
    >"$program_dir/Dnc.cfg"
sed -i 's/^\(Port *: \).*/\12\r/' "$data/RAINER.cms"
sed -i 's/^\(Port *: \).*/\13\r/' "$data/LASER30.cms"

mkdir -p "$run/machine/dnc"
control() { # PORT MACHINE PROGRAM ASKED
    local port=$1 machine=$2 program=$3 asked=$4 dir=$run/machine/dnc
    printf '(PRG=%s)\r\n' "$asked" >"$dir/ask-$machine.nc"
    printf '(DIR)\r\n' >"$dir/list-$machine.nc"
    local commands=("wait-open 600000")
    for round in $(seq 20); do
        commands+=("sleep 2000"
            "send \"$program\" header=$machine,Kestrova,$asked chunk=16 pace=150 trailer=1,37"
            "sleep 3000"
            "send \"$dir/ask-$machine.nc\" trailer=1,37"
            "receive \"$dir/answer-$machine-$round.nc\" start=17 idle=1500"
            "sleep 3000"
            "send \"$dir/list-$machine.nc\" trailer=1,37"
            "receive \"$dir/list-$machine-$round.nc\" start=17 idle=1500"
            "sleep 20000")
    done
    "$build/tools/kestrova-machine" --devices "$devices" --port "$port" "${commands[@]}" >/dev/null &
    echo $!
    for _ in $(seq 100); do
        grep -qi "^COM$port port" "$devices" && return 0
        sleep 0.05
    done
    echo "demo-dnc: the simulated control on COM$port did not start" >&2
    return 1
}
control 2 RAINER "$run/machine/Louvre.nc" Louvre
control 3 LASER30 "$run/machine/Bracket.nc" Bracket

"$build/dnc/kestrova-dnc" "$program_dir" >>"$run/dnc.log" 2>&1 &
echo $!
