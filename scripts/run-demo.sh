#!/bin/sh
# Builds the console and starts it against the bundled controller simulator, in an application folder
# of its own (demo/) whose Com2 leads to the simulator. The access code is 48213.
set -eu
cd "$(dirname "$0")/.."
. scripts/deps.sh
install_deps

cmake -S . -B build-release -G Ninja -DCMAKE_BUILD_TYPE=Release
cmake --build build-release --target ORVAPLCCOM plcsim-run

demo="$PWD/demo"
mkdir -p "$demo/Data" "$demo/Lang"
cp build-release/src/app/ORVAPLCCOM "$demo/"
cp build-release/src/app/Lang/PLCCOMLANGUAGE.ini "$demo/Lang/"
printf '[ComPorts]\r\nCom2=%s\r\n' "$demo/ttyPLC" > "$demo/Data/ComPorts.ini"

rm -f "$demo/ttyPLC"
build-release/tools/plcsim/plcsim --link "$demo/ttyPLC" > "$demo/plcsim.out" &
sim=$!
trap 'kill $sim 2>/dev/null || true' EXIT INT TERM
i=0
while [ ! -e "$demo/ttyPLC" ]; do
    i=$((i + 1)); [ $i -lt 100 ] || { echo "the simulator did not start" >&2; exit 1; }
    sleep 0.1
done
echo "Simulator on $(head -n 1 "$demo/plcsim.out"), reached as Com2 by the console."

if [ -n "${DISPLAY:-}" ] || [ -n "${WAYLAND_DISPLAY:-}" ]; then
    "$demo/ORVAPLCCOM"
else
    echo "No display: the console runs on a virtual one (xvfb-run)."
    xvfb-run -a -s "-screen 0 1280x800x24" "$demo/ORVAPLCCOM"
fi
