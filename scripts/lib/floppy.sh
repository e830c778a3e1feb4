# Floppy images mounted as a disk in a drive is: on a folder named "floppy". To be used in a private
# mount namespace.
# shellcheck shell=bash

# mount_floppy IMAGE FOLDER: with the kernel's FAT where it has it, else with the FUSE one, read-only.
mount_floppy() {
    mkdir -p "$2"
    if mount -t vfat -o loop,ro "$1" "$2" 2>/dev/null; then
        return
    fi
    fusefat -o ro "$1" "$2" >/dev/null 2>&1 ||
        die "this system can mount a FAT image neither by its kernel nor by FUSE (/dev/fuse)"
    wait_until_ready 10 mountpoint -q "$2" || die "$1 was not mounted"
}

unmount_floppy() {
    if mountpoint -q "$1" 2>/dev/null; then
        umount "$1" || umount --lazy "$1"
    fi
}

# wait_until_ready SECONDS COMMAND...: tries the command until it succeeds.
wait_until_ready() {
    local tries=$(($1 * 20))
    shift
    until "$@" 2>/dev/null; do
        tries=$((tries - 1))
        [ "$tries" -gt 0 ] || return 1
        sleep 0.05
    done
}
