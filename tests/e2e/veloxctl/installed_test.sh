#!/usr/bin/env bash
# veloxctl as installed: PRODUCT-ROOT CASE.
# shellcheck source=tests/e2e/support/e2e.sh
. "$(dirname "${BASH_SOURCE[0]}")/../support/e2e.sh"

# What the command writes of itself is what is installed.
manual_and_completion() {
    veloxctl help --man | cmp - "$product/share/man/man8/veloxctl.8"
    veloxctl help --bash-completion | cmp - "$product/share/bash-completion/completions/veloxctl"
    bash -n "$product/share/bash-completion/completions/veloxctl"
    shellcheck --shell=bash "$product/share/bash-completion/completions/veloxctl"
    (cd / && "$product/bin/veloxctl" keydisk template --lang en >/dev/null)
}

case $2 in
    manual_and_completion) "$2" ;;
    *) fail "unknown case $2" ;;
esac
