#!/usr/bin/env bash
# Fails when a source file is not formatted, or shellcheck finds something in a script or clang-tidy
# in a source file. Arguments are files for clang-tidy; without any it looks at every source file of
# the last build, and with --quick at none.
# shellcheck source=lib/setup.sh
. "$(dirname "${BASH_SOURCE[0]}")/lib/setup.sh"

require_packages "${lint_packages[@]}"
git ls-files -- '*.cpp' '*.h' '*.hpp' | xargs clang-format --dry-run -Werror
say "Formatting is clean."

git ls-files -- '*.sh' .ci/run | xargs shellcheck
say "The scripts are clean."
[ "${1:-}" != --quick ] || exit 0

require_packages "${build_packages[@]}"
# clang-tidy reads the compile commands, and the files that the build generates.
build_preset release build
if [ $# -eq 0 ]; then
    mapfile -t sources < <(git ls-files -- 'src/*.cpp' 'tools/*.cpp' 'tests/*.cpp' 'virtual_kinect/*.cpp')
    set -- "${sources[@]}"
fi
printf '%s\n' "$@" | xargs -P 2 -n 4 clang-tidy -p build --quiet 2>/dev/null
say "clang-tidy is clean."
