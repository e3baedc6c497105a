# A desk without a desk: a screen, a window manager and a sound card that need no hardware.
# Sourced by ./dev and the demo, which call stop_desk when they end.

desk_pids=()

stop_desk() {
    local pid
    for pid in "${desk_pids[@]}"; do
        kill "$pid" 2>/dev/null || true
    done
    for pid in "${desk_pids[@]}"; do
        wait "$pid" 2>/dev/null || true
    done
    desk_pids=()
    [ -n "${desk_dir:-}" ] && rm -rf "$desk_dir"
    desk_dir=
}

start_screen() {
    local number
    Xvfb -displayfd 3 -screen 0 "${ORVELLE_SCREEN:-1920x1080x24}" -dpi 96 -nolisten tcp \
        3>"$desk_dir/display" >"$desk_dir/xvfb.log" 2>&1 &
    desk_pids+=($!)
    for _ in $(seq 100); do
        number=$(cat "$desk_dir/display" 2>/dev/null || true)
        [ -n "$number" ] && break
        sleep 0.1
    done
    [ -n "$number" ] || { cat "$desk_dir/xvfb.log" >&2; return 1; }
    export DISPLAY=:$number LIBGL_ALWAYS_SOFTWARE=1 QT_QPA_PLATFORM=xcb
    openbox --sm-disable >"$desk_dir/openbox.log" 2>&1 &
    desk_pids+=($!)
}

start_sound() {
    local socket=$desk_dir/pulse.socket
    HOME=$desk_dir XDG_RUNTIME_DIR=$desk_dir pulseaudio -n --daemonize=no --exit-idle-time=-1 \
        --use-pid-file=no --disallow-exit \
        -L "module-native-protocol-unix auth-anonymous=1 socket=$socket" \
        -L "module-null-sink sink_name=desk rate=48000 channels=2" \
        >"$desk_dir/pulse.log" 2>&1 &
    desk_pids+=($!)
    for _ in $(seq 100); do
        [ -S "$socket" ] && break
        sleep 0.1
    done
    [ -S "$socket" ] || { cat "$desk_dir/pulse.log" >&2; return 1; }
    export PULSE_SERVER=unix:$socket
}

start_desk() {
    desk_dir=$(mktemp -d)
    start_screen
    start_sound
}
