#!/usr/bin/env bash
# The check of the floors finds each thing that it is there to find, in trees made for it.
#
#   check_floors_test.sh SCRIPT FOLDER      FOLDER is made anew
set -euo pipefail
script=$1
work=$2
failed=0

# new_tree: two floors, one of them with a lower folder and an upper one that belong together.
new_tree() {
    rm -rf "$work"
    mkdir -p "$work/docs" "$work/src/low" "$work/src/high" "$work/tools/one"
    cat >"$work/docs/architecture.md" <<'DOC'
# Tree
## Floors
| floor | where | what |
|---|---|---|
| 2 | `src/high/*`, `src/low/window_part.cpp` | above |
| 2 | `tools/*` | a program beside it |
| 1 | `src/*` | below |

### Circles of folders
- `src/low` -> `src/high`: the window's members
## Next
DOC
    echo '#include <vector>' >"$work/src/low/base.h"
    echo '#include "low/base.h"' >"$work/src/high/window.h"
    echo '#include "high/window.h"' >"$work/src/low/window_part.cpp"
    echo '#include "low/base.h"' >"$work/tools/one/main.cpp"
}

# expect STATUS TEXT WHAT: the check ends so and says TEXT.
expect() {
    local status=0 said
    said=$("$script" "$work" 2>&1) || status=$?
    if [ "$status" -ne "$1" ] || ! grep -qF -- "$2" <<<"$said"; then
        echo "FAIL: $3: status $status, said: $said"
        failed=1
    fi
}

new_tree
expect 0 "Floors hold: 4 files, 3 includes" "a good tree"

new_tree
echo '#include "high/window.h"' >"$work/src/low/base.h"
expect 1 "src/low/base.h (floor 1) includes src/high/window.h (floor 2)" "an include upwards"

new_tree
echo '#include "high/window.h"' >"$work/tools/one/main.cpp"
expect 1 "tools/one/main.cpp (floor 2) includes src/high/window.h (floor 2)" \
    "an include across the same floor"

new_tree
echo '#include "low/other.h"' >"$work/src/low/base.h"
echo '#include "low/base.h"' >"$work/src/low/other.h"
expect 1 "circle of files: src/low/base.h, src/low/other.h" "a circle of files"

new_tree
sed -i '/^- /d' "$work/docs/architecture.md"
expect 1 "circle of folders: src/high, src/low" "a circle of folders that is not listed"

new_tree
# shellcheck disable=SC2016 # backticks of the document
sed -i 's/^- .*/- `src\/high` -> `tools\/one`/' "$work/docs/architecture.md"
expect 1 "listed include between folders does not exist: src/high -> tools/one" "a stale list"

new_tree
echo '#include "low/gone.h"' >>"$work/src/high/window.h"
expect 1 'src/high/window.h: includes "low/gone.h", which is no file of the tree' "a missing file"

new_tree
# shellcheck disable=SC2016
sed -i 's/`src\/\*`/`src\/low\/*`/; s/`src\/high\/\*`, //' "$work/docs/architecture.md"
expect 1 "src/high/window.h: stands on no floor" "a file without a floor"

new_tree
sed -i '/^| [0-9]/d' "$work/docs/architecture.md"
expect 2 "no table of floors" "a document without the table"

rm -rf "$work"
exit $failed
