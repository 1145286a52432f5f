#!/usr/bin/env bash
# Installs the build into a folder of its own and uses it as a person does: the expected files are
# there, the launcher starts the program in its data folder, and complains in one sentence when it
# cannot.
#
#   installed_tree_test.sh CMAKE BUILD SOURCE VERSION
set -u
cmake=$1 build=$2 source=$3 version=$4
place=$(mktemp -d)
trap 'rm -rf "$place"' EXIT
failures=0

fail() {
    echo "FAIL: $1"
    failures=$((failures + 1))
}

expect() { [ "$2" = "$3" ] || fail "$1: \"$3\", not \"$2\""; }

usr="$place/a tree/usr"
mkdir -p "$usr"
"$cmake" --install "$build" --prefix "$usr" >"$place/install.log" || {
    cat "$place/install.log"
    exit 1
}

# Without a package's permissions and a private library, which the package's own check looks at.
diff -u --label expected --label installed \
    <(sed -n 's|^-[rwx-]* /usr/||p' "$source/packaging/installed-files.txt" | LC_ALL=C sort) \
    <(cd "$usr" && find . ! -type d -printf '%P\n' | LC_ALL=C sort) || fail "other files are installed"

launcher=$usr/bin/lumeno-control-center
home="$place/a home"
mkdir "$home"

# start VARIABLE=VALUE... -- ARGUMENT...: from / with nothing else in the environment.
start() {
    local variables=()
    while [ "$1" != -- ]; do
        variables+=("$1")
        shift
    done
    shift
    (cd / && env -i PATH=/usr/bin:/bin "${variables[@]}" "$launcher" "$@")
}

expect "--version" "lumeno-control-center $version" "$(start HOME="$home" -- --mock --version)"
help=$(start HOME="$home" -- --help) || fail "--help ends with $?"
for switch in --mock --no-kinect --demo-ui --demo-speaker-lights --invert-audio-direction \
    --person-lost-ms --auto-quit-ms --layout-debug; do
    grep -q -e "$switch" <<<"$help" || fail "--help does not mention $switch"
done
expect "the home after --help and --version" "" "$(ls -A "$home")"

# The real program: its window opens, it ends by itself, and all it wrote is in the data folder.
start HOME="$home" QT_QPA_PLATFORM=offscreen XDG_RUNTIME_DIR="$place" -- --auto-quit-ms 1500 \
    >"$place/log" 2>&1 || fail "the program ends with $?: $(tail -n 3 "$place/log")"
data=$home/.local/share/lumeno-control-center
expect "the data folder's rights" 700 "$(stat -c %a "$data")"
expect "what else is in the home" "" \
    "$(find "$home" -mindepth 1 ! -path "$data*" ! -path "$home/.local" ! -path "$home/.local/share")"

# The tools find the same folder, wherever they are started. (Qt has something to say about a locale
# without UTF-8.)
told=$(cd / && env -i PATH=/usr/bin:/bin LC_ALL=C.UTF-8 HOME="$home" "$usr/bin/lumeno-enroll" check 2>&1)
expect "the status without samples" 1 $?
expect "where lumeno-enroll looks for samples" "lumeno-enroll: $data/faces/tavin is no folder: make \
samples with \`lumeno-enroll take\`." "$told"

# In the program's place a script that tells how it was started.
cat >"$usr/libexec/lumeno-control-center/lumeno-control-center" <<'SCRIPT'
#!/bin/sh
pwd
printf '<%s>' "$@"
echo $$ >"$HOME/pid"
exit 7
SCRIPT
told=$(start HOME="$home" XDG_DATA_HOME="$place/data of mine" -- --mock "two words" '')
expect "the program's status" 7 $?
expect "XDG_DATA_HOME and the arguments" \
    "$place/data of mine/lumeno-control-center
<--mock><two words><>" "$told"
told=$(start HOME="$home" XDG_DATA_HOME=/nowhere LUMENO_HOME="$place/-there" --)
expect "LUMENO_HOME before XDG_DATA_HOME" "$place/-there" "$(head -n 1 <<<"$told")"
told=$(start HOME="$home" XDG_DATA_HOME='' LUMENO_HOME='' --)
expect "empty variables are as good as none" "$data" "$(head -n 1 <<<"$told")"
mkdir -m 755 "$place/shared"
start HOME="$home" LUMENO_HOME="$place/shared" -- >/dev/null
expect "the rights of a folder that was there" 755 "$(stat -c %a "$place/shared")"
ln -s "$launcher" "$place/link"
told=$(cd / && HOME=$home "$place/link")
expect "started through a link" "$(head -n 1 <<<"$told")" "$data"

env -i PATH=/usr/bin:/bin HOME="$home" "$launcher" >/dev/null &
pid=$!
wait "$pid"
expect "signals reach the program: it takes the launcher's place" "$pid" "$(cat "$home/pid")"

# One sentence and status 1.
complaint=$(start HOME='' -- 2>&1)
expect "the status without a home" 1 $?
expect "no home" \
    "lumeno-control-center: no data folder: HOME is not set, and neither is LUMENO_HOME" "$complaint"
touch "$place/file"
complaint=$(start LUMENO_HOME="$place/file/folder" -- 2>&1)
expect "the status when a file is in the way" 1 $?
expect "a file in the way" \
    "lumeno-control-center: cannot make the data folder $place/file/folder: Not a directory" \
    "$complaint"

[ "$failures" -eq 0 ]
