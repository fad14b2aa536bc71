#!/usr/bin/env bash
# usage: InstalledTreeTest.sh TEST BUILD_FOLDER CONFIGURATION: runs a function below in a fresh installation. The first
# command that fails ends it.
set -Eeuo pipefail
trap 'printf "line %s failed: %s\n" "$LINENO" "$BASH_COMMAND" >&2' ERR

fail() {  # for session.sh
    printf '%s\n' "$1" >&2
    exit 1
}

eventually() {  # eventually CONDITION: waits until the shell text succeeds
    local tries=200
    until eval "$1"; do
        [ $((tries -= 1)) -gt 0 ]
        sleep 0.1
    done
}

InstallsBelowAnyPrefix() {
    local program
    diff <(cd "$tree" && find . ! -type d | sort) <(sed "s|^$prefix|.|" <<<"$manifest" | sort)
    diff /dev/null <(find -L "$tree" -type l)  # links lead somewhere, and to what belongs to the installation
    diff /dev/null <(find "$tree" -type l -exec readlink -f {} + | grep -v "^$tree/" || true)
    diff /dev/null <(find "$tree" ! -type l ! -perm -a+r -o -type d ! -perm -a+x)
    for program in vantor vantor-practice vantor-relay vantor-server; do
        zgrep -qF '\-\-help' "$tree/share/man/man6/$program.6.gz"
    done
}

ProgramsAreHardened() {
    local program symbol
    for program in lib/games/vantor/vantor games/vantor-relay games/vantor-server; do
        for symbol in 'FLAGS.* NOW' GNU_RELRO __stack_chk_fail '__[a-z]*_chk@' __glibcxx_assert_fail; do
            readelf --wide --dynamic --program-headers --dyn-syms "$tree/$program" | grep "$symbol" >/dev/null
        done
    done
}

options() { { "$games/$1" --help || true; } | grep -oE '^  --[a-z-]+' | tr -d ' ' | sort -u; }

completed() {  # completed PROGRAM PREVIOUS_WORD [WORD]
    COMPREPLY=()
    _vantor "$games/$1" "${3:-}" "$2"
    printf '%s\n' "${COMPREPLY[@]}"
}

CompletesEveryOption() {
    local program option
    . "$tree/share/bash-completion/completions/vantor-relay"
    for program in vantor vantor-relay vantor-server; do
        [ "$(options $program | wc -l)" -ge 4 ]
        diff <(options $program) <(completed $program $program)
    done
    diff <(sort -u <(options vantor-practice) <(options vantor-server)) <(completed vantor-practice vantor-practice)
    for option in vantor-server:--difficulty vantor-server:--spawn vantor-relay:--network; do
        diff /dev/null <(completed ${option/:/ } | grep -vwf <("$games/${option%:*}" --help | grep -oE '[a-z]+') || true)
    done
}

practise() {  # practise OPTION...: starts a match; sets match to its process
    TMPDIR=$work/tmp "$games/vantor-practice" "$@" 2>"$work/errors" &
    match=$!
    started+=("$match")
}

expect_end() {  # expect_end STATUS [ERROR]: of the match; without an error it prints none
    local status=0
    wait "$match" || status=$?
    cat "$work/errors"
    [ $status -eq "$1" ]
    grep -q "${2:-^}" "$work/errors" || [ $# -eq 1 ]
    [ $# -eq 2 ] || [ ! -s "$work/errors" ]
}

PracticeMatchPlaysAndLeavesNothing() {
    start_display
    diff /dev/null <(XAUTHORITY=/dev/null xdotool getmouselocation 2>/dev/null || true)  # the display asks for its cookie
    practise --bots 4
    eventually '[ "$(import -silent -window root ppm:- | identify -format %k ppm:-)" -gt 1000 ]'
    xdotool mousedown 1
    eventually 'grep -qs shot.obj "$work"/tmp/*/client'  # the last file that the client loads
    diff /dev/null <(grep -i error "$work"/tmp/*/client || true)
    kill $match
    expect_end 0
    diff /dev/null <(ls "$work/tmp"; pgrep -f "$games/" || true)
}

ServerBreaksOff() {
    start_display
    rm "$tree/share/games/vantor/Resources/skybox.png"
    practise --bots 2
    eventually 'grep -qs fighter.obj "$work"/tmp/*/client'
    kill -KILL "$(pgrep -P "$match" -x vantor-server)"
    expect_end 1 'practice server broke off with status 137'
    grep -q '^vantor-practice: Error.*skybox.png' "$work/errors"
    grep -q 'broke off' "$work/dialog"
}

BadStartsAreExplained() {
    DISPLAY= WAYLAND_DISPLAY= practise
    expect_end 1 'no display'
    DISPLAY= WAYLAND_DISPLAY=wayland-0 practise
    expect_end 1 'install xwayland'
    export DISPLAY=:nowhere
    practise
    expect_end 1 "Couldn't initialize SDL"
    grep -q "Couldn't initialize SDL" "$work/dialog"
    [ ! -s "$work/kept waiting" ]  # the server ended before the dialog
    practise --bots many
    expect_end 2 'bots.*many'
}

. "$(dirname "$(readlink -f "$0")")/../../packaging/session.sh"
open_session
mkdir "$work/tmp" "$work/desktop"  # with dialogs that close by themselves
cat >"$work/desktop/zenity" <<SCRIPT
#!/bin/sh
pgrep -f "$work/any place/games/vantor-server" >"$work/kept waiting"
echo "\$@" >>"$work/dialog"
SCRIPT
chmod +x "$work/desktop/zenity"
PATH=$work/desktop:$PATH
prefix="$work/first place/usr"
(umask 077 && flock "$2" cmake --install "$2" --config "$3" --prefix "$prefix" >/dev/null)
manifest=$(cat "$2/install_manifest.txt")
tree="$work/any place"  # an installation can be moved, and blanks do no harm
mv "$prefix" "$tree"
games=$tree/games
"$1"
