#!/usr/bin/env bash
# Takes a picture of every view of the client in both languages, with demo cameras and data of its
# own, and lays them out on one sheet a language: take_screenshots.sh DIR
set -euo pipefail
top=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$top"
# shellcheck source=tools/desk.sh
. tools/desk.sh
# shellcheck source=tools/demo_data.sh
. tools/demo_data.sh

out=${1:?"usage: tools/take_screenshots.sh DIR"}
mkdir -p "$out"
out=$(cd "$out" && pwd)
bin=${ORVELLE_BIN:-$top/build/release/bin}
languages=${ORVELLE_LANGUAGES:-english chinese}
work=$(mktemp -d)
# Shown in dialogs, so it is not below the working directory.
media=/tmp/Orvelle
password='demo-camera'

# uid|English name|Chinese name|what sets it apart
cameras=(
    "ORVELLEDEMO000000011|Gate|大门|--scene 0 --type 1"
    "ORVELLEDEMO000000012|Car park|停车场|--scene 1 --codec hevc"
    "ORVELLEDEMO000000013|Workshop|车间|--scene 2 --sound alaw"
    "ORVELLEDEMO000000014|Garden|花园|--scene 3 --network-name Home --sd build/demo/pictures-card"
)
garden=ORVELLEDEMO000000014
# Two cameras, with 01 and 02 at the end: one to be added, one whose password is not known.
pair=ORVELLESPARE000000
locked=${pair}02
unreachable=ORVELLEDEMO000000015
# Each of them stands for three cameras, with 01 to 03 at the end of its UID.
crowd=(ORVELLECROWD0000 ORVELLECROWD0001 ORVELLECROWD0002 ORVELLECROWD0003)

client_pid=
camera_pids=()
finish() {
    local pid
    for pid in $client_pid "${camera_pids[@]}"; do
        kill -CONT "$pid" 2>/dev/null || true
        kill "$pid" 2>/dev/null || true
    done
    for pid in $client_pid "${camera_pids[@]}"; do
        wait "$pid" 2>/dev/null || true
    done
    stop_desk
    [ -z "${ORVELLE_KEEP_LOGS:-}" ] || cp "$work"/*.log "$out"
    rm -rf "$work"
    [ -z "${media_is_ours:-}" ] || rm -rf "$media"
}
trap finish EXIT
trap 'exit 130' INT TERM

export ORVELLE_LINK_LOOPBACK_ONLY=1
export ORVELLE_DISCOVERY_PORT=${ORVELLE_DISCOVERY_PORT:-47813}
export XDG_RUNTIME_DIR=$work/run
install -d -m 700 "$XDG_RUNTIME_DIR"

# camera LOG OPTION...
camera() {
    local log=$1
    shift
    ORVELLE_CAMERA_PASSWORD=$password "$bin/orvelle-camera" --demo "$@" --bind 127.0.0.1 \
        >"$work/$log.log" 2>&1 &
    camera_pids+=($!)
}

start_cameras() {
    local line uid name chinese options
    # What is on it from an earlier time stays.
    mkdir -p build/demo
    "$bin/orvelle-camera" --make-card build/demo/pictures-card --uid "$garden" --scene 3 --bitrate 300000 \
        >"$work/card.log" 2>&1
    for line in "${cameras[@]}"; do
        IFS='|' read -r uid name chinese options <<<"$line"
        # shellcheck disable=SC2086
        camera "$uid" --uid "$uid" --name "$name" $options
    done
    camera "$pair" --uid "$pair" --name Terrace --scene 4 --size 360p --cameras 2
    spare_pid=$!
}

start_crowd() {
    local scene
    for scene in "${!crowd[@]}"; do
        camera "${crowd[scene]}" --uid "${crowd[scene]}" --scene $((scene + 1)) --size 360p \
            --cameras 3
    done
}

# Of a camera that is up by then.
device_code_of() {
    for _ in $(seq 100); do grep -q '^Port' "$work/$1.log" && break || sleep 0.1; done
    ORVELLE_CAMERA_PASSWORD=$password "$bin/orvelle-camera" --show-code --uid "${1}01" |
        sed -n 's/^Device code: //p'
}

# use_data NAME LANGUAGE: a data directory in which the guide was not seen yet
use_data() {
    export XDG_DATA_HOME=$work/$1-$2
    local folder=$XDG_DATA_HOME/Orvelle/configure
    mkdir -p "$folder"
    printf '[General]\nlanguage=%s\nKvMediaRoot=%s\n' "$2" "$media" >"$folder/configure.ini"
    mkdir -p "$media"
}

skip_guide() {
    local version
    version=$("$bin/orvelle-camera" --version | sed 's/.* //')
    echo "$version=false" >>"$XDG_DATA_HOME/Orvelle/configure/configure.ini"
}

# write_list LANGUAGE: the cameras, one that is away, one with another password, and a group
write_list() {
    local devices=$XDG_DATA_HOME/Orvelle/Devices uids=() line uid name chinese options index=0 secret
    local group="Demo cameras" away="Back door" shut="Attic"
    [ "$1" = english ] || { group=演示分组 away=后门 shut=阁楼; }
    mkdir -p "$devices/KvTUTK" "$devices/KvTUTKGroup"
    for line in "${cameras[@]}" "$unreachable|$away|$away|" "$locked|$shut|$shut|"; do
        IFS='|' read -r uid name chinese options <<<"$line"
        [ "$1" = english ] || name=$chinese
        index=$((index + 1))
        secret=$password
        [ "$uid" != "$locked" ] || secret=another
        write_camera "$devices/KvTUTK/$uid.xml" $index "$uid" "$name" "$secret"
        write_entry "$devices/KvTUTKGroup/$uid.xml" -1 0 0 $index "$name" "$uid"
        [ $index -gt 4 ] || uids+=("$uid")
    done
    write_entry "$devices/KvTUTKGroup/1.xml" 1 1 1 0 "$group" "${uids[@]}"
}

# write_crowd LANGUAGE: sixteen cameras, all in one group
write_crowd() {
    local devices=$XDG_DATA_HOME/Orvelle/Devices uids=() uid name index=0 line word="Camera"
    [ "$1" = english ] || word=摄像机
    write_list "$1"
    rm "$devices"/KvTUTK*/{"$locked","$unreachable"}.xml
    for line in "${cameras[@]}"; do uids+=("${line%%|*}"); done
    for line in "${crowd[@]}"; do uids+=("${line}01" "${line}02" "${line}03"); done
    for uid in "${uids[@]}"; do
        index=$((index + 1))
        [ $index -gt 4 ] || continue
        name="$word $index"
        write_camera "$devices/KvTUTK/$uid.xml" $index "$uid" "$name" "$password"
        write_entry "$devices/KvTUTKGroup/$uid.xml" -1 0 0 $index "$name" "$uid"
    done
    word="Whole site"
    [ "$1" = english ] || word=全部区域
    write_entry "$devices/KvTUTKGroup/1.xml" 1 1 5 0 "$word" "${uids[@]}"
}

window() {
    xdotool search --onlyvisible --name '^Orvelle$' 2>/dev/null | tail -n 1
}

start_client() {
    "$bin/orvelle" >"$work/client.log" 2>&1 &
    client_pid=$!
    for _ in $(seq 100); do [ -n "$(window)" ] && break || sleep 0.1; done
    main=$(window)
    xdotool windowfocus --sync "$main"
    sleep 1
    # shellcheck disable=SC2046
    eval $(xdotool getwindowgeometry --shell "$main" | grep -E '^(WIDTH|HEIGHT)=')
}

end_client() {
    kill "$client_pid"
    wait "$client_pid" 2>/dev/null || true
    client_pid=
}

# Places in the window: as they are, from the right end, from the right and the lower end.
click() {
    # The bars over a picture come with the movement.
    xdotool mousemove --window "$main" $(($1 - 4)) "$2"
    sleep 0.2
    xdotool mousemove --window "$main" "$1" "$2" click "${3:-1}"
}
click_right() { click $((WIDTH - $1)) "$2"; }
click_corner() { click $((WIDTH - $1)) $((HEIGHT - $2)); }
point() { xdotool mousemove --window "$main" "$1" "$2"; }
key() { xdotool key --delay 60 "$@"; }
rest_mouse() { point 5 $((HEIGHT - 5)); sleep 3.5; }

# shot NAME: what the main window and the dialogs over it show; the language makes the ending
shot() {
    local X Y WIDTH HEIGHT
    # shellcheck disable=SC2046
    eval $(xdotool getwindowgeometry --shell "$main" | grep -E '^(X|Y|WIDTH|HEIGHT)=')
    ffmpeg -nostdin -loglevel error -y -f x11grab -draw_mouse 0 -video_size "${WIDTH}x$HEIGHT" \
        -grab_x "$X" -grab_y "$Y" -i "$DISPLAY" -frames:v 1 -compression_level 100 -pred mixed \
        "$out/$1$ending.png"
}

# entry NUMBER [BUTTON]: clicks a line of the list, counted from 0; the fifth is half hidden
entry() {
    local y=$((215 + 129 * $1))
    click 190 $((y < HEIGHT - 20 ? y : HEIGHT - 20)) "${2:-1}"
}
layout() { click_corner $((282 - 40 * $1)) 20; }

first_start() {
    use_data first "$1"
    start_client
    shot guide
    key Return
    sleep 0.5
    shot welcome
    click 600 500
    xdotool type --delay 20 "wrong code"
    key Return
    sleep 0.7
    shot wrong-code
    sleep 3
    end_client
}

list_and_dialogs() {
    shot list
    click 140 96
    sleep 0.5
    shot list-modes
    key Escape
    entry 1 3
    sleep 0.5
    shot entry-menu
    key Escape
    click 273 96
    sleep 0.7
    xdotool type --delay 20 "Evening"
    sleep 0.5
    shot group-dialog-empty
    key Escape
    click 245 96
    sleep 0.7
    shot add-prompt
    xdotool type --delay 5 "$(device_code_of "$pair")"
    kill -STOP "$spare_pid"
    key Return
    sleep 1
    shot adding
    key Escape
    kill -CONT "$spare_pid"
    sleep 0.5
    click 217 96
    sleep 3.5
    shot search
    key Escape
    sleep 0.5
    click 42 700
    sleep 1
    shot save-location
    key Escape
    click_right 186 35
    sleep 0.5
    click_right 186 85
    point 600 400
    sleep 0.5
    shot help-menu
    click_right 186 60
    sleep 3
    shot manual
    key Escape
    click 63 35
    sleep 0.7
    shot version
    key Escape
}

# The dialog of a group with all of its cameras in it.
edit_group() {
    entry 0 3
    sleep 0.5
    key Down Down Return
    sleep 1
    shot group-dialog
    key Escape
}

group_of_four() {
    entry 0
    point 700 300
    sleep 7
    rest_mouse
    shot main-window
    point 500 300
    sleep 0.8
    shot group-bars
    layout 2
    sleep 2
    shot layout-6
    layout 1
    sleep 1
}

single_camera() {
    entry 1
    sleep 3
    point 700 350
    sleep 0.8
    shot camera
    click_corner 66 62
    sleep 0.8
    shot pan-tilt
    click_corner 66 62
    click_corner 146 62
    sleep 2.5
    point 705 350
    sleep 0.5
    shot recording
    click_corner 146 62
    sleep 1.5
    shot recorded
    key Escape
    click_corner 106 62
    sleep 1.5
    shot snapshot
    key Escape
    sleep 0.5
    click_right 106 92
    sleep 3
    shot no-card
    entry 2
    sleep 1
}

card_and_information() {
    entry 4
    sleep 3
    point 700 350
    sleep 0.8
    click_right 106 92
    sleep 6
    shot playback
    click_corner 146 22
    sleep 2
    shot calendar
    key Escape
    entry 1
    sleep 1
    entry 4
    sleep 3
    point 700 350
    sleep 0.8
    click_right 66 92
    sleep 3
    shot device-information
}

offline_tiles() {
    point 190 500
    xdotool click --repeat 30 5
    sleep 1
    click 190 $((HEIGHT - 200))
    sleep 2
    point 700 350
    sleep 1
    shot unreachable
    click 190 $((HEIGHT - 70))
    sleep 2
    point 700 350
    sleep 1
    shot wrong-password
    click_right 26 92
    point 190 500
    xdotool click --repeat 30 4
}

closing() {
    xdotool key alt+F4
    sleep 0.7
    shot close
    # The dialog is gone too soon for a picture of a running program.
    xdotool key Return
    sleep 0.03
    kill -STOP "$client_pid"
    if [ -n "$(window)" ]; then shot exiting; fi
    kill -CONT "$client_pid"
    wait "$client_pid" || true
    client_pid=
}

every_view() {
    use_data demo "$1"
    skip_guide
    write_list "$1"
    start_client
    sleep 4
    group_of_four
    single_camera
    card_and_information
    offline_tiles
    list_and_dialogs
    edit_group
    closing
}

full_screen() {
    use_data large "$1"
    skip_guide
    write_list "$1"
    start_client
    click_right 97 34
    sleep 2
    # shellcheck disable=SC2046
    eval $(xdotool getwindowgeometry --shell "$main" | grep -E '^(WIDTH|HEIGHT)=')
    shot maximised-welcome
    entry 0
    point 700 300
    sleep 6
    rest_mouse
    shot maximised
    xdotool mousemove --window "$main" 700 300 click --repeat 2 --delay 60 1
    sleep 2
    point 900 500
    sleep 1
    shot full-screen
    end_client
}

sixteen() {
    use_data sixteen "$1"
    skip_guide
    write_crowd "$1"
    start_client
    sleep 5
    entry 0
    point 700 300
    sleep 12
    rest_mouse
    shot sixteen
    point 500 300
    sleep 0.8
    shot sixteen-bars
    end_client
}

small_screen() {
    use_data small "$1"
    skip_guide
    write_list "$1"
    start_client
    sleep 3
    shot small-welcome
    entry 0
    point 700 300
    sleep 6
    rest_mouse
    shot small-group
    entry 4
    sleep 3
    point 700 350
    sleep 0.8
    click_right 106 92
    sleep 6
    shot small-playback
    entry 1
    sleep 1
    entry 4
    sleep 3
    point 700 350
    sleep 0.8
    click_right 66 92
    sleep 3
    shot small-information
    click 273 96
    sleep 1
    shot small-group-dialog
    end_client
}

# sheet: every view at 1120 x 750, small, on one picture
sheet() {
    local views=() name list=$work/views.txt
    for name in guide welcome wrong-code list list-modes entry-menu add-prompt adding search \
        group-dialog main-window group-bars layout-6 sixteen camera pan-tilt recording snapshot \
        unreachable wrong-password playback calendar no-card device-information save-location \
        help-menu manual version close exiting; do
        [ -e "$out/$name$ending.png" ] && views+=("$out/$name$ending.png")
    done
    printf "file '%s'\n" "${views[@]}" >"$list"
    ffmpeg -nostdin -loglevel error -y -f concat -safe 0 -i "$list" -frames:v 1 -filter_complex \
        "scale=448:300:flags=lanczos,tile=5x$(((${#views[@]} + 4) / 5)):padding=8:margin=8:color=0xe8e8e8,split[a][b];[a]palettegen[p];[b][p]paletteuse=dither=sierra2_4a" \
        "$out/views$ending.png"
}

# for_each_language VIEWS
for_each_language() {
    local language
    for language in $languages; do
        ending=
        [ "$language" = english ] || ending=.zh
        "$1" "$language"
    done
}

if [ ! -e "$media" ]; then
    media_is_ours=1
fi
start_cameras
parts=${ORVELLE_PARTS:-first_start every_view full_screen small_screen sixteen sheet}
for part in $parts; do
    case $part in
        small_screen) export ORVELLE_SCREEN=1366x768x24 ;;
        *) export ORVELLE_SCREEN=1920x1080x24 ;;
    esac
    [ "$part" != sixteen ] || start_crowd
    [ "$part" = sheet ] || start_desk
    for_each_language "$part"
    stop_desk
done
