#!/bin/sh
# Fails when lupdate would change the translation file: a text new in the code, or one gone from it.
# usage: check_ts.sh TS_FILE SCRATCH_FILE LUPDATE_COMMAND... (the command ends in -ts)
set -e
ts=$1
scratch=$2
shift 2
cp "$ts" "$scratch"
"$@" "$scratch"
if ! cmp -s "$ts" "$scratch"; then
  echo "$ts is not current: build the target orva_lupdate and translate what it adds."
  diff "$ts" "$scratch" || true
  exit 1
fi
