#!/usr/bin/env bash
# usage: InstalledTreeTest.sh TEST BUILD_FOLDER: runs one of the functions below in a fresh installation.
set -euo pipefail

fail() {
    printf '%s\n' "$1" >&2
    exit 1
}

sorted() { printf '%s\n' "$@" | sort -u; }

options_in_help() { "$games/$1" --help | grep -oE '^  --[a-z-]+' | tr -d ' ' | sort -u || true; }

manual_of() { zcat "$tree/share/man/man6/$1.6.gz" | sed 's/\\-/-/g'; }

# about_in_manual PROGRAM OPTION: what it says of the option as one line, with the words in bold in brackets.
about_in_manual() {
    manual_of "$1" | awk -v option="$2" '
        /^\.SH/ || /^\.BI? --/ { inside = $2 == option; next }
        inside { print /^\.B/ ? "[" $2 "]" : $0 }' | tr '\n' ' '
}

# completed PROGRAM PREVIOUS_WORD [WORD]
completed() {
    COMPREPLY=()
    _vantor "$games/$1" "${3:-}" "$2"
    sorted "${COMPREPLY[@]}"
}

expect_same() {
    [ -n "$2" ] && [ "$2" = "$3" ] || fail "$1: $(diff <(printf '%s\n' "$2") <(printf '%s\n' "$3"))"
}

EveryOptionIsInTheManualAndCompleted() {
    . "$tree/share/bash-completion/completions/vantor-relay"
    local program option value words own defaults=0
    for program in vantor vantor-practice vantor-relay vantor-server; do
        own=$(options_in_help $program)
        expect_same "help and manual of $program" "$own" \
            "$(manual_of $program | sed -n 's/^\.BI\? \(--[a-z-]*\).*/\1/p' | sort -u)"
        [ $program != vantor-practice ] || own=$(sorted $own $(options_in_help vantor-server))
        expect_same "help and completion of $program" "$own" "$(completed $program $program)"
        while read -r option value; do # --option ARG (=X) is "X by default" or "X (the default)" in the manual
            [[ $(about_in_manual $program "$option") =~ (^|[[ ])"$value"]?\ (by default|\(the default) ]] ||
                fail "the manual of $program does not say that $value is the default of $option"
            defaults=$((defaults + 1))
        done < <("$games/$program" --help | sed -n 's/^  \(--[a-z-]*\) .*(=\([^)]*\)).*/\1 \2/p')
    done
    [ $defaults -eq 12 ] || fail "the help names $defaults defaults"
    for option in vantor-server:--difficulty vantor-server:--spawn vantor-relay:--network; do
        program=${option%:*} option=${option#*:}
        words=$(completed "$program" "$option")
        for value in $words; do
            grep -qw "$value" <<<"$("$games/$program" --help)" || fail "$program knows no $option $value"
        done
        expect_same "values in completion and manual of $option" "$words" \
            "$(about_in_manual "$program" "$option" | grep -oE '\[[a-z]+\]' | tr -d '[]' | sort -u)"
    done
    COMP_WORDS=(vantor-server --spawn = g) COMP_CWORD=3
    expect_same 'completion after =' grid "$(completed vantor-server = g)"
    HOME=$tree games='~/games'
    expect_same "completion in one's home" --replay "$(completed vantor-relay vantor-relay --rep)"
}

# practise OPTION...: starts a match; sets match to its process.
practise() {
    mkdir -p "$work/tmp"
    TMPDIR=$work/tmp "$games/vantor-practice" "$@" 2>"$work/said" &
    match=$!
    started+=("$match")
}

# expect_said STATUS TEXT...: of a match that ends.
expect_said() {
    local status=0 text
    wait "$match" || status=$?
    [ $status -eq "$1" ] || fail "status $status, $(cat "$work/said")"
    for text in "${@:2}"; do
        grep -q "$text" "$work/said" || fail "not told '$text', but $(cat "$work/said")"
    done
}

# await_file PATH TEXT: until the file, whose path may be a pattern, has it.
await_file() {
    local tries=200
    until grep -qs "$2" $1; do
        [ $((tries -= 1)) -gt 0 ] || fail "no $2 in $1"
        sleep 0.1
    done
}

colours() { import -silent -window root ppm:- | identify -format %k ppm:-; }

APracticeMatchPlaysAndLeavesNothing() {
    ! find "$tree" -type l -exec readlink -f {} + | grep -v "^$tree/" || fail 'a link leaves the installation'
    start_display
    practise --bots 4
    local tries=60
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

AServerThatBreaksOffAndWhatTheClientMissedAreReported() {
    start_display
    rm "$tree/share/games/vantor/Resources/skybox.png"
    practise --bots 2
    IFS= await_file "$work/tmp/*/client" fighter.obj
    kill -KILL "$(pgrep -P "$match" -x vantor-server)"
    expect_said 1 'practice server broke off with status 137' '^vantor-practice: Error.*skybox.png'
    grep -q 'broke off' "$work/dialog" || fail 'no dialog'
}

AnInterruptBeforeTheClientStartsIsNoError() {
    printf '#!/bin/sh\necho starting\nexec sleep 30\n' >"$games/vantor-server"
    DISPLAY=:nowhere practise
    IFS= await_file "$work/tmp/*/practice server" starting
    kill "$match"
    expect_said 0
    [ ! -s "$work/said" ] || fail "$(cat "$work/said")"
}

BadStartsAreExplained() {
    unset DISPLAY WAYLAND_DISPLAY
    practise
    expect_said 1 'no display'
    WAYLAND_DISPLAY=wayland-0 practise
    expect_said 1 'install xwayland'
    export DISPLAY=:nowhere
    practise
    expect_said 1 "Couldn't initialize SDL"
    grep -q "Couldn't initialize SDL" "$work/dialog" || fail 'no dialog'
    [ ! -s "$work/kept waiting" ] || fail 'the server waits for the dialog to be closed'
    practise --bots many
    expect_said 2 "a whole number from 0 to 64, not 'many'"
}

. "$(dirname "$(readlink -f "$0")")/../../packaging/session.sh"
open_session
mkdir "$work/desktop"  # whose dialogs nobody needs to close
cat >"$work/desktop/zenity" <<SCRIPT
#!/bin/sh
pgrep -f "$work/any place/games/vantor-server" >"$work/kept waiting"
echo "\$@" >>"$work/dialog"
SCRIPT
chmod +x "$work/desktop/zenity"
PATH=$work/desktop:$PATH
cmake --install "$2" --prefix "$work/first place" >/dev/null
tree="$work/any place"  # it may be moved, and blanks do no harm
mv "$work/first place" "$tree"
games=$tree/games
"$1"
