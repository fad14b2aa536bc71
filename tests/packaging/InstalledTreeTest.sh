#!/usr/bin/env bash
# usage: InstalledTreeTest.sh TEST BUILD_FOLDER: runs one of the functions below in a fresh installation.
set -euo pipefail

fail() {
    printf '%s\n' "$1" >&2
    exit 1
}

sorted() { printf '%s\n' "$@" | sort -u; }

options_in_help() { "$games/$1" --help | grep -oE '^  --[a-z-]+' | tr -d ' ' | sort -u || true; }

options_in_manual() {
    zcat "$tree/share/man/man6/$1.6.gz" | sed -n 's/\\-/-/g; s/^\.BI\? \(--[a-z-]*\).*/\1/p' | sort -u
}

# completed PROGRAM PREVIOUS_WORD
completed() {
    COMPREPLY=()
    _vantor "$games/$1" '' "$2"
    sorted "${COMPREPLY[@]}"
}

expect_same() {
    [ -n "$2" ] && [ "$2" = "$3" ] || fail "$1: $(diff <(printf '%s\n' "$2") <(printf '%s\n' "$3"))"
}

EveryOptionIsInTheManualAndCompleted() {
    . "$tree/share/bash-completion/completions/vantor-relay"
    local program option word words own known
    for program in vantor vantor-practice vantor-relay vantor-server; do
        own=$(options_in_help $program)
        expect_same "help and manual of $program" "$own" "$(options_in_manual $program)"
        known=$own
        [ $program != vantor-practice ] || known=$(sorted $own $(options_in_help vantor-server))
        expect_same "help and completion of $program" "$known" "$(completed $program $program)"
    done
    for option in vantor-server:--difficulty vantor-server:--spawn vantor-relay:--network; do
        program=${option%:*}
        words=$(completed "$program" "${option#*:}")
        [[ $words != *--* ]] || fail "no values are known for $option"
        for word in $words; do
            "$games/$program" --help | grep -qw "$word" || fail "$program knows no $word"
        done
    done
}

start_display() {
    in_background Xvfb -displayfd 3 -noreset -screen 0 800x600x24 -nolisten tcp 3>"$work/display" 2>/dev/null &
    started+=($!)
    DISPLAY=:$(await 20 "$work/display" '^[0-9]+$' $!) || fail 'no virtual display'
    export DISPLAY
}

colours() { import -silent -window root ppm:- | identify -format %k ppm:-; }

APracticeMatchPlaysAndLeavesNothing() {
    start_display
    mkdir "$work/tmp"
    TMPDIR=$work/tmp "$games/vantor-practice" --bots 4 &
    local match=$! tries=60
    started+=("$match")
    until [ "$(colours)" -gt 1000 ] && grep -qs shot.obj "$work"/tmp/*/client; do
        xdotool mousedown 1 sleep 0.2 mouseup 1  # the last file that the client loads is a shot's
        [ $((tries -= 1)) -gt 0 ] && kill -0 $match || fail 'no picture of a match'
        sleep 0.5
    done
    ! grep -i error "$work"/tmp/*/client || fail 'the client misses something'
    kill $match
    wait $match || fail "left, but with status $?"
    [ -z "$(ls "$work/tmp")" ] || fail "left over: $(ls "$work/tmp")"
    ! pgrep -f "$games/" || fail 'a process was left running'
}

# expect_end STATUS TEXT OPTION...
expect_end() {
    local status=0
    "$games/vantor-practice" "${@:3}" 2>"$work/said" || status=$?
    [ $status -eq "$1" ] && grep -q "$2" "$work/said" || fail "${*:3}: status $status, $(cat "$work/said")"
}

BadStartsAreExplained() {
    unset DISPLAY WAYLAND_DISPLAY
    expect_end 1 'no display'
    WAYLAND_DISPLAY=wayland-0 expect_end 1 'install xwayland'
    mkdir "$work/desktop"
    printf '#!/bin/sh\necho "$@" >"%s/dialog"\n' "$work" >"$work/desktop/zenity"
    chmod +x "$work/desktop/zenity"
    PATH=$work/desktop:$PATH
    export DISPLAY=:nowhere
    expect_end 1 "Couldn't initialize SDL"
    grep -q "Couldn't initialize SDL" "$work/dialog" || fail 'no dialog'
    expect_end 2 "a whole number from 0 to 64, not 'many'" --bots many
}

. "$(dirname "$(readlink -f "$0")")/../../packaging/session.sh"
open_session
cmake --install "$2" --prefix "$work/first place" >/dev/null
tree="$work/any place"  # it may be moved, and blanks do no harm
mv "$work/first place" "$tree"
games=$tree/games
"$1"
