#!/bin/sh
# Joins the language file from its parts (one per form), in name order, as UTF-8 with one byte-order mark.
# usage: join_lang.sh PARTS_DIR OUT
set -e
tmp="$2.tmp"
printf '\357\273\277' > "$tmp"
for p in "$1"/*.ini; do
  sed '1s/^\xEF\xBB\xBF//' "$p" >> "$tmp"
done
if cmp -s "$tmp" "$2"; then rm -f "$tmp"; else mv "$tmp" "$2"; fi
