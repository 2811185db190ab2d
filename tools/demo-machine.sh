#!/usr/bin/env bash
# The demo's machine control: a simulated one on a pseudo-terminal, entered as COM2 in the
# demo's device map. Once the front end has opened its background port it sends a sample
# program with the three header lines and the "%" trailer of the demo's "Kestrova.cms", then
# stays on the line until the front end closes it, and again each time it opens it anew (a
# change of machine). Runs in the background; prints its process id once the device map holds
# the port, so that the caller can end it.
#
#   tools/demo-machine.sh BUILD_DIR DEVICES_CFG PROGRAM [MACHINE,DIRECTORY,NAME]
set -euo pipefail
build=$1
devices=$2
program=$3
header=${4:-PUNCH25,Parts,Louvre}
again=()
for _ in $(seq 100); do again+=("wait-open" "wait-close"); done
"$build/tools/kestrova-machine" --devices "$devices" --port 2 \
    "wait-open 600000" "sleep 1500" "send \"$program\" header=$header trailer=1,37" "wait-close" \
    "${again[@]}" >/dev/null &
machine=$!
# The device map must hold the port before the front end reads it.
for _ in $(seq 100); do
    if grep -qi '^COM2 port' "$devices" 2>/dev/null; then
        echo "$machine"
        exit 0
    fi
    kill -0 "$machine" 2>/dev/null || break
    sleep 0.05
done
kill "$machine" 2>/dev/null || true
echo "demo-machine: the simulated machine did not start" >&2
exit 1
