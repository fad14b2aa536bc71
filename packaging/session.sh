# shellcheck shell=bash
# The processes of a match and their end: what ./play and vantor-practice have in common.
#
# For bash scripts with `set -euo pipefail`, which define `fail MESSAGE [STATUS]` (tells the player, and exits) and then
# call open_session before all else. Whatever is started through this file ends with the script.

work= started=() client= interrupted=
declare -A services=()

# Sets work, a folder for this session's files, and the traps.
open_session() {
    trap close_session EXIT
    # Closing politely: the client takes it for a closed window and ends with its own status.
    trap '[ -z "$client" ] || kill "$client" 2>/dev/null || true; interrupted=yes' INT TERM HUP
    work=$(mktemp -d "${TMPDIR:-/tmp}/vantor.XXXXXX") || {
        leave_if_interrupted
        fail 'no folder for the files of the session'
    }
}

# Ends all that was started. At the latest the script's end does; a second time there is nothing left to do.
close_session() {
    local pid
    for pid in "${started[@]}"; do
        kill "$pid" 2>/dev/null && wait "$pid" 2>/dev/null || true
    done
    started=()
    [ -z "$work" ] || rm -rf --one-file-system "$work"
    work=
}

# Server and display get sessions of their own, so that Ctrl-C reaches nobody but this script and they outlive the
# client; but not this script, even if it is killed. Call it with an &.
in_background() {
    exec setsid setpriv --pdeathsig TERM "$@"
}

# Who interrupts before the client runs has left, as one who closes its window: no error.
leave_if_interrupted() {
    [ -z "$interrupted" ] || exit 0
}

# await SECONDS FILE PATTERN PID: waits until a line of the file, which the process writes, matches; sets line to it.
# Not for subshells, which hear of no interruption.
await() {
    local tenths=$(($1 * 10))
    while [ "$tenths" -gt 0 ]; do
        leave_if_interrupted
        line=$(grep -m 1 -E "$3" "$2" 2>/dev/null) && return 0
        kill -0 "$4" 2>/dev/null || return 1
        sleep 0.1
        tenths=$((tenths - 1))
    done
    return 1
}

# serve NAME COMMAND...: starts a service, and sets host and port to where it says that it is ready.
serve() {
    local name=$1 pid status=1
    shift
    in_background "$@" >"$work/$name" 2>&1 &
    pid=$!
    started+=("$pid")
    services[$name]=$pid
    if ! await 10 "$work/$name" '^ready ' "$pid"; then
        kill -0 "$pid" 2>/dev/null || wait "$pid" || status=$?
        fail "the $name did not start: $(tail -n 3 "$work/$name")" "$status"
    fi
    host=${line#ready } port=${line##*:}
    host=${host%:*}
}

# Fails if a service has ended by itself; the client only saw the connection end, as when a match is closed.
expect_services() {
    local name pid status
    for name in "${!services[@]}"; do
        pid=${services[$name]}
        if [ -z "$interrupted" ] && ! kill -0 "$pid" 2>/dev/null; then
            wait "$pid" && status=0 || status=$?
            fail "the $name broke off with status $status: $(tail -n 3 "$work/$name")"
        fi
    done
}

# start_display: starts a virtual display of the client's size and exports DISPLAY.
start_display() {
    in_background Xvfb -displayfd 3 -noreset -screen 0 800x600x24 -nolisten tcp 3>"$work/display" 2>"$work/xvfb" &
    started+=($!)
    await 20 "$work/display" '^[0-9]+$' $! || fail "no virtual display: $(cat "$work/xvfb")"
    export DISPLAY=:$line
}

# The client needs X11, which on Wayland desktops means XWayland.
require_x11_beside_wayland() {
    [ -n "${DISPLAY:-}" ] || [ -z "${WAYLAND_DISPLAY:-}" ] ||
        fail 'this Wayland desktop offers no X11: install xwayland and log in again'
}

# start_client COMMAND...: starts the client and sets client to its process.
start_client() {
    leave_if_interrupted
    # SDL's classic driver of that name is the one that has OpenGL. The client makes no sound, so it need not open a
    # sound card either. Its window has one size: SDL 1.2 on top of SDL 2 need not draw into a buffer of its own to
    # scale it, which costs a software renderer time in each frame.
    SDL_VIDEODRIVER=x11 SDL_AUDIODRIVER=${SDL_AUDIODRIVER:-dummy} \
        SDL12COMPAT_OPENGL_SCALING=${SDL12COMPAT_OPENGL_SCALING:-0} "$@" &
    client=$!
    [ -z "$interrupted" ] || kill "$client"
}

# Waits for the client's end and returns its status.
await_client() {
    local status
    while :; do
        wait "$client" && status=0 || status=$?
        kill -0 "$client" 2>/dev/null || break
    done
    # The signal came so early that it did not mean a closed window yet.
    [ -z "$interrupted" ] || [ "$status" -ne $((128 + 15)) ] || status=0
    return "$status"
}
