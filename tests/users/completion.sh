#!/usr/bin/env bash
# Completes command lines in bash and fish: completion.sh FOLDER_OF_TOOL
set -euo pipefail
export PATH=$1:$PATH
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export ZOLT_HOME=$work/home HOME=$work
cd "$work"
zolt -q prefs set Audio Volume 70 "Ring tone" classic
zolt -q prefs set Conferencing:Mine:Below x 1
zolt -q card new anna.card
zolt -q card set anna.card FN "Anna Bell" ORG Northwind
zolt -q rolodex create
zolt -q rolodex add anna.card > /dev/null
zolt -q rolodex category 3 Friends
zolt -q prefs set Conferencing:Mine 'a"b$c' 1 "it's" 2

in_bash() {
  bash --norc -c 'source <(zolt completion bash); COMP_LINE=$1; COMP_POINT=${#1}; _zolt; printf "%s\n" "${COMPREPLY[@]}"' bash "$1"
}
in_fish() { fish --no-config -c 'zolt completion fish | source; complete -C $argv[1]' "$1" | cut -f 1; }
failed=0
expect() {
  local wanted=$1 got; shift
  got=$("$@" | paste -sd '|')
  [ "$got" = "$wanted" ] || { echo "$*: expected \"$wanted\", got \"$got\"" >&2; failed=1; }
}
expect 'prefs' in_bash 'zolt pre'
expect 'watch|wait' in_bash 'zolt prefs wa'
expect 'Volume|Ring\ tone' in_bash 'zolt prefs get Audio '
expect 'Ring\ tone' in_bash 'zolt prefs unset Audio Volume Ri'
expect 'Mine|Mine:Below' in_bash 'zolt prefs list Conferencing:Mi'
expect 'Below' in_bash 'zolt prefs list Conferencing:Mine:B'
expect 'shared-user|shared-system' in_bash 'zolt -L sh'
expect '--default' in_bash 'zolt prefs get --de'
expect 'FN' in_bash 'zolt card get anna.card F'
expect 'Anna\ Bell' in_bash 'zolt rolodex get A'
expect '+Friends' in_bash 'zolt rolodex tag 1 +F'
expect '-Friends' in_bash 'zolt rolodex tag 1 -F'
expect 'Ring tone' in_bash 'zolt prefs get Audio "Ring t'
expect 'Conferencing:Mine|Conferencing:Mine:Below' in_bash 'zolt prefs list "Conferencing:Mi'
expect 'Conferencing:Mine|Conferencing:Mine:Below' in_bash "zolt prefs list 'Conferencing:Mi"
expect 'a\"b\$c' in_bash 'zolt prefs get "Conferencing:Mine" "a'
expect "it'\\''s" in_bash "zolt prefs get 'Conferencing:Mine' 'it"
expect '' in_bash 'zolt card show an'
expect '' in_bash 'zolt no such thing'
expect 'Ring tone|Volume' in_fish 'zolt prefs get Audio '
expect 'Conferencing:Mine|Conferencing:Mine:Below' in_fish 'zolt prefs list Conferencing:Mi'
expect 'Ring tone' in_fish 'zolt prefs get Audio "Ring t'
expect 'Ring tone' in_fish 'zolt prefs get Audio Ring\ t'
expect 'Conferencing:Mine|Conferencing:Mine:Below' in_fish "zolt prefs list 'Conferencing:Mi"
expect 'Friends' in_fish 'zolt rolodex list --category F'
expect 'anna.card' in_fish 'zolt card show an'
expect 'Anna Bell' in_fish 'zolt rolodex get An'
exit $failed
