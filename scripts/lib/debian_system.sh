# shellcheck shell=bash
# Sourced by scripts/package.sh: small Debian systems in a folder, made by debootstrap, in which
# something is built or installed without touching this machine. Needs root.

# Unpacked systems and what they are unpacked from; may be removed at any time.
systems=${LUMENO_SYSTEMS:-$PWD/build-package/systems}

# run_in SYSTEM COMMAND...: runs it there as root, from /. All mounts belong to that command alone
# and are gone with it, so that removing the folder later can never reach this machine's files.
run_in() {
    local system=$1
    shift
    # shellcheck disable=SC2016  # expanded by the inner shell
    unshare --mount --pid --fork --kill-child -- bash -euc '
        system=$1
        shift
        mount --make-rprivate /
        mount -t proc proc "$system/proc"
        mount --rbind -o ro /sys "$system/sys"
        mount --bind /dev "$system/dev"
        mount -t tmpfs tmpfs "$system/dev/shm"
        if [ -d /tmp/.X11-unix ]; then
            mkdir -p "$system/tmp/.X11-unix"
            mount --bind /tmp/.X11-unix "$system/tmp/.X11-unix"
        fi
        # A compiler cache of the caller serves in there too.
        if [ -n "${CCACHE_DIR:-}" ] && [ -d "$CCACHE_DIR" ]; then
            mkdir -p "$system$CCACHE_DIR"
            mount --bind "$CCACHE_DIR" "$system$CCACHE_DIR"
        fi
        cmp -s /etc/resolv.conf "$system/etc/resolv.conf" ||
            cat /etc/resolv.conf >"$system/etc/resolv.conf"
        cd "$system"
        exec chroot . "$@"' run_in "$system" "$@"
}

# The mirror this machine gets its Debian packages from; nothing where it is no Debian.
configured_mirror() {
    # shellcheck disable=SC2016  # apt fills these in
    apt-get indextargets --format '$(ORIGIN) $(REPO_URI)' 'Identifier: Packages' 2>/dev/null |
        sed -n 's/^Debian //p' | grep -v security | head -n 1
}

# base_system SUITE: prints the name of an archive of the smallest system of that release.
base_system() {
    local suite=$1 archive=$systems/$1.tar place mirror
    if [ ! -f "$archive" ]; then
        say "Making the smallest $suite system"
        mkdir -p "$systems"
        place=$systems/$suite.new
        rm -rf "$place"
        mirror=$(configured_mirror)
        debootstrap --variant=minbase "$suite" "$place" ${mirror:+"$mirror"} >"$systems/$suite.log" 2>&1 || {
            tail -n 5 "$systems/$suite.log" >&2
            say "No $suite system could be made; all of the output is in $systems/$suite.log"
            return 1
        }
        # How this machine reaches its mirror: a proxy, or an archive whose index is old.
        apt-config dump | grep -E '^Acquire::(Check|http|https|Retries)' \
            >"$place/etc/apt/apt.conf.d/00caller" || true
        tar -C "$place" -cf "$archive.new" .
        mv "$archive.new" "$archive"
        rm -rf "$place"
    fi
    echo "$archive"
}

# unpack_system SUITE FOLDER: a fresh system of that release.
unpack_system() {
    local archive
    archive=$(base_system "$1")
    rm -rf "$2"
    mkdir -p "$2"
    tar -C "$2" -xf "$archive"
}

# Every path of a system with what it is, for comparing before and after: one line each.
#
#   system_listing SYSTEM [find's format]
system_listing() {
    (cd "$1" && find . \( -path ./proc -o -path ./sys -o -path ./dev -o -path ./tmp/.X11-unix \) -prune \
        -o -printf "${2:-%p %y %m\n}" | LC_ALL=C sort)
}
