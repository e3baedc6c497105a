#!/usr/bin/env bash
# Starts a demo camera and the client that already knows it, on a data directory of its own;
# ends all of it when the window closes.
set -euo pipefail
top=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$top"
# shellcheck source=tools/desk.sh
. tools/desk.sh

bin=$top/build/release/bin
demo=$top/build/demo
uid=ORVELLEDEMO000000001
password=demo-camera
picture_timeout_s=30

screenshot=
case ${1:-} in
    --screenshot) screenshot=${2:?"--screenshot needs a file name"} ;;
    '') ;;
    *) echo "usage: ./dev run [--screenshot FILE]" >&2; exit 2 ;;
esac

camera_pid=
client_pid=
finish() {
    local pid
    for pid in $client_pid $camera_pid; do
        kill "$pid" 2>/dev/null || true
        wait "$pid" 2>/dev/null || true
    done
    stop_desk
}
trap finish EXIT
trap 'exit 130' INT TERM

# Nothing of the demo leaves this machine, and nothing of it touches the user's own data.
export ORVELLE_LINK_LOOPBACK_ONLY=1
export ORVELLE_DISCOVERY_PORT=${ORVELLE_DISCOVERY_PORT:-47811}
export XDG_DATA_HOME=$demo/share

has_display() {
    [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]
}

write_known_camera() {
    local devices=$XDG_DATA_HOME/Orvelle/Devices
    mkdir -p "$devices/KvTUTK" "$devices/KvTUTKGroup"
    (
        umask 077
        cat >"$devices/KvTUTK/$uid.xml" <<XML
<?xml version="1.0" encoding="UTF-8"?>
<KvTUTKDevice>
    <deviceId>1</deviceId>
    <name>Demo camera</name>
    <ip></ip>
    <uid>$uid</uid>
    <password>$password</password>
    <port>0</port>
    <mode>1</mode>
    <volume>1</volume>
</KvTUTKDevice>
XML
        cat >"$devices/KvTUTKGroup/$uid.xml" <<XML
<?xml version="1.0" encoding="UTF-8"?>
<KvDeviceGroup>
    <groupId>-1</groupId>
    <type>0</type>
    <layout>0</layout>
    <groupIndex>0</groupIndex>
    <name>Demo camera</name>
    <uids count="1">
        <uid>$uid</uid>
    </uids>
</KvDeviceGroup>
XML
    )
}

start_camera() {
    ORVELLE_CAMERA_PASSWORD=$password "$bin/orvelle-camera" --demo --uid "$uid" \
        --name "Demo camera" --type 1 --bind 127.0.0.1 >"$demo/camera.log" 2>&1 &
    camera_pid=$!
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
    wait_for_picture || {
        echo "No picture within $picture_timeout_s s; the client said:" >&2
        tail -n 20 "$demo/client.log" >&2
        exit 1
    }
    sleep 1 # the picture is on its way through the window's next repaint
    local window
    window=$(xdotool search --onlyvisible --name '^Orvelle$' | tail -n 1)
    ffmpeg -nostdin -loglevel error -y -f x11grab -window_id "$window" -i "$DISPLAY" \
        -frames:v 1 "$screenshot"
    echo "Screenshot: $screenshot"
}

mkdir -p "$demo"
if [ -n "$screenshot" ]; then
    start_desk
elif ! has_display; then
    screenshot=$demo/screenshot.png
    echo "There is no display here: running on a virtual one."
    start_desk
fi

write_known_camera
start_camera
"$bin/orvelle" >"$demo/client.log" 2>&1 &
client_pid=$!
for _ in $(seq 50); do grep -q 'Device code' "$demo/camera.log" && break || sleep 0.1; done
cat "$demo/camera.log"
if [ -n "$screenshot" ]; then
    take_screenshot
else
    wait "$client_pid"
fi
