#!/usr/bin/env bash
# Installs what building, running and testing Kestrova needs on Debian 12, where missing.
set -euo pipefail
packages=(cmake ninja-build g++ pkg-config qt6-base-dev qt6-serialport-dev libsystemd-dev libgensio-dev libgtest-dev libbenchmark-dev libdtl-dev xvfb xauth ser2net)
missing=()
for p in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
    echo "Installing: ${missing[*]}"
    SUDO=""
    [ "$(id -u)" -ne 0 ] && SUDO="sudo"
    $SUDO apt-get update -qq
    DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq "${missing[@]}"
fi
