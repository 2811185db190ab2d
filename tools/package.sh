#!/usr/bin/env bash
# Builds the Debian package of the program: build-package/kestrova_<version>_<arch>.deb.
# Install it with   sudo apt-get install ./build-package/kestrova_*.deb
set -euo pipefail
cd "$(dirname "$0")/.."
tools/deps.sh
BUILD_DIR=${PACKAGE_BUILD_DIR:-build-package}
cmake -S . -B "$BUILD_DIR" -G Ninja -DCMAKE_BUILD_TYPE=Release -DKESTROVA_BUILD_TESTS=OFF \
    -DKESTROVA_BUILD_BENCH=OFF >/dev/null
cmake --build "$BUILD_DIR" -j "${JOBS:-$(nproc)}" --target kestrova kestrova-dnc kestrova-standin kestrova-demo-programs
(cd "$BUILD_DIR" && cpack -G DEB)
ls "$BUILD_DIR"/kestrova_*.deb
