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

expect() {  # expect FOLDER_AND_ARGUMENTS ARGUMENT...: launches
    diff - <(timeout --signal KILL 30 "$bundle/Probe" "${@:2}" 2>"$work/errors" || echo "status $?") <<END ||
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
status 7
END
        fail "launched with ${*:2}: $(cat "$work/errors")"
}

here=$(dirname "$(readlink -f "$0")")
. "$here/../../packaging/session.sh"
open_session
# GNUstep starts daemons, which stay for some seconds.
trap 'kill $(grep -lszF "$work/GNUstep.conf" /proc/[0-9]*/environ | tr -dc "0-9\n") 2>/dev/null || true; close_session' EXIT
cd "$work"  # where the compiler leaves notes
ls -d "$(gnustep-config --variable=GNUSTEP_SYSTEM_LIBRARY)"/Bundles/libgnustep-*.bundle >/dev/null 2>"$work/errors" &&
    compile -x objective-c -fsyntax-only /dev/null 2>"$work/errors" ||
    fail "no GNUstep, run tools/install-dependencies macos: $(cat "$work/errors")" 77
beside=$work/Applications bundle=$work/Applications/Probe.app document=$work/Bücher.txt
install -D "$here/../../GUIClient/macos/Info.plist.in" "$bundle/Resources/Info-gnustep.plist"
compile -std=gnu11 -Werror -Wextra -Wshadow -Wconversion -Wsign-conversion -Wformat=2 -I"$here/../.." -o "$bundle/Probe" \
    "$here/LaunchProbe.m" "$here"/../../GUIClient/macos/*.m $(gnustep-config --gui-libs) $(pkg-config --cflags --libs sdl)
printf 'GNUSTEP_USER_DEFAULTS_DIR=%s\nGNUSTEP_USER_DIR_LIBRARY=%s\n' "$work/Defaults" "$work" >GNUstep.conf
export TEMP=$work GNUSTEP_CONFIG_FILE=$work/GNUstep.conf SDL_VIDEODRIVER=dummy MALLOC_PERTURB_=90
start_display

expect "$work: -ps -psn_0_1234 -GSFilePath $document" -ps -psn_0_1234 -GSFilePath "$document"
expect "$beside: /first" -psnX
expect "$beside: /first $document" -psn_0_1234 -GSFilePath "$document"  # the desktop asks for a document
