#!/usr/bin/env bash
# Every installed header compiles alone, as C11 and as C++20: INCLUDE-FOLDER C-COMPILER C++-COMPILER.
set -euo pipefail
cd "$1"
warnings=(-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
failed=0
count=0
while IFS= read -r header; do
    count=$((count + 1))
    # Twice, because the second time must add nothing.
    text=$(printf '#include <%s>\n#include <%s>\nextern int nothing;' "$header" "$header")
    "$2" -std=c11 "${warnings[@]}" -I. -fsyntax-only -x c - <<<"$text" ||
        { echo "$header is no C11" >&2; failed=1; }
    "$3" -std=c++20 "${warnings[@]}" -I. -fsyntax-only -x c++ - <<<"$text" ||
        { echo "$header is no C++20" >&2; failed=1; }
done < <(find . -name '*.h' -printf '%P\n' | sort)
[ "$count" -gt 0 ] || { echo "no headers are installed" >&2; exit 1; }
exit "$failed"
