#!/bin/sh
# Builds the console and runs every test, in four phases:
#   1. plain: a debug build and every test;
#   2. sanitizers: the same under AddressSanitizer and UndefinedBehaviorSanitizer, less the link soak;
#   3. fuzzing: each fuzz target for 30 seconds, its progress in a log file;
#   4. package: the Debian package, checked by lintian.
# Each test, fuzz target and the package count once in the closing line "N passed, N failed".
set -u
cd "$(dirname "$0")/.."
. scripts/deps.sh

jobs=$(nproc)
passed=0
failed=0
heading() { printf '\n==== %s\n' "$*"; }
count() { passed=$((passed + $1)); failed=$((failed + $2)); }
finish() {
    printf '\n%s passed, %s failed\n' "$passed" "$failed"
    [ "$failed" -eq 0 ]
    exit
}

# A build that fails counts as one failure and ends the run: nothing after it could be trusted.
build() {
    cmake -S . -B "$1" -G Ninja -DCMAKE_BUILD_TYPE=Debug "$2" > /dev/null && cmake --build "$1" -j "$jobs" && return 0
    echo "The build in $1 failed."
    count 0 1
    finish
}

# Runs ctest in a build folder and adds its figures; ctest prints the output of every failed test.
run_ctest() {
    log="$1/ctest.log"
    (cd "$1" && ctest --output-on-failure -j "$jobs") > "$log" 2>&1
    grep -v '^ *Start ' "$log" | grep -vE '^ *[0-9]+/[0-9]+ Test +#[0-9]+: .* Passed' || true
    line=$(grep -E 'tests passed, [0-9]+ tests? failed out of [0-9]+' "$log" | tail -n 1)
    if [ -z "$line" ]; then
        echo "ctest in $1 gave no summary (see $log)."
        count 0 1
        return
    fi
    bad=$(echo "$line" | sed -E 's/.* ([0-9]+) tests? failed out of ([0-9]+).*/\1/')
    all=$(echo "$line" | sed -E 's/.* failed out of ([0-9]+).*/\1/')
    count $((all - bad)) "$bad"
}

heading "Packages"
install_deps
# The list names only what dpkg reports as installed, so a second run installs nothing.
for p in $ORVA_PACKAGES; do
    orva_have_package "$p" && continue
    echo "Not seen as installed after the install: $p (a virtual name sends every run to apt-get)."
    count 0 1
done

heading "1/4 Plain build and tests"
build build -DORVA_SANITIZE=OFF
run_ctest build

heading "2/4 Sanitizers (ASan + UBSan): every test but tst_link_soak, whose 200,000 round trips take too long there"
export ASAN_SYMBOLIZER_PATH="${ASAN_SYMBOLIZER_PATH:-$(command -v llvm-symbolizer-14 || command -v llvm-symbolizer || true)}"
build build-sanitize -DORVA_SANITIZE=ON
run_ctest build-sanitize

heading "3/4 Fuzzing: 30 s per target; progress in build-fuzz/fuzz_<target>.log"
for t in reply profile keyline textfile records; do
    if ORVA_FUZZ_TARGETS=$t ORVA_FUZZ_LOG=1 scripts/fuzz.sh 30; then
        echo "fuzz_$t: no finding"
        count 1 0
    else
        count 0 1
    fi
done

heading "4/4 Debian package"
if scripts/package.sh; then count 1 0; else count 0 1; fi

finish
