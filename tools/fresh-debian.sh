# shellcheck shell=bash
# Fresh Debians in folders, for tools/check-package, tools/check-release and tools/check-arm64.
#
# For bash scripts with `set -euo pipefail` that run as root, define `fail MESSAGE [STATUS]` and use
# packaging/session.sh.

# Debian 13 has /tmp in memory and without devices.
export TMPDIR=${TMPDIR:-/var/tmp}

# "${inside[@]}" FOLDER USER COMMAND...: runs a command there. Each command mounts /proc for itself alone. So nothing
# of this machine is mounted when the folder is deleted.
inside=(env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin:/usr/games HOME=/tmp LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive
    unshare --mount --propagation private
    sh -c 'user=$1; shift; mount -t proc proc "$0/proc" && exec chroot --userspec="$user" "$0" "$@"')

# A warning of CMake or the compiler. Other tools warn while they install themselves.
build_warning='CMake.* Warning|^[^ ]+:[0-9]+:([0-9]+:)? warning:'

# step TITLE: announces the next step, or ends an interrupted script.
step() {
    [ -z "$interrupted" ] || fail interrupted 130
    printf '\n== %s\n' "$1"
}

# require_release NAME: sets release, and debian to its number.
require_release() {
    case $1 in
        bookworm) debian='Debian 12' ;;
        trixie) debian='Debian 13' ;;
        *) fail "the release is bookworm or trixie, not '$1'; see --help" 2 ;;
    esac
    release=$1
    [ "$(id -u)" -eq 0 ] || fail 'to set up a Debian of its own it must run as root'
}

# make_debian FOLDER [OPTION...]: a Debian of that release with only what apt needs; options of mmdebstrap.
make_debian() {
    local apt_options=() file
    for file in /etc/apt/apt.conf.d/99*; do  # how this machine reaches its mirror
        [ ! -f "$file" ] || apt_options+=(--aptopt="$file")
    done
    mmdebstrap --quiet --variant=apt --components=main "${apt_options[@]}" "${@:2}" "$release" "$1"
    cp --remove-destination /etc/resolv.conf /etc/hosts "$1/etc/"
    "${inside[@]}" "$1" root apt-get update -qq
}
