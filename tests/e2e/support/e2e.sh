# What the end-to-end tests share. A test script sources this file and runs in a mount namespace of
# its own, with the installed product tree as its first argument. Everything it makes lies in $work.
# shellcheck shell=bash
set -euo pipefail

product=$1
source_root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../../.." && pwd)
lib=$source_root/scripts/lib
# shellcheck source=scripts/lib/setup.sh
. "$lib/setup.sh"
# shellcheck source=scripts/lib/floppy.sh
. "$lib/floppy.sh"

work=$(mktemp -d)
export KES_ROOT=$product KES_STATE=$work/state KES_RUN=$work/run
export LC_ALL=C.UTF-8
unset LANG LANGUAGE KES_LANG
PATH=$product/bin:$PATH
mkdir -p "$KES_STATE" "$KES_RUN"

background=()
cleanup() {
    local status=$? pid
    unmount_floppy "$work/floppy"
    for pid in "${background[@]}"; do
        kill "$pid" 2>/dev/null || true
        wait "$pid" 2>/dev/null || true
    done
    [ "$status" -eq 0 ] || show_logs
    rm -rf "$work"
}
trap cleanup EXIT

show_logs() {
    local log
    for log in "$work"/*.log "$KES_STATE"/log/*.log; do
        [ -f "$log" ] && printf -- '--- %s\n' "$log" && tail -n 60 "$log"
    done
    return 0
}

fail() {
    printf 'FAILED: %s\n' "$*" >&2
    exit 1
}

# expect_equal WHAT EXPECTED ACTUAL
expect_equal() {
    [ "$2" = "$3" ] || fail "$1:"$'\n'"expected: $2"$'\n'"actual:   $3"
}

start_server() {
    KESntserver 2>"$work/KESntserver.log" &
    background+=($!)
    wait_until_ready 20 veloxctl status >/dev/null || fail "the registry server did not start"
}

stop_server() {
    kill "${background[-1]}"
    wait "${background[-1]}" || fail "the registry server ended with $?"
    unset 'background[-1]'
}

# The value as veloxctl prints it, without key and type. Empty when it is absent.
value_of() {
    veloxctl reg query "HKLM\\$1" -v "$2" --json 2>/dev/null |
        sed -n 's/.*"data": *\(.*[^,]\),\{0,1\}$/\1/p'
}

# The trace of vlxfd, one record a line, without the fields that differ from run to run.
trace_of_import() {
    cat "$KES_STATE/log/vlxfd.log"
}

# run_import EXPECTED-STATUS: runs vlxfd; its output goes to $work/stdout and stderr.
run_import() {
    local status=0
    timeout 500 vlxfd >"$work/stdout" 2>"$work/stderr" || status=$?
    expect_equal "exit status of vlxfd" "$1" "$status"
}

# to_sjis: UTF-8 lines from standard input as a text of a key disk: Shift-JIS with CR LF.
to_sjis() {
    sed 's/$/\r/' | iconv -f UTF-8 -t CP932
}

# make_customer_file FOLDER: the customer file from UTF-8 lines on standard input.
make_customer_file() {
    to_sjis | uuencode customer.txt >"$1/AMVLXUSR.INF"
}

# make_image FOLDER IMAGE: a 1.44 MB FAT12 image with the folder's files.
make_image() {
    mformat -C -f 1440 -i "$2" ::
    mcopy -i "$2" "$1"/* ::
}

# mount_folder FOLDER: shows a folder as a disk, for files that FAT cannot hold.
mount_folder() {
    mkdir -p "$work/floppy"
    mount --bind "$1" "$work/floppy"
}
