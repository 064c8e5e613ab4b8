#!/bin/sh
# Builds the fuzz targets of fuzz/ with clang (libFuzzer, AddressSanitizer, UndefinedBehaviorSanitizer)
# and runs each over its seed corpus in fuzz/corpus/<target>.
#
#   scripts/fuzz.sh [SECONDS] [libFuzzer options...]
#
# SECONDS per target (default 60; 0: no time limit, for example with -runs=10000000). Inputs found on the
# way go to a scratch folder: the corpus in the repository changes only by hand. A crash stops the script
# and leaves its input as crash-* in the current folder. ORVA_FUZZ_BUILD names the build folder.
set -eu
cd "$(dirname "$0")/.."
seconds=${1:-60}
[ $# -gt 0 ] && shift
build=${ORVA_FUZZ_BUILD:-build-fuzz}
targets=${ORVA_FUZZ_TARGETS:-"reply profile keyline textfile records"}

CC=clang CXX=clang++ cmake -S fuzz -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$build" -j "$(nproc)"

for t in $targets; do
    scratch=$(mktemp -d)
    echo "== fuzz_$t: ${seconds}s"
    # Qt's messages about the missing display and the like are not findings.
    QT_QPA_PLATFORM=offscreen QT_LOGGING_RULES='*=false' \
        "$build/fuzz_$t" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2560 -print_final_stats=1 \
        "$@" "$scratch" "fuzz/corpus/$t"
    rm -rf "$scratch"
done
