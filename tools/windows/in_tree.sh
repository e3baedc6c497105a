#!/bin/sh
# in_tree.sh ROOT PROJECT DESK COMMAND...: runs a command in the Debian tree ROOT. Called in a mount
# namespace of its own, so that whatever happens nothing stays mounted.
set -eu
root=$1 project=$2 desk=$3
shift 3
mount -t proc proc "$root/proc"
mount --rbind /sys "$root/sys"
mount --rbind /dev "$root/dev"
# Screen and sound are reached by sockets.
for folder in "$project" "$desk" /tmp/.X11-unix; do
    [ -d "$folder" ] || continue
    mkdir -p "$root$folder"
    mount --bind "$folder" "$root$folder"
done
folder=$PWD
exec chroot "$root" sh -c 'cd "$0" 2>/dev/null || cd /; exec "$@"' "$folder" "$@"
