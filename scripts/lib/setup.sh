# Shared by scripts/run and scripts/test: installs what is missing, and says what is being done.
# The caller sets lib to this file's folder.
# shellcheck shell=bash
: "${lib:?}"

say() { printf '\n== %s\n' "$*"; }

die() {
    printf '%s: %s\n' "${0##*/}" "$*" >&2
    exit 1
}

# The packages of the named groups of packages.txt.
packages_of() {
    local group
    for group in "$@"; do
        awk -v group="$group" '$1 == group { print $2 }' "$lib/packages.txt"
    done
}

is_installed() {
    [ "$(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

# Installs the packages of the named groups that are missing.
install_packages() {
    local package missing=()
    while read -r package; do
        is_installed "$package" || missing+=("$package")
    done < <(packages_of "$@")
    [ ${#missing[@]} -eq 0 ] && return
    [ "$(id -u)" -eq 0 ] || die "root is needed to install: ${missing[*]}"
    say "Installing ${missing[*]}"
    export DEBIAN_FRONTEND=noninteractive
    # A server must not start by being installed: the tests start their own, on private ports.
    local policy=/usr/sbin/policy-rc.d
    local made_policy=no
    if [ ! -e "$policy" ]; then
        printf '#!/bin/sh\nexit 101\n' >"$policy"
        chmod 755 "$policy"
        made_policy=yes
    fi
    local status=0
    { apt-get update -qq && apt-get install -y -qq --no-install-recommends "${missing[@]}"; } \
        >/dev/null || status=$?
    [ "$made_policy" = yes ] && rm -f "$policy"
    [ "$status" -eq 0 ] || die "apt-get could not install: ${missing[*]}"
}
