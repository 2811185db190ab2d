#!/bin/sh
# DEMO STAND-IN, not the real program: part of the Kestrova demo installation.
# Shows which program was started, then ends when the window is closed.
here=$(dirname "$0")
if [ -x "$here/kestrova-standin" ]; then exec "$here/kestrova-standin" "$1"; fi
echo "Kestrova demo stand-in: $1 (started, ending in 3 s)" >&2
sleep 3
