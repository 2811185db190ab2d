#!/usr/bin/env bash
# Takes docs/main-window.png: the main window on a fresh copy of the demo installation, with the
# "&Setup" menu open, under Xvfb.
set -euo pipefail
cd "$(dirname "$0")/.."
top=$PWD
BUILD_DIR=${BUILD_DIR:-build}
cmake -S . -B "$BUILD_DIR" -G Ninja >/dev/null
cmake --build "$BUILD_DIR" --target kestrova-shot

run=$(mktemp -d)
trap 'rm -rf "$run"' EXIT
cp -a demo/. "$run/"
mkdir -p "$run/floppy" "$run/usb" docs
printf '%s\r\n' "C: fixed $run/c" "A: removable $run/floppy" "E: removable $run/usb" "******" \
    >"$run/c/Kestrova/Devices.cfg"
# No machine control is on the demo's background port here: switch the background receive off.
sed -i '2s/: *2\r$/: 0\r/' "$run/c/Kestrova/Kestrova.cms"
cd "$run/c/Kestrova"
xvfb-run -a -s "-screen 0 1024x640x24" "$top/$BUILD_DIR/Frontend/kestrova-shot" "$top/docs/main-window.png"
echo "written: docs/main-window.png"
