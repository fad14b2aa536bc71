#!/usr/bin/env bash
# usage: LaunchTest.sh PROBE INFO_PLIST: launches LaunchProbe.m as an application bundle in GNUstep.
set -euo pipefail

fail() {
    printf '%s\n' "$1" >&2
    exit 1
}

end_daemons() {  # of GNUstep, which stay for some seconds
    local environment
    for environment in $(grep -lszF "GNUSTEP_CONFIG_FILE=$work" /proc/[0-9]*/environ); do
        kill "${environment//[^0-9]/}" 2>/dev/null || true
    done
}

launch() {  # launch ARGUMENT...: sets output
    local status=0
    output=$(timeout --signal KILL 30 "$bundle/Probe" "$@" 2>"$work/errors") || status=$?
    [ $status -eq 7 ] || fail "status $status: $(cat "$work/errors")"
}

expect() {  # expect FOLDER_AND_ARGUMENTS ARGUMENT...
    launch "${@:2}"
    diff - <(printf '%s\n' "$output") <<<"policy 0
in $1 end
$(<"$here/launch.txt")" || fail "launched with ${*:2}"
}

here=$(dirname "$(readlink -f "$0")")
. "$here/../../packaging/session.sh"
open_session
trap 'end_daemons; close_session' EXIT
start_display
bundle=$work/Applications/Probe.app
mkdir -p "$bundle/Resources"
cp "$1" "$bundle/Probe"
cp "$2" "$bundle/Resources/Info-gnustep.plist"
printf 'GNUSTEP_USER_DEFAULTS_DIR=%s\nGNUSTEP_USER_DIR_LIBRARY=%s\n' "$work/Defaults" "$work" >"$work/GNUstep.conf"
export TEMP=$work GNUSTEP_CONFIG_FILE=$work/GNUstep.conf SDL_VIDEODRIVER=dummy MALLOC_PERTURB_=90
document=$work/Bücher.txt
echo >"$document"
beside=$work/Applications

expect "$PWD:"
expect "$PWD: --host -psn_0_1234 --port 5" --host -psn_0_1234 --port 5
expect "$beside: /first" -psnX --host 127.0.0.1
expect "$PWD: -ps" -ps
expect "$beside: /first $document" -psn_0_1234 -GSFilePath "$document"  # the desktop asks for a document
expect "$PWD: -GSFilePath $document" -GSFilePath "$document"

echo '{}' >"$bundle/Resources/Info-gnustep.plist"  # no name: the process's
launch
for item in About Hide Quit; do
    grep -q "^$item Probe," <<<"$output" || fail "no $item in $output"
done

# An open descriptor still starts a program whose folder is gone.
status=0
output=$(exec 9<"$bundle/Probe"; rm -r "$beside"; exec timeout --signal KILL 30 /proc/self/fd/9 -psn_0_1234 2>&1) || status=$?
[ $status -eq 134 ] && [[ $output == *'chdir (parentdir) == 0'* ]] || fail "no abort: $status $output"
