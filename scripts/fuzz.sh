#!/bin/sh
# Builds the fuzz targets of fuzz/ with clang (libFuzzer, AddressSanitizer, UndefinedBehaviorSanitizer)
# and runs each over its seed corpus in fuzz/corpus/<target>.
#
#   scripts/fuzz.sh [SECONDS] [libFuzzer options...]
#
# SECONDS per target (default 60; 0: no time limit, for example with -runs=10000000). Inputs found on the
# way go to a scratch folder: the corpus in the repository changes only by hand. A crash stops the script
# and leaves its input as crash-* in the current folder. ORVA_FUZZ_BUILD names the build folder.
# With ORVA_FUZZ_LOG set, the build and libFuzzer's progress go to <build>/fuzz_<target>.log, and only a
# finding is shown, whole, with its stack trace (llvm-symbolizer names the functions).
set -eu
cd "$(dirname "$0")/.."
seconds=${1:-60}
[ $# -gt 0 ] && shift
build=${ORVA_FUZZ_BUILD:-build-fuzz}
targets=${ORVA_FUZZ_TARGETS:-"reply profile keyline textfile records"}

export ASAN_SYMBOLIZER_PATH="${ASAN_SYMBOLIZER_PATH:-$(command -v llvm-symbolizer-14 || command -v llvm-symbolizer || true)}"
mkdir -p "$build"
buildlog=/dev/stdout
[ -n "${ORVA_FUZZ_LOG:-}" ] && buildlog="$build/build.log"
if ! { CC=clang CXX=clang++ cmake -S fuzz -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null &&
       cmake --build "$build" -j "$(nproc)"; } > "$buildlog" 2>&1; then
    [ -n "${ORVA_FUZZ_LOG:-}" ] && cat "$buildlog"
    echo "The fuzz targets did not build."
    exit 1
fi

for t in $targets; do
    scratch=$(mktemp -d)
    log=/dev/stdout
    [ -n "${ORVA_FUZZ_LOG:-}" ] && log="$build/fuzz_$t.log"
    echo "== fuzz_$t: ${seconds}s"
    # Qt's messages about the missing display and the like are not findings.
    if ! QT_QPA_PLATFORM=offscreen QT_LOGGING_RULES='*=false' \
        "$build/fuzz_$t" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2560 -print_final_stats=1 \
        "$@" "$scratch" "fuzz/corpus/$t" > "$log" 2>&1; then
        rm -rf "$scratch"
        if [ -n "${ORVA_FUZZ_LOG:-}" ]; then
            # The finding: from the first report line to the end, without the progress before it.
            first=$(grep -nE '^==[0-9]+==|runtime error|deadly signal|^ERROR: libFuzzer|check failed' "$log" | head -n 1 | cut -d: -f1)
            tail -n +"${first:-1}" "$log"
        fi
        echo "fuzz_$t: a finding (input left as crash-* or leak-* in $(pwd))"
        exit 1
    fi
    rm -rf "$scratch"
done
