#!/bin/sh
# Makes docs/screenshots from the current build: every form in the states worth showing, in Chinese and
# English. Pictures that no row makes any more are removed.
# usage: scripts/screenshots.sh [BUILD_DIR]
set -eu
cd "$(dirname "$0")/.."
. scripts/deps.sh
install_deps

build=${1:-build}
[ -f "$build/CMakeCache.txt" ] || cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug > /dev/null
cmake --build "$build" --target orva_screenshots
tool="$build/tools/screenshots/orva_screenshots"

if [ -n "${DISPLAY:-}" ] || [ -n "${WAYLAND_DISPLAY:-}" ]; then
    "$tool" docs/screenshots
else
    xvfb-run -a -s "-screen 0 1280x800x24" "$tool" docs/screenshots
fi
