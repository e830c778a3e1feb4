#!/usr/bin/env bash
# A library exports what its list names, and nothing else: LIBRARY LIST.
set -euo pipefail
library=$1
list=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# The names between "global:" and "local:", without comments.
sed -e 's:/\*[^*]*\*/::g' "$list" | tr -d ' \t' |
    awk '/^global:/ { on = 1; next } /^local:/ { on = 0 } on && sub(/;$/, "")' |
    sort >"$work/listed"
[ -s "$work/listed" ] || { echo "$list: no names" >&2; exit 1; }

# The version's own name is no function; a sanitizer's symbols are the sanitizer's.
nm -D --defined-only --format=posix "$library" | awk '$2 != "A" { sub(/@.*/, "", $1); print $1 }' |
    grep -vE '^(__asan|__odr_asan|__sanitizer|__tsan|__ubsan)' | sort >"$work/exported" || true
if ! diff -u "$work/listed" "$work/exported"; then
    echo "$library does not export what $list lists" >&2
    exit 1
fi
