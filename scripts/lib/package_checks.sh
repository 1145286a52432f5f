# shellcheck shell=bash
# Sourced by scripts/package.sh: what must be true of the package. Every function ends the script
# with one sentence at the first thing that is not.

refuse() {
    say "package: $1"
    exit 1
}

# silent NAME COMMAND...: the command must succeed and say nothing.
silent() {
    local name=$1 output
    shift
    output=$("$@" 2>&1) || refuse "$name failed: $output"
    [ -z "$output" ] || refuse "$name: $output"
    say "  $name: nothing to say"
}

# expected_files: the list that is kept, for this machine and this sensor library.
expected_files() {
    local private='#private'
    [ "$(dpkg-deb -c "$1" | grep -c 'libfreenect2\.so')" -eq 0 ] || private='private'
    sed -e '/^#/d' -e "s/^$private: //" -e '/^private: /d' \
        -e "s|@MULTIARCH@|$(dpkg-architecture -qDEB_HOST_MULTIARCH)|" packaging/installed-files.txt
}

# check_files PACKAGE: what can be seen without installing it.
check_files() {
    local package=$1 stage page
    say "Checking $package"
    stage=$(mktemp -d)
    # shellcheck disable=SC2064  # this folder, now
    trap "rm -rf '$stage'" EXIT
    diff -u --label expected <(expected_files "$package" | LC_ALL=C sort) --label packed \
        <(dpkg-deb -c "$package" | awk '$1 !~ /^d/ { print $1, $6 }' | sed 's/ \./ /' | LC_ALL=C sort) >&2 ||
        refuse "the files are not those of packaging/installed-files.txt"
    say "  files: as expected"
    dpkg-deb -x "$package" "$stage"

    silent desktop-file-validate desktop-file-validate "$stage"/usr/share/applications/*.desktop
    appstreamcli validate --pedantic --no-net --no-color "$stage"/usr/share/metainfo/*.xml >&2 ||
        refuse "appstreamcli finds fault with the metainfo"
    for page in "$stage"/usr/share/man/man1/*; do
        silent "man --warnings ${page##*/}" manual_warnings "$page"
    done
    # The command that it starts is in the stage only.
    sed -i "s|^ExecStart=|&$stage|" "$stage"/usr/lib/systemd/user/*.service
    silent "systemd-analyze --user verify" unit_warnings "$stage"/usr/lib/systemd/user/*.service
    check_icons "$stage/usr/share/icons/hicolor"
    dpkg-deb -f "$package" Depends | grep -q opencv-data || refuse "opencv-data is not among Depends"
    dpkg-deb -f "$package" Depends | grep -q libqt6widgets6 ||
        refuse "the libraries it needs are not among Depends"
    lintian --fail-on error,warning --tag-display-limit 0 "$package" >&2 || refuse "lintian finds fault"
    say "  lintian: no error, no warning"
}

manual_warnings() { LC_ALL=C.UTF-8 man --warnings -E UTF-8 -l -Tutf8 -Z "$1" >/dev/null; }

unit_warnings() {
    local runtime
    runtime=$(mktemp -d)
    # Units of the machine that it is run on are not ours to judge.
    XDG_RUNTIME_DIR=$runtime systemd-analyze --user --man=no --recursive-errors=one verify "$1" 2>&1 || {
        rm -rf "$runtime"
        return 1
    }
    rm -rf "$runtime"
}

check_icons() {
    local size icon
    for size in 48 128 256; do
        icon=$1/${size}x${size}/apps/lumeno-control-center.png
        file "$icon" | grep -q "PNG image data, $size x $size," || refuse "$icon is not $size pixels wide"
    done
    say "  icons: of the sizes that their folders promise"
}

# check_installed SUITE PACKAGE FOLDER: in a fresh minimal system of that release. The folder gets the
# picture of the window.
check_installed() {
    # shellcheck disable=SC2154  # of debian_system.sh
    local suite=$1 package=$2 out=$3 system=$systems/$1-installed work
    say "Installing $package into a fresh $suite system"
    work=$(mktemp -d)
    # shellcheck disable=SC2064
    trap "[ ! -f '$work/xvfb' ] || kill \$(cat '$work/xvfb') 2>/dev/null || true; rm -rf '$work'" EXIT
    unpack_system "$suite" "$system"
    cp "$package" "$system/root/package.deb"
    prepare_system "$system" "$package" >"$work/prepare.log" 2>&1 || {
        tail -n 20 "$work/prepare.log" >&2
        refuse "what the package depends on cannot be installed on $suite"
    }

    system_listing "$system" >"$work/before"
    run_in "$system" env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends \
        /root/package.deb >"$work/install.log" 2>&1 || {
        tail -n 20 "$work/install.log" >&2
        refuse "the package cannot be installed on $suite"
    }
    say "  installed"
    check_commands "$system"
    start_from_menu "$system" "$work" "$out"

    run_in "$system" env DEBIAN_FRONTEND=noninteractive apt-get purge -y -q lumeno-control-center \
        >"$work/purge.log" 2>&1 || {
        tail -n 20 "$work/purge.log" >&2
        refuse "the package cannot be purged"
    }
    system_listing "$system" | without_bookkeeping >"$work/after"
    diff -u --label "before the installation" <(without_bookkeeping <"$work/before") \
        --label "after the purge" "$work/after" >&2 || refuse "the purge left something, or took too much"
    say "  purged: nothing is left"
    rm -rf "$system"
}

# Everything that the package needs and a person, before the package itself comes.
prepare_system() {
    local system=$1 depends
    depends=$(dpkg-deb -f "$2" Depends)
    run_in "$system" apt-get update -q
    run_in "$system" env DEBIAN_FRONTEND=noninteractive apt-get satisfy -y -q --no-install-recommends \
        "$depends"
    run_in "$system" useradd --create-home --uid 1000 --shell /bin/sh person
    run_in "$system" install -d -o person -g person -m 700 /run/user/1000
}

# Lines of what apt, dpkg and a person's own data are expected to change.
without_bookkeeping() {
    grep -vE '^\./(var/lib/(dpkg|apt)|var/cache|var/log|home/person)(/| )'
}

# as_person SYSTEM COMMAND...: from /, with nothing in the environment that a fresh login lacks.
as_person() {
    local system=$1
    shift
    run_in "$system" setpriv --reuid 1000 --regid 1000 --clear-groups env -i HOME=/home/person \
        USER=person PATH=/usr/local/bin:/usr/bin:/bin LANG=C.UTF-8 XDG_RUNTIME_DIR=/run/user/1000 \
        ${DISPLAY:+"DISPLAY=$DISPLAY"} "$@"
}

# Every command answers --help and --version with status 0 and has a manual page.
check_commands() {
    local system=$1 command
    for command in "$system"/usr/bin/lumeno-*; do
        command=${command##*/}
        as_person "$system" "$command" --help | grep -q . || refuse "$command --help fails"
        as_person "$system" "$command" --version | grep -q '[0-9]\.[0-9]' ||
            refuse "$command --version fails"
        [ -f "$system/usr/share/man/man1/$command.1.gz" ] || refuse "$command has no manual page"
        say "  $command: answers --help and --version"
    done
}

# start_from_menu SYSTEM WORK OUT: starts what the desktop entry names, looks at the window, and at
# what was written.
start_from_menu() {
    local system=$1 work=$2 out=$3 status=0 entry command data=./home/person/.local/share
    entry=$system/usr/share/applications/lumeno-control-center.desktop
    command=$(sed -n 's/^Exec=//p' "$entry" | head -n 1)
    mkdir -p "$work/screen"
    Xvfb -displayfd 3 -screen 0 1600x1000x24 -ac -nolisten tcp -fbdir "$work/screen" \
        3>"$work/display" 2>/dev/null &
    echo $! >"$work/xvfb"
    for _ in $(seq 200); do
        [ ! -s "$work/display" ] || break
        sleep 0.1
    done
    [ -s "$work/display" ] || refuse "Xvfb did not start"
    DISPLAY=:$(cat "$work/display")
    export DISPLAY

    system_listing "$system" '%p %y %m %s %T@\n' >"$work/before-start"
    # shellcheck disable=SC2086  # a command line: a word each
    as_person "$system" $command --auto-quit-ms 8000 >"$work/program.log" 2>&1 &
    local program=$!
    xdotool search --sync --onlyvisible --name '^Lumeno Control Center$' >/dev/null &
    local window=$!
    (sleep 60 && kill "$window") 2>/dev/null &
    wait "$window" || refuse "no window within a minute: $(tail -n 5 "$work/program.log")"
    sleep 3
    xwdtopng "$work/screen/Xvfb_screen0" "$out/window.png"
    wait "$program" || status=$?
    [ "$status" -eq 0 ] || refuse "the program ended with $status: $(tail -n 5 "$work/program.log")"
    system_listing "$system" '%p %y %m %s %T@\n' >"$work/after-start"

    # Folders change when something is made in them; the two on the way may have to be made.
    local written
    written=$(diff "$work/before-start" "$work/after-start" | sed -n 's/^[<>] //p' |
        grep -vE "^$data/lumeno-control-center[ /]" |
        grep -vE "^(./home/person|./home/person/.local|$data) d " || true)
    [ -z "$written" ] || refuse "written outside of the data folder: $written"
    grep -q "^$data/lumeno-control-center d 700 " "$work/after-start" ||
        refuse "the data folder was not made for its owner alone"
    say "  started by \"$command\" from /: a window, status 0, written below its data folder only"
    cp "$work/program.log" "$out/program.log"
    kill "$(cat "$work/xvfb")"
    rm -f "$work/xvfb"
    unset DISPLAY
}

# The picture of a screen as Xvfb keeps it, as PNG.
xwdtopng() { convert "xwd:$1" "$2"; }
