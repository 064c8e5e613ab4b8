#!/bin/sh
# Joins the language file from its parts (one per form), in name order, as UTF-8 with one byte-order mark.
# Every line of every part ends in CRLF, as the stations' files do: a part with a line that does not fails
# the build, naming the part and the line.
# usage: join_lang.sh PARTS_DIR OUT
set -e
tmp="$2.tmp"
printf '\357\273\277' > "$tmp"
for p in "$1"/*.ini; do
  if ! LC_ALL=C awk -v part="$p" '!/\r$/ { printf "%s:%d: line does not end in CRLF\n", part, NR > "/dev/stderr"; bad = 1; exit }
                                  END { exit bad }' "$p"; then
    rm -f "$tmp"
    exit 1
  fi
  # The last line needs its LF too.
  if [ -s "$p" ] && [ "$(tail -c 1 "$p" | od -An -tx1 | tr -d ' \n')" != 0a ]; then
    echo "$p:$(($(wc -l < "$p") + 1)): line does not end in CRLF" >&2
    rm -f "$tmp"
    exit 1
  fi
  sed '1s/^\xEF\xBB\xBF//' "$p" >> "$tmp"
done
if cmp -s "$tmp" "$2"; then rm -f "$tmp"; else mv "$tmp" "$2"; fi
