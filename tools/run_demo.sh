#!/usr/bin/env bash
# Starts five demo cameras and the client, on a data directory of its own: four are known to the
# client and in a group, the fifth is there to be added by its code. Ends all of it when the
# window closes.
set -euo pipefail
here=$PWD # where the screenshot's name belongs
top=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$top"
# shellcheck source=tools/desk.sh
. tools/desk.sh
# shellcheck source=tools/demo_data.sh
. tools/demo_data.sh

bin=${ORVELLE_BIN:-$top/build/release/bin}
read -ra client <<<"${ORVELLE_CLIENT:-$bin/orvelle}"
demo=$top/build/demo
password=demo-camera
group_name="Demo cameras"
picture_timeout_s=30
# Where the first list entry lies in the window.
entry_x=190
entry_y=220

# uid|name|what sets it apart
cameras=(
    "ORVELLEDEMO000000001|Gate|--scene 0 --type 1"
    "ORVELLEDEMO000000002|Car park|--scene 1 --codec hevc"
    "ORVELLEDEMO000000003|Workshop|--scene 2 --sound alaw"
    "ORVELLEDEMO000000004|Garden|--scene 3 --sd build/demo/card"
    "ORVELLEDEMO000000005|Spare camera|--scene 4 --size 360p"
)
known=4

screenshot=
case ${1:-} in
    --screenshot) screenshot=$(cd "$here" && realpath -m -- "${2:?"--screenshot needs a file name"}") ;;
    '') ;;
    *) echo "usage: ./dev run [--screenshot FILE]" >&2; exit 2 ;;
esac

camera_pids=()
client_pid=
finish() {
    local pid
    for pid in $client_pid "${camera_pids[@]}"; do
        kill "$pid" 2>/dev/null || true
    done
    for pid in $client_pid "${camera_pids[@]}"; do
        wait "$pid" 2>/dev/null || true
    done
    stop_desk
}
trap finish EXIT
trap 'exit 130' INT TERM

# Nothing of the demo leaves this machine, and nothing of it touches the user's own data.
export ORVELLE_LINK_LOOPBACK_ONLY=1
export ORVELLE_DISCOVERY_PORT=${ORVELLE_DISCOVERY_PORT:-47811}
export XDG_DATA_HOME=${ORVELLE_DEMO_DATA:-$demo/share}

has_display() {
    [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]
}

# Whatever the user did in an earlier demo stays; only what is missing is written.
write_known_cameras() {
    local devices=$XDG_DATA_HOME/Orvelle/Devices uids=() uid name options index
    [ -e "$devices/KvTUTK/${cameras[0]%%|*}.xml" ] && return
    mkdir -p "$devices/KvTUTK" "$devices/KvTUTKGroup"
    for ((index = 0; index < known; ++index)); do
        IFS='|' read -r uid name options <<<"${cameras[index]}"
        write_camera "$devices/KvTUTK/$uid.xml" $((index + 1)) "$uid" "$name" "$password"
        write_entry "$devices/KvTUTKGroup/$uid.xml" -1 0 0 $((index + 1)) "$name" "$uid"
        uids+=("$uid")
    done
    write_entry "$devices/KvTUTKGroup/1.xml" 1 1 1 0 "$group_name" "${uids[@]}"
}

# What is on the card from an earlier demo stays; only what came due since is made.
fill_card() {
    [ -d "$demo/card" ] || echo "Filling a memory card with recordings of several days, once."
    "$bin/orvelle-camera" --make-card "$demo/card" --uid "ORVELLEDEMO000000004" --scene 3 \
        --bitrate 300000 >"$demo/make-card.log" 2>&1 ||
        echo "No recordings could be made: $(cat "$demo/make-card.log")" >&2
}

start_cameras() {
    local uid name options camera
    for camera in "${cameras[@]}"; do
        IFS='|' read -r uid name options <<<"$camera"
        # shellcheck disable=SC2086
        ORVELLE_CAMERA_PASSWORD=$password "$bin/orvelle-camera" --demo --uid "$uid" \
            --name "$name" $options --bind 127.0.0.1 >"$demo/$uid.log" 2>&1 &
        camera_pids+=($!)
    done
}

device_code_of() {
    ORVELLE_CAMERA_PASSWORD=$password "$bin/orvelle-camera" --show-code --uid "$1" |
        sed -n 's/^Device code: //p'
}

window() {
    xdotool search --onlyvisible --name '^Orvelle$' 2>/dev/null | tail -n 1
}

# Opens the group as a user does, with a click on the first entry of the list.
open_first_entry() {
    for _ in $(seq 100); do [ -n "$(window)" ] && break || sleep 0.1; done
    xdotool windowfocus --sync "$(window)"
    # The guide of the first start.
    xdotool key Escape
    xdotool mousemove --window "$(window)" "$entry_x" "$entry_y" click 1
}

wait_for_picture() {
    local deadline=$((SECONDS + picture_timeout_s))
    while [ $SECONDS -lt $deadline ]; do
        grep -q 'display yuv' "$demo/client.log" && return 0
        kill -0 "$client_pid" 2>/dev/null || return 1
        sleep 0.1
    done
    return 1
}

take_screenshot() {
    open_first_entry
    wait_for_picture || {
        echo "No picture within $picture_timeout_s s; the client said:" >&2
        tail -n 20 "$demo/client.log" >&2
        exit 1
    }
    sleep 5 # the other pictures are on their way, and the bars over the tiles leave
    ffmpeg -nostdin -loglevel error -y -f x11grab -window_id "$(window)" -i "$DISPLAY" \
        -frames:v 1 "$screenshot"
    echo "Screenshot: $screenshot"
}

mkdir -p "$demo"
if [ -n "$screenshot" ]; then
    # A first start, whatever an earlier demo left.
    export XDG_DATA_HOME=${ORVELLE_DEMO_DATA:-$demo/screenshot}
    rm -rf "$XDG_DATA_HOME/Orvelle"
    start_desk
elif ! has_display; then
    screenshot=$demo/screenshot.png
    echo "There is no display here: running on a virtual one."
    start_desk
fi

(umask 077 && write_known_cameras)
fill_card
start_cameras
ORVELLE_LOG=1 "${client[@]}" >"$demo/client.log" 2>&1 &
client_pid=$!
spare=${cameras[known]}
echo "Watch: click \"$group_name\" in the list."
echo "Add:   type this device code of \"$(cut -d'|' -f2 <<<"$spare")\": $(device_code_of "${spare%%|*}")"
if [ -n "$screenshot" ]; then
    take_screenshot
else
    wait "$client_pid"
fi
