#!/usr/bin/env bash
# Runs a test program as a user without rights, from a copy where such a user can reach it.
set -euo pipefail
place=$(mktemp -d)
trap 'rm -rf "$place"' EXIT
cp "$1" "$place"
mkdir "$place/tmp"
chmod 755 "$place"
chmod 777 "$place/tmp"
run=()
[ "$(id -u)" = 0 ] && run=(setpriv --reuid=65534 --regid=65534 --clear-groups)
cd "$place/tmp"
"${run[@]}" env TMPDIR="$place/tmp" HOME="$place/tmp" "$place/$(basename "$1")"
