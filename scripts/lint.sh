#!/usr/bin/env bash
# Fails when a source file is not formatted or clang-tidy finds something. Arguments are files for
# clang-tidy; without any it looks at every source file of the last build.
. "$(dirname "${BASH_SOURCE[0]}")/lib/setup.sh"

require_packages "${build_packages[@]}" "${lint_packages[@]}"
git ls-files -- '*.cpp' '*.h' '*.hpp' | xargs clang-format --dry-run -Werror
say "Formatting is clean."

# clang-tidy reads the compile commands, and the files that the build generates.
build_preset release build
[ $# -gt 0 ] || set -- $(git ls-files -- 'src/*.cpp' 'tests/*.cpp' 'virtual_kinect/*.cpp')
printf '%s\n' "$@" | xargs -P 2 -n 4 clang-tidy -p build --quiet 2>/dev/null
say "clang-tidy is clean."
