#!/bin/sh
# Builds the console and runs every test twice: a plain build, then one under AddressSanitizer and
# UndefinedBehaviorSanitizer; then a short run of each fuzz target, and the Debian package checked by lintian.
set -eu
cd "$(dirname "$0")/.."
. scripts/deps.sh
install_deps
# Set up now, the next run installs nothing: every name of the list is one the check sees as installed
# (a virtual name never is, and would send each run to apt-get).
for p in $ORVA_PACKAGES; do
    orva_have_package "$p" || { echo "not seen as installed after setting up: $p" >&2; exit 1; }
done

jobs=$(nproc)
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=Debug
cmake --build build -j "$jobs"
(cd build && ctest --output-on-failure -j "$jobs")

cmake -S . -B build-sanitize -G Ninja -DCMAKE_BUILD_TYPE=Debug -DORVA_SANITIZE=ON
cmake --build build-sanitize -j "$jobs"
(cd build-sanitize && ctest --output-on-failure -j "$jobs")
scripts/fuzz.sh 30
scripts/package.sh
