#!/usr/bin/env bash
# usage: InstalledTreeTest.sh TEST BUILD_FOLDER CONFIGURATION: runs a function below in a fresh installation.
set -euo pipefail

fail() {
    printf '%s\n' "$1" >&2
    exit 1
}

expect_same() { # expect_same WHAT EXPECTED ACTUAL
    [ -n "$2" ] && [ "$2" = "$3" ] || fail "$1: $(diff <(printf '%s\n' "$2") <(printf '%s\n' "$3"))"
}

# eventually CONDITION: waits until the shell text succeeds.
eventually() {
    local tries=200
    until eval "$1"; do
        [ $((tries -= 1)) -gt 0 ] || fail "never: $1"
        sleep 0.1
    done
}

expect_none() { # expect_none FAULT COMMAND...: the command prints nothing
    local output
    output=$("${@:2}")
    [ -z "$output" ] || fail "$1: $output"
}

InstallsBelowAnyPrefix() {
    expect_same manifest "$(cd "$tree" && find . ! -type d | sort)" "$(sed "s|^$prefix|.|" <<<"$manifest" | sort)"
    expect_none 'a link leads nowhere' find -L "$tree" -type l
    ! find "$tree" -type l -exec readlink -f {} + | grep -v "^$tree/" || fail 'a link leaves the installation'
    expect_none 'not everyone may read' find "$tree" ! -type l ! -perm -a+r
    expect_none 'not everyone may enter' find "$tree" -type d ! -perm -a+x
    local program
    for program in vantor vantor-practice vantor-relay vantor-server; do
        zgrep -qF '\-\-help' "$tree/share/man/man6/$program.6.gz" || fail "no manual of $program"
    done
}

ProgramsAreHardened() {
    local program symbol symbols
    for program in lib/games/vantor/vantor games/vantor-relay games/vantor-server; do
        symbols=$(readelf --wide --dynamic --program-headers --dyn-syms "$tree/$program")
        for symbol in 'FLAGS.* NOW' GNU_RELRO __stack_chk_fail '__[a-z]*_chk@' __glibcxx_assert_fail; do
            grep -q "$symbol" <<<"$symbols" || fail "$program has no $symbol"
        done
    done
}

CompletesEveryOption() {
    . "$tree/share/bash-completion/completions/vantor-relay"
    completed() { # completed PROGRAM PREVIOUS_WORD [WORD]
        COMPREPLY=()
        _vantor "$games/$1" "${3:-}" "$2"
        printf '%s\n' "${COMPREPLY[@]}"
    }
    options() { { "$games/$1" --help || true; } | grep -oE '^  --[a-z-]+' | tr -d ' '; }
    local program option value
    for program in vantor vantor-relay vantor-server; do
        expect_same "options of $program" "$(options $program | sort -u)" "$(completed $program $program)"
    done
    expect_same 'options of vantor-practice' "$( (options vantor-practice; options vantor-server) | sort -u)" \
        "$(completed vantor-practice vantor-practice)"
    for option in vantor-server:--difficulty vantor-server:--spawn vantor-relay:--network; do
        for value in $(completed ${option/:/ }); do
            "$games/${option%:*}" --help | grep -qw "$value" || fail "no $option $value"
        done
    done
    COMP_WORDS=(vantor-server --spawn = g) COMP_CWORD=3
    expect_same 'a value after =' grid "$(completed vantor-server = g)"
    HOME=$tree games='~/games'
    expect_same 'an option of a program at home' --replay "$(completed vantor-relay vantor-relay --rep)"
}

# practise OPTION...: starts a match; sets match to its process.
practise() {
    TMPDIR=$work/tmp "$games/vantor-practice" "$@" 2>"$work/errors" &
    match=$!
    started+=("$match")
}

# expect_end STATUS TEXT...: of a match, and what it prints.
expect_end() {
    local status=0 text
    wait "$match" || status=$?
    [ $status -eq "$1" ] || fail "status $status, $(cat "$work/errors")"
    for text in "${@:2}"; do
        grep -q "$text" "$work/errors" || fail "no '$text' in $(cat "$work/errors")"
    done
}

PracticeMatchPlaysAndLeavesNothing() {
    start_display
    ! DISPLAY=$DISPLAY XAUTHORITY=/dev/null xdotool key Escape 2>/dev/null || fail 'the display asks for no cookie'
    practise --bots 4
    eventually '[ "$(import -silent -window root ppm:- | identify -format %k ppm:-)" -gt 1000 ]'
    xdotool mousedown 1
    eventually 'grep -qs shot.obj "$work"/tmp/*/client'  # the last file that the client loads
    ! grep -i error "$work"/tmp/*/client || fail 'the client misses something'
    kill $match
    expect_end 0
    expect_none 'left over' ls "$work/tmp"
    ! pgrep -f "$games/" || fail 'a process was left running'
}

ServerBreaksOff() {
    start_display
    rm "$tree/share/games/vantor/Resources/skybox.png"
    practise --bots 2
    eventually 'grep -qs fighter.obj "$work"/tmp/*/client'
    kill -KILL "$(pgrep -P "$match" -x vantor-server)"
    expect_end 1 'practice server broke off with status 137' '^vantor-practice: Error.*skybox.png'
    grep -q 'broke off' "$work/dialog" || fail 'no dialog'
}

EarlyInterruptIsNoError() {
    printf '#!/bin/sh\necho starting\nexec sleep 30\n' >"$games/vantor-server"
    DISPLAY=:nowhere practise
    eventually 'grep -qs starting "$work"/tmp/*/"practice server"'
    kill "$match"
    expect_end 0
    [ ! -s "$work/errors" ] || fail "$(cat "$work/errors")"
}

BadStartsAreExplained() {
    unset DISPLAY WAYLAND_DISPLAY
    practise
    expect_end 1 'no display'
    WAYLAND_DISPLAY=wayland-0 practise
    expect_end 1 'install xwayland'
    export DISPLAY=:nowhere
    practise
    expect_end 1 "Couldn't initialize SDL"
    grep -q "Couldn't initialize SDL" "$work/dialog" || fail 'no dialog'
    [ ! -s "$work/kept waiting" ] || fail 'the server waits until the dialog is closed'
    practise --bots many
    expect_end 2 "bots.*many"
}

build=$2
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
(umask 077 && flock "$build" cmake --install "$build" --config "$3" --prefix "$prefix" >/dev/null)
manifest=$(cat "$build/install_manifest.txt")
tree="$work/any place"  # an installation can be moved, and blanks do no harm
mv "$prefix" "$tree"
games=$tree/games
"$1"
