#!/usr/bin/env bash
# Fails when a source file is not formatted, clang-tidy finds something in a source file, shellcheck
# finds something in a script, or a file includes one from a higher floor. Arguments are files for
# clang-tidy; without any it looks at every source file, and with --quick at none.
# shellcheck source=lib/setup.sh
. "$(dirname "${BASH_SOURCE[0]}")/lib/setup.sh"

require_packages "${lint_packages[@]}"

# Every version of clang-format has its own idea of the same style, and every version of clang-tidy
# its own checks under the same names; the tree follows Debian 12's.
is_version_14() {
    grep -q 'version 14\.' <<<"$("$1" --version)"
}

if is_version_14 clang-format; then
    git ls-files -- '*.cpp' '*.h' '*.hpp' | xargs clang-format --dry-run -Werror
    say "Formatting is clean."
else
    say "Formatting is not checked: that takes clang-format 14."
fi

if [ "${1:-}" = --quick ]; then
    say "clang-tidy is left out."
elif is_version_14 clang-tidy; then
    require_packages "${build_packages[@]}"
    # clang-tidy reads the compile commands, and the files that the build generates.
    build_preset release build
    if [ $# -eq 0 ]; then
        # What is not built with this machine's sensor library cannot be looked at.
        mapfile -t sources < <(git ls-files -- 'src/*.cpp' 'tools/*.cpp' 'tests/*.cpp' \
            'virtual_kinect/*.cpp' | while read -r source; do
            ! grep -qF "/$source\"" build/compile_commands.json || echo "$source"
        done)
        set -- "${sources[@]}"
    fi
    printf '%s\n' "$@" | xargs -P "$(nproc)" -n 4 clang-tidy -p build --quiet 2>/dev/null
    say "clang-tidy is clean."
else
    say "clang-tidy is not run: that takes version 14."
fi

git ls-files -- '*.sh' .ci/run | xargs shellcheck
say "The scripts are clean."

scripts/check-floors.py
