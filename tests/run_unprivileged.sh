#!/usr/bin/env bash
# Runs a test program, and the tool that it is given, as a user without rights: run_unprivileged.sh
# PROGRAM TOOL. Both are copied to where such a user can reach them.
set -euo pipefail
place=$(mktemp -d)
trap 'rm -rf "$place"' EXIT
cp "$1" "$2" "$place"
mkdir "$place/tmp"
chmod 755 "$place"
chmod 777 "$place/tmp"
run=()
[ "$(id -u)" = 0 ] && run=(setpriv --reuid=65534 --regid=65534 --clear-groups)
cd "$place/tmp"
"${run[@]}" env TMPDIR="$place/tmp" HOME="$place/tmp" ZOLT_TOOL="$place/$(basename "$2")" "$place/$(basename "$1")"
