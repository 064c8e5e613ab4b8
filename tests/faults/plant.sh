#!/bin/sh
# Plants each fault of faults.tsv in turn, builds, runs the plain suite and prints which tests fail on it:
# a row with no failing test is a fault the tests do not catch. Run from a clean checkout; each file is
# restored from git after its run, also when the script is stopped. A test still running after two
# minutes counts as failing: a fault that makes the link wait shows as a hang.
#   tests/faults/plant.sh [BUILD_DIR] [NAME...]
# FAULT_TESTS, a ctest regular expression, builds and runs only those tests (a quicker look).
set -u
cd "$(dirname "$0")/../.."
build=${1:-build}
[ $# -gt 0 ] && shift
current=""
trap '[ -n "$current" ] && git checkout -q -- "$current"' EXIT INT TERM
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DORVA_TEST_TIMEOUT=120 > /dev/null || exit 2
targets=""
[ -n "${FAULT_TESTS:-}" ] &&
    targets=$(cd "$build" && ctest -N -R "$FAULT_TESTS" | sed -n 's/^ *Test *#[0-9]*: \(tst_[^ ]*\|test_[^ ]*\|plcsim_[^ ]*\)$/\1/p' | tr '\n' ' ')
grep -v '^#' tests/faults/faults.tsv | while IFS="$(printf '\t')" read -r name file subst; do
    [ -n "$name" ] || continue
    if [ $# -gt 0 ] && ! printf '%s\n' "$@" | grep -qx "$name"; then continue; fi
    current=$file
    if ! perl -0pi -e "\$n = ($subst); END { \$? = \$n ? 0 : 1 }" "$file"; then
        echo "$name: the pattern is not in $file"
        git checkout -q -- "$file"
        continue
    fi
    if ! cmake --build "$build" -j "$(nproc)" ${targets:+--target $targets} > "$build/fault-build.log" 2>&1; then
        echo "$name: caught by the build"
    else
        failed=$(cd "$build" && ctest -j "$(nproc)" ${FAULT_TESTS:+-R "$FAULT_TESTS"} 2>&1 | sed -n 's/^[[:space:]]*[0-9]* - \([^ ]*\) .*/\1/p' | tr '\n' ' ')
        echo "$name: ${failed:-NOT CAUGHT}"
    fi
    git checkout -q -- "$file"
    current=""
done
