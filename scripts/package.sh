#!/usr/bin/env bash
# Makes a Debian package of the program, and proves that it installs, runs and goes away cleanly.
#
#   scripts/package.sh                           makes it: build-package/lumeno-control-center_*.deb
#   scripts/package.sh --check                   makes and proves it for this machine's release
#   scripts/package.sh --check --suite RELEASE   builds, tests, makes and proves it in systems of
#                                                that release (bookworm or trixie), made for it
#       --without-tests                          leaves out the test suite
#
# What --check looks at: the files are those of packaging/installed-files.txt; the desktop entry, the
# metainfo, the manual pages, the user service and the package as a whole pass their own checkers
# without an error or a warning; in a fresh minimal system it installs, is started as the menu does it
# from / with an empty home, shows its window, ends with 0 and has written below its data folder only;
# purged, nothing of it is left. The window's picture is kept beside the package.
#
# --check needs root, since it makes systems with debootstrap; they are kept in build-package/systems,
# or in the folder that LUMENO_SYSTEMS names. The folder that CCACHE_DIR names, if it is set, is a
# compiler cache in them, too.
# shellcheck source=lib/setup.sh
. "$(dirname "${BASH_SOURCE[0]}")/lib/setup.sh"
# shellcheck source=lib/debian_system.sh
. scripts/lib/debian_system.sh
# shellcheck source=lib/package_checks.sh
. scripts/lib/package_checks.sh

usage() {
    sed -n '2,/^# shellcheck/{/^# shellcheck/d;s/^# \{0,1\}//;p}' scripts/package.sh
}

# make_package: prints the package's path.
make_package() {
    require_packages "${build_packages[@]}" "${package_packages[@]}"
    build_preset package build-package
    rm -f build-package/*.deb
    (cd build-package && cpack -G DEB) >build-package/cpack.log 2>&1 || {
        tail -n 20 build-package/cpack.log >&2
        return 1
    }
    local package
    package=$(echo build-package/*.deb)
    say "Made $package, with this sensor library: $(sensor_library)"
    echo "$package"
}

sensor_library() { sed -n 's/^LUMENO_SENSOR:[A-Z]*=//p' build-package/CMakeCache.txt; }

this_release() { sed -n 's/^VERSION_CODENAME=//p' /etc/os-release; }

# check_in_suite RELEASE: builds and tests there as a newcomer would, and proves what it makes here.
check_in_suite() {
    local suite=$1 system=$systems/$1-build out=build-package/$1 package
    [ -d "$system/src" ] || {
        unpack_system "$suite" "$system"
        run_in "$system" apt-get update -q >"$systems/$suite-build.log" 2>&1
        mkdir -p "$system/src"
    }
    # Tracked files and new ones, as they are now; of an earlier run only what it built.
    find "$system/src" -mindepth 1 -maxdepth 1 ! -name 'build*' -exec rm -rf {} +
    git ls-files -z --cached --others --exclude-standard | tar -c --null -T - | tar -x -C "$system/src"
    local launcher=()
    if [ -n "${CCACHE_DIR:-}" ]; then
        run_in "$system" apt-get install -y -q --no-install-recommends ccache \
            >>"$systems/$suite-build.log" 2>&1
        launcher=(CMAKE_CXX_COMPILER_LAUNCHER=ccache "CCACHE_DIR=$CCACHE_DIR" CCACHE_BASEDIR=/src)
    fi
    local inside=(run_in "$system" env -i HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8
        "${launcher[@]}")
    [ "$with_tests" = no ] || "${inside[@]}" /src/scripts/test.sh
    "${inside[@]}" /src/scripts/package.sh --check-files
    mkdir -p "$out"
    rm -f "$out"/*.deb
    cp "$system"/src/build-package/*.deb "$out"
    package=$(echo "$out"/*.deb)
    check_installed "$suite" "$package" "$out"
}

check='' suite='' with_tests=yes
while [ $# -gt 0 ]; do
    case $1 in
    --check) check=all ;;
    --check-files) check=files ;;
    --without-tests) with_tests=no ;;
    --suite)
        suite=${2:?--suite wants the name of a release}
        shift
        ;;
    -h | --help) usage && exit 0 ;;
    *)
        say "scripts/package.sh: unknown argument '$1'; --help lists them"
        exit 2
        ;;
    esac
    shift
done

if [ -n "$check" ] && [ "$check" != files ] && [ "$(id -u)" -ne 0 ]; then
    say "scripts/package.sh --check makes systems of its own and needs root"
    exit 1
fi
if [ -n "$suite" ]; then
    [ "$check" = all ] || {
        say "scripts/package.sh: --suite goes with --check"
        exit 2
    }
    require_packages "${system_packages[@]}"
    check_in_suite "$suite"
else
    package=$(make_package)
    if [ -n "$check" ]; then
        require_packages "${check_packages[@]}"
        check_files "$package"
    fi
    if [ "$check" = all ]; then
        require_packages "${system_packages[@]}"
        check_installed "$(this_release)" "$package" build-package
    fi
fi
if [ "$check" = all ]; then
    say "All checks of the package passed."
fi
