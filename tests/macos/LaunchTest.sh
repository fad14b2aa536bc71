#!/usr/bin/env bash
# Builds LaunchProbe.m with the start-up code of macOS, and launches it as an application bundle in GNUstep. Status 77:
# there is none.
set -euo pipefail

fail() {
    printf '%s\n' "$1" >&2
    exit "${2:-1}"
}

compile() {  # GNUstep's headers are the system's
    $(gnustep-config --variable=CC) $(gnustep-config --objc-flags | sed 's| -I/| -isystem /|g') \
        -include "$here/GNUstep.h" "$@"
}

launch() {  # launch ARGUMENT...: sets output
    local status=0
    output=$(timeout --signal KILL 30 "$bundle/Probe" "$@" 2>"$work/errors") || status=$?
    [ $status -eq 7 ] || fail "status $status: $(cat "$work/errors")"
}

expect() {  # expect FOLDER_AND_ARGUMENTS ARGUMENT...
    launch "${@:2}"
    diff - <(printf '%s\n' "$output") <<END || fail "launched with ${*:2}"
policy 0
in $1 end
late document: 0
Vantor, submenuAction:, 100000
About Vantor, orderFrontStandardAboutPanel:, 100000
-----------, <null selector>, 100000
Hide Vantor, hide:, 100000h
Hide Others, hideOtherApplications:, 180000h
Show All, unhideAllApplications:, 100000
-----------, <null selector>, 100000
Quit Vantor, terminate:, 100000q
Window, submenuAction:, 100000
Minimize, performMiniaturize:, 100000m
quit
END
}

here=$(dirname "$(readlink -f "$0")")
source=$here/../../GUIClient/macos
. "$here/../../packaging/session.sh"
open_session
ls /usr/lib/GNUstep/Bundles/libgnustep-back-*.bundle >/dev/null 2>"$work/errors" &&
    compile -x objective-c -fsyntax-only /dev/null 2>"$work/errors" ||
    fail "no GNUstep, run tools/install-dependencies macos: $(cat "$work/errors")" 77
beside=$work/Applications
bundle=$beside/Probe.app
document=$work/Bücher.txt
mkdir -p "$bundle/Resources"
cd "$work"  # where the compiler also leaves notes
compile -std=gnu11 -Werror -Wextra -Wshadow -Wconversion -Wsign-conversion -Wformat=2 -I"$here/../.." -o "$bundle/Probe" \
    "$here/LaunchProbe.m" "$source"/*.m $(gnustep-config --gui-libs) $(pkg-config --cflags --libs sdl)
cp "$source/Info.plist.in" "$bundle/Resources/Info-gnustep.plist"
printf 'GNUSTEP_USER_DEFAULTS_DIR=%s\nGNUSTEP_USER_DIR_LIBRARY=%s\n' "$work/Defaults" "$work" >GNUstep.conf
echo >"$document"
export TEMP=$work GNUSTEP_CONFIG_FILE=$work/GNUstep.conf SDL_VIDEODRIVER=dummy MALLOC_PERTURB_=90
start_display

expect "$work: -ps -psn_0_1234 -GSFilePath $document" -ps -psn_0_1234 -GSFilePath "$document"
expect "$beside: /first" -psnX
expect "$beside: /first $document" -psn_0_1234 -GSFilePath "$document"  # the desktop asks for a document

echo '{}' >"$bundle/Resources/Info-gnustep.plist"  # no name: the process's
launch
for item in About Hide Quit; do
    grep -q "^$item Probe," <<<"$output" || fail "no $item in $output"
done

# An open descriptor still starts a program whose folder is gone.
status=0
output=$(exec 9<"$bundle/Probe"; rm -r "$beside"; exec timeout --signal KILL 30 /proc/self/fd/9 -psn_0_1234 2>&1) || status=$?
[ $status -eq 134 ] && [[ $output == *'chdir (parentdir) == 0'* ]] || fail "no abort: $status $output"
