# shellcheck shell=bash
# Starts and ends the processes of a match, for ./play and vantor-practice.
#
# For bash scripts with `set -euo pipefail`. They define `fail MESSAGE [STATUS]`, which reports and exits, and call
# open_session first. Every process that this file starts ends with the script.

# A script in which an interrupt means a failure sets interrupted_status.
work= started=() client= interrupted= interrupted_status=0
declare -A services=()

# Sets work, a folder for the session's files, and the traps.
open_session() {
    trap close_session EXIT
    # The client takes the signal for a closed window and ends with its own status.
    trap '[ -z "$client" ] || kill "$client" 2>/dev/null || true; interrupted=yes' INT TERM HUP
    work=$(mktemp -d "${TMPDIR:-/tmp}/vantor.XXXXXX") || {
        exit_if_interrupted
        fail 'no folder for the files of the session'
    }
}

# Ends all started processes and deletes the folder. Does nothing the second time.
close_session() {
    local pid
    for pid in "${started[@]}"; do
        kill "$pid" 2>/dev/null && wait "$pid" 2>/dev/null || true
    done
    started=()
    [ -z "$work" ] || rm -rf --one-file-system "$work"
    work=
}

# Runs the command in a session of its own, which Ctrl-C does not reach. It outlives the client, but not this script,
# even if that is killed. Call it with an &.
in_background() {
    exec setsid setpriv --pdeathsig TERM "$@"
}

# An interrupt before the client runs counts as a closed window: no error.
exit_if_interrupted() {
    [ -z "$interrupted" ] || exit "$interrupted_status"
}

# await SECONDS FILE PATTERN PID: waits for a matching line in the file that the process writes; sets line to it.
# Not for subshells, which see no interrupt.
await() {
    local tenths=$(($1 * 10))
    while [ "$tenths" -gt 0 ]; do
        exit_if_interrupted
        line=$(grep -m 1 -E "$3" "$2" 2>/dev/null) && return 0
        kill -0 "$4" 2>/dev/null || return 1
        sleep 0.1
        tenths=$((tenths - 1))
    done
    return 1
}

# start_service NAME COMMAND...: waits until it is ready; sets host and port to its address.
start_service() {
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

# Fails if a service has ended by itself. The client cannot tell that from the end of a match.
check_services() {
    local name pid status
    for name in "${!services[@]}"; do
        pid=${services[$name]}
        if [ -z "$interrupted" ] && ! kill -0 "$pid" 2>/dev/null; then
            wait "$pid" && status=0 || status=$?
            fail "the $name broke off with status $status: $(tail -n 3 "$work/$name")"
        fi
    done
}

# Ends the practice server, and prints its table of the last match.
show_score() {
    local pid=${services[practice server]}
    kill "$pid" 2>/dev/null && wait "$pid" 2>/dev/null || true
    awk '/^match /   { table = "" }
         /^match |^  / { table = table $0 "\n" }
         END         { printf "%s", table }' "$work/practice server"
}

show_keys() {
    cat <<'TEXT'
  mouse: turn the view and the ship     left button: fire
  W, S:  forward, back                  A, D: left, right
  Space, C: up, down                    Q, E: roll
  Escape: leave
TEXT
}

# Starts a virtual display of the client's size, which only holders of its cookie may use.
start_display() {
    local cookie
    cookie=$(mcookie)
    export XAUTHORITY=$work/cookie
    : >"$XAUTHORITY"
    xauth -q add :0 . "$cookie"  # the server takes it under any number
    in_background Xvfb -displayfd 3 -auth "$XAUTHORITY" -noreset -screen 0 800x600x24 -nolisten tcp \
        3>"$work/display" 2>"$work/xvfb" &
    started+=($!)
    await 20 "$work/display" '^[0-9]+$' $! || fail "no virtual display: $(cat "$work/xvfb")"
    export DISPLAY=:$line
    xauth -q add "$DISPLAY" . "$cookie"
}

# The client needs X11. A Wayland desktop offers it through XWayland.
require_x11_beside_wayland() {
    [ -n "${DISPLAY:-}" ] || [ -z "${WAYLAND_DISPLAY:-}" ] ||
        fail 'this Wayland desktop offers no X11: install xwayland and log in again'
}

# start_client COMMAND...: starts the client and sets client to its process.
start_client() {
    exit_if_interrupted
    # SDL's classic driver "x11" has OpenGL. The client makes no sound, so it opens no sound card. Its window has one
    # size: SDL 1.2 on top of SDL 2 need not scale each frame, which is slow with a software renderer.
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
    # So early the signal does not count as a closed window for the client yet.
    [ -z "$interrupted" ] || [ "$status" -ne $((128 + 15)) ] || status=0
    return "$status"
}
