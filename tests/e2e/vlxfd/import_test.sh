#!/usr/bin/env bash
# vlxfd with real disks, a real registry server and the real system log: PRODUCT-ROOT CASE.
# shellcheck source=tests/e2e/support/e2e.sh
. "$(dirname "${BASH_SOURCE[0]}")/../support/e2e.sh"
# shellcheck source=tests/e2e/support/disks.sh
. "$(dirname "${BASH_SOURCE[0]}")/../support/disks.sh"

SETTING='SOFTWARE\XEV\VLXService\SETTING'
SETUP='SOFTWARE\XEV\VLXService\SETUP'
HEARTBEAT='SOFTWARE\XEV\VLXService\HEARTBEAT'
ADDRESS='SOFTWARE\XEV\KESALERTMAN\DESTINATION\ID_LIST\VELOXREPORT\Address'

mount_english_image() {
    english_disk "$work/disk"
    make_image "$work/disk" "$work/disk.img"
    mount_floppy "$work/disk.img" "$work/floppy"
}

expect_silent() {
    expect_equal "standard output" "" "$(cat "$work/stdout")"
    expect_equal "standard error" "" "$(cat "$work/stderr")"
}

# expect_trace LEVEL TEXT: the log of vlxfd has a record of this level and text.
expect_trace() {
    grep -qF -- "$2" "$KES_STATE/log/vlxfd.log" || fail "no trace record '$2'"
}

# A private /dev with a system log of its own.
mount_private_dev() {
    local dev=$work/dev
    mkdir "$dev"
    mount -t tmpfs none "$dev"
    mknod -m 666 "$dev/null" c 1 3
    mknod -m 666 "$dev/urandom" c 1 9
    mount --move "$dev" /dev
    socat -u UNIX-RECV:/dev/log OPEN:"$work/syslog",creat,append 2>"$work/socat.log" &
    background+=($!)
    wait_until_ready 10 test -S /dev/log || fail "no system log"
}

server_down() {
    mount_private_dev
    run_import 0
    expect_equal "standard output" "Please confirm KESntserver is running!" "$(cat "$work/stdout")"
    expect_equal "standard error" "" "$(cat "$work/stderr")"
    wait_until_ready 10 grep -q . "$work/syslog" || fail "nothing in the system log"
    # Priority 6 of the default facility 1: <14>.
    grep -qa '^<14>.*KESntserver is not active! So vlxfd exit' "$work/syslog" ||
        fail "system log: $(cat "$work/syslog")"
    expect_trace 1 "<KESntserver is not active!"
}

no_floppy() {
    start_server
    run_import 100
    expect_silent
    expect_trace 1 "FD Hadn't mounted!"
}

english_image() {
    start_server
    mount_english_image
    run_import 1
    expect_silent
    expect_equal KAISHAKBN 1 "$(value_of "$SETTING" KAISHAKBN)"
    expect_equal TOKUINMA '"EXAMPLE TRADING"' "$(value_of "$SETTING" TOKUINMA)"
    expect_equal ADRSNMA '"1-2-3 EXAMPLE STREET\nSECOND LINE"' "$(value_of "$SETTING" ADRSNMA)"
    expect_equal OPTCD01 '"N8101-01"' "$(value_of "$SETTING" OPTCD01)"
    expect_equal OPTCD03 '"N8103-03"' "$(value_of "$SETTING" OPTCD03)"
    expect_equal OPTCDN 3 "$(value_of "$SETTING" OPTCDN)"
    expect_equal SYSSETEL '"03-2222-2222"' "$(value_of "$SETTING" SYSSETEL)"
    expect_equal MailAdrs '"centre@maintenance.example"' "$(value_of "$SETUP" MailAdrs)"
    expect_equal ErrorReply '"errors@maintenance.example"' "$(value_of "$SETUP" ErrorReply)"
    expect_equal HBINTERVAL 10 "$(value_of "$HEARTBEAT" HBINTERVAL)"
    expect_equal ETo '"centre@maintenance.example"' "$(value_of "$ADDRESS" ETo)"
    expect_equal SYSNMN "\"$(uname -n)\"" "$(value_of "$SETTING" SYSNMN)"
    expect_equal VERSION '"1.0.0/LINUX"' "$(value_of "$SETUP" VERSION)"
}

second_run() {
    start_server
    mount_english_image
    run_import 1
    run_import 1
    expect_equal VERSION '"1.0.0/LINUX/LINUX"' "$(value_of "$SETUP" VERSION)"
}

# The Japanese locale and a small catalogue, mounted over the fixed folder.
mount_japanese_texts() {
    local catalogue=$work/mo/ja/LC_MESSAGES
    mkdir -p "$catalogue" "$work/locale" /opt/xev/kestro_sa/data/mo
    localedef -i ja_JP -f EUC-JP "$work/locale/ja_JP.eucJP" >"$work/localedef.log" 2>&1 || true
    [ -d "$work/locale/ja_JP.eucJP" ] || fail "localedef made no locale"
    export LOCPATH=$work/locale
    printf '%s\n' 'msgid ""' 'msgstr "Content-Type: text/plain; charset=EUC-JP\n"' \
        'msgid "Corporate"' 'msgstr "法人"' 'msgid "Personal"' 'msgstr "個人"' \
        'msgid "[HEART-BEAT-INT]"' 'msgstr "[ハートビート間隔]"' |
        iconv -f UTF-8 -t EUC-JP >"$work/velox.po"
    msgfmt -o "$catalogue/velox.mo" "$work/velox.po"
    mount --bind "$work/mo" /opt/xev/kestro_sa/data/mo
}

japanese_image() {
    export KES_LANG=ja
    unset LC_ALL
    mount_japanese_texts
    start_server
    japanese_disk "$work/disk" 個人 '[ハートビート間隔]'
    make_image "$work/disk" "$work/disk.img"
    mount_floppy "$work/disk.img" "$work/floppy"
    run_import 1
    expect_silent
    export LC_ALL=C.UTF-8
    expect_equal KAISHAKBN 99 "$(value_of "$SETTING" KAISHAKBN)"
    expect_equal TOKUINMA '"カブシキガイシャ レイ"' "$(value_of "$SETTING" TOKUINMA)"
    expect_equal TOKUINMN '"株式会社例"' "$(value_of "$SETTING" TOKUINMN)"
    expect_equal SYSSENMN '"髙橋"' "$(value_of "$SETTING" SYSSENMN)"
    expect_equal OPTCDN 2 "$(value_of "$SETTING" OPTCDN)"
    # The disk says 0; the driver raises it to 1.
    expect_equal HBINTERVAL 1 "$(value_of "$HEARTBEAT" HBINTERVAL)"
}

# Without a catalogue the English texts stand, on a Japanese system too.
japanese_without_catalogue() {
    export KES_LANG=ja
    start_server
    japanese_disk "$work/disk" Personal '[HEART-BEAT-INT]'
    mount_folder "$work/disk"
    run_import 1
    expect_equal KAISHAKBN 99 "$(value_of "$SETTING" KAISHAKBN)"
}

wrong_language() {
    start_server
    japanese_disk "$work/disk" Corporate '[HEART-BEAT-INT]'
    mount_folder "$work/disk"
    run_import 200
    expect_trace 1 'KeyFD language error : NEED:'
}

# 100 MB of one line.
repeat_line() {
    yes "$1" | head -c 100M || true
}

# refused_file FILE HOW STATUS: a disk whose FILE is of the kind HOW ends the import with STATUS,
# without hanging.
refused_file() {
    local file=$work/disk/$1
    rm -rf "$work/disk"
    english_disk "$work/disk"
    rm "$file"
    case $2 in
        missing) ;;
        folder) mkdir "$file" ;;
        fifo) mkfifo "$file" ;;
        device) mknod "$file" c 1 5 ;;
        link) ln -s /etc/hostname "$file" ;;
        large) repeat_line '[E-MAIL]' >"$file" ;;
        sparse) truncate -s 1T "$file" ;;
        *) fail "unknown kind $2" ;;
    esac
    mount_folder "$work/disk"
    run_import "$3"
    expect_silent
    unmount_floppy "$work/floppy"
}

refused_files() {
    local kind
    start_server
    for kind in missing folder fifo device link large sparse; do
        refused_file AMVLXUSR.INF "$kind" 200
        expect_trace 1 "UUCdDeCodingFromFile() failed!!"
    done
    for kind in missing folder fifo device link; do
        refused_file AMVLXADR.INF "$kind" 200
        expect_trace 1 "Create AMVLXADR.INF Failed!"
    done
    # A zero byte at the start of a line ends the file: nothing is imported, the mail address is
    # missing.
    refused_file AMVLXADR.INF sparse 0
    expect_trace 1 "<AMAMRegReadEx (MAILADRS) Failed"
    for kind in missing folder fifo device link; do
        refused_file AMVLXHBI.INF "$kind" 1
        expect_trace 1 "CreateFile AMVLXHBI Error!"
    done
    refused_file AMVLXHBI.INF sparse 1
    refused_file AMVLXHBI.INF large 200
    expect_trace 1 "Item name error : AMVLXHBI : [E-MAIL]"
}

# Takes its time: the trace tells of every byte up to the limit of what a disk's file may have.
oversize_address_file() {
    start_server
    refused_file AMVLXADR.INF large 200
    expect_trace 1 "GetFileLine AMVLXADR.INF Error3!"
}

# refused_customer_bytes: the customer file from standard input is refused and nothing is stored.
refused_customer_bytes() {
    rm -rf "$work/disk"
    english_disk "$work/disk"
    cat >"$work/disk/AMVLXUSR.INF"
    mount_folder "$work/disk"
    run_import 200
    expect_silent
    expect_equal "stored name" "" "$(value_of "$SETTING" TOKUINMA)"
    unmount_floppy "$work/floppy"
}

refused_encodings() {
    start_server
    english_disk "$work/good"
    printf 'no encoding at all\r\n' | refused_customer_bytes
    head -n -1 "$work/good/AMVLXUSR.INF" | refused_customer_bytes
    head -c 100 "$work/good/AMVLXUSR.INF" | refused_customer_bytes
    { cat "$work/good/AMVLXUSR.INF"; echo more; } | refused_customer_bytes
    : | refused_customer_bytes
    expect_trace 1 "UUCdDeCodingFromFile() failed!!"
    printf '[USER-NAME]\r\n\x81\x20\xFF\xFD\r\n' | uuencode x | refused_customer_bytes
    expect_trace 1 "ecm_SJIStoEUC() failed!!"
    { printf '[USER-NAME]\r\n'; head -c 1100 /dev/zero | tr '\0' x; printf '\r\n'; } | uuencode x |
        refused_customer_bytes
}

# What the import wrote before a later file failed stays.
values_stay_after_a_failure() {
    start_server
    english_disk "$work/disk"
    printf '[UNKNOWN]\r\nx\r\n' >"$work/disk/AMVLXADR.INF"
    mount_folder "$work/disk"
    run_import 200
    expect_equal TOKUINMA '"EXAMPLE TRADING"' "$(value_of "$SETTING" TOKUINMA)"
    expect_equal VERSION '"1.0.0"' "$(value_of "$SETUP" VERSION)"
    expect_trace 1 'Invalided item : UNKNOWN '
}

# The import succeeds but a key of the follow-up steps is gone: exit status 0, and no key is made.
missing_destination() {
    start_server
    veloxctl reg delete "HKLM\\$ADDRESS" -f
    mount_english_image
    run_import 0
    expect_silent
    expect_trace 1 "<AMAMRegWrite(REG_SZ) Failed"
    expect_equal VERSION '"1.0.0"' "$(value_of "$SETUP" VERSION)"
}

case $2 in
    server_down | no_floppy | english_image | second_run | japanese_image) "$2" ;;
    japanese_without_catalogue | wrong_language | refused_files | refused_encodings) "$2" ;;
    oversize_address_file) "$2" ;;
    values_stay_after_a_failure | missing_destination) "$2" ;;
    *) fail "unknown case $2" ;;
esac
