#!/usr/bin/env bash
# The templates of the message catalogues list every message, and msgfmt takes them: SOURCE-FOLDER.
set -euo pipefail
cd "$1"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

if ! scripts/lib/messages | diff -u data/po/velox.pot - >"$work/difference"; then
    cat "$work/difference"
    echo "data/po/velox.pot is out of date: scripts/lib/messages >data/po/velox.pot" >&2
    exit 1
fi
for word in Corporate Personal '[HEART-BEAT-INT]' '[CONTRACT]'; do
    grep -qxF "msgid \"$word\"" data/po/velox.pot || { echo "$word is missing" >&2; exit 1; }
done

# Events of the default registry: name and text as "NAME"="TEXT".
grep -iE '^"(TRAPNAME|RECOVERYACTION)"="' data/defaults.reg | sed 's/^"[^"]*"=//' |
    sort -u >"$work/texts" || true
while IFS= read -r text; do
    grep -qxF "msgid $text" data/po/reprttbl.pot ||
        { echo "data/po/reprttbl.pot lacks $text" >&2; exit 1; }
done <"$work/texts"

for domain in velox reprttbl; do
    msgfmt --check-format -o "$work/$domain.mo" "data/po/$domain.pot"
done
