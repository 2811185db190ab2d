#!/usr/bin/env bash
# Runs the front end on the demo installation of demo/.
#
# The demo is copied to ./demo-run (afresh on every run, so that it always starts as delivered;
# with --keep an existing copy is used as it was left). The copy gets its device map: C: is
# demo-run/c, A: (a floppy) demo-run/floppy, E: (a stick) demo-run/usb. A simulated machine
# control (tools/demo-machine.sh) takes the demo's background port, COM2, and sends a sample
# program shortly after the front end has opened it; another takes the machines' send and
# receive port, COM1, and serves the send and receive forms. Then kestrova starts in the copy's
# program directory, C:\Kestrova. The sibling programs there are demo stand-ins. The machines end
# with the front end.
#
# With --service the DNC service runs beside the window (tools/demo-dnc.sh): it serves RAINER on
# COM2 and LASER30 on COM3, each with a control that sends programs and asks for programs; the
# window leaves COM2 to it, and Communications > DNC Monitor shows both lines live. The service's
# own messages go to demo-run/dnc.log.
set -euo pipefail
cd "$(dirname "$0")/.."
top=$PWD
keep=0
service=0
for option in "$@"; do
    case $option in
    --keep) keep=1 ;;
    --service) service=1 ;;
    *)
        echo "usage: tools/run-demo.sh [--keep] [--service]" >&2
        exit 2
        ;;
    esac
done

tools/deps.sh
BUILD_DIR=${BUILD_DIR:-build}
cmake -S . -B "$BUILD_DIR" -G Ninja >/dev/null
cmake --build "$BUILD_DIR" --target kestrova kestrova-standin kestrova-machine kestrova-dnc

run=$top/demo-run
[ "$keep" -eq 0 ] && rm -rf "$run"
# The program lays the demo out itself (as the installed program does on request): the suite on
# C:, a floppy and a stick, the stand-in, the device map; an existing copy is kept as it was.
"$BUILD_DIR/Frontend/kestrova" --lay-out-demo "$run" >/dev/null
tools/demo-programs.sh "$run/c"

if [ "$service" -eq 1 ]; then
    # The service's controls and the service itself, in place of the background port's machine.
    machine=$(tools/demo-dnc.sh "$top/$BUILD_DIR" "$run" | tr '\n' ' ')
else
    machine=$(tools/demo-machine.sh "$top/$BUILD_DIR" "$run/c/Kestrova/Devices.cfg" "$run/machine/Louvre.nc")
fi
# The machines' send and receive port, COM1: a simulated control that takes what the send form
# sends (recorded as demo-run/machine/received-<n>.nc) and gives a program to the receive form.
"$top/$BUILD_DIR/tools/kestrova-machine" --devices "$run/c/Kestrova/Devices.cfg" --port 1 \
    "serve \"$run/machine/Bracket.nc\" \"$run/machine/received\"" >/dev/null &
control=$!
# shellcheck disable=SC2086 # $machine may hold several process ids
trap 'kill $machine "$control" 2>/dev/null || true' EXIT
for _ in $(seq 100); do
    grep -qi '^COM1 port' "$run/c/Kestrova/Devices.cfg" && break
    sleep 0.05
done

cd "$run/c/Kestrova"
"$top/$BUILD_DIR/Frontend/kestrova" &
front=$!
# Asked to end, the front end closes as the operator closes it (it ignores Ctrl-C as a
# background job of this script).
trap 'kill -TERM "$front" 2>/dev/null || true' INT TERM HUP
status=0
while kill -0 "$front" 2>/dev/null; do
    wait "$front" && status=0 || status=$?
done
exit "$status"
