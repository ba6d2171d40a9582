#!/usr/bin/env bash
# Runs the examples that the help of each verb has, and so the man pages: examples.sh FOLDER_OF_TOOL
set -euo pipefail
umask 022
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# What the examples hand something on to.
mkdir "$work/bin" "$work/lib" "$work/home"
for name in xdg-open sendmail nano call; do ln -s /bin/true "$work/bin/$name"; done
printf '#!/bin/sh\nexec "$@"\n' > "$work/bin/sudo"
printf '#!/bin/sh\nshift\nexec "$@"\n' > "$work/bin/ssh"
chmod +x "$work/bin/sudo" "$work/bin/ssh"
# In a folder that nobody else can write, wherever it was built.
cp "$1/zolt" "$work/bin"
cp "$1"/../lib/libzolt41.so.0 "$work/lib"
export PATH=$work/bin:$PATH HOME=$work EDITOR=true

# What the examples speak of.
export ZOLT_HOME=$work/home
cd "$ZOLT_HOME"
printf 'GIF89a' | tee anna.jpg ring.wav > notes.txt
zolt -q prefs set Audio Volume 70 Mute Yes
zolt -q prefs set -t bytes Audio --from ring.wav Ring
zolt -q prefs set Lock Holder $$
zolt -q prefs set -L system Audio Volume 50
zolt -q prefs set -L shared-user Audio Volume 60
zolt -q prefs items Conferencing Recent --add ben@example.org
zolt prefs dump > settings.txt
zolt -q card new anna.card
zolt -q card set anna.card FN 'Anna Bell' ORG Northwind EMAIL anna@example.org
zolt -q card set anna.card TEL '+44 5551234' --flags WORK,VOICE
zolt -q card set anna.card PHOTO @anna.jpg --type bitmap
cp anna.card old.card && cp anna.card new.card
zolt card convert anna.card --to text anna.txt
mkdir cards && cp anna.card cards
zolt -q rolodex create
for ((i = 1; i < 12; i++)); do zolt rolodex new "Card $i" > /dev/null; done
zolt rolodex add anna.card > /dev/null
zolt -q rolodex category 3 Friends && zolt -q rolodex category 4 Family
zolt -q rolodex tag 12 +3,7
cp contacts.rolodex contacts.rolodex.lost-1

# A question is answered, and who listens does so for a moment.
zolt() {
  case " $* " in
    *' watch '*) command zolt "$@" --timeout 0.1 || [ $? = 5 ] ;;
    *) command zolt -y "$@" ;;
  esac
}
run() {
  case $1 in
    *zsh*) zsh -fc "fpath=($work); $1" ;;
    *'completion fish'*) fish --no-config -c "$1" ;;
    'set query_command'*) eval "$(sed 's/.*"\(.*\)".*/\1/; s/%s/bell/' <<< "$1")" ;;
    *) eval "${1//\/opt\/zolt41\/lib/$work\/lib}" ;;
  esac
}
failed=0
fail() { echo "$*" >&2; failed=1; }
command zolt help | sed -n '/^Options/q; s/^  \([a-z][a-z ]*[a-z]\)  .*/\1/p' > "$work/verbs"
while read -r verb; do
  read -ra words <<< "$verb"
  help=$(command zolt "${words[@]}" --help)
  examples=$(sed -n '/^Examples:$/,$s/^  //p' <<< "$help")
  [ -n "$examples" ] || fail "$verb: no examples"
  while read -r line; do
    export ZOLT_HOME=$work/now
    rm -rf "$ZOLT_HOME" && cp -r "$work/home" "$ZOLT_HOME" && cd "$ZOLT_HOME"
    case $verb in 'card new' | 'rolodex create') rm anna.card contacts.rolodex ;; esac
    code=0
    (run "$line") > "$work/said" 2>&1 < /dev/null || code=$?
    # Whether a machine is connected, and sound, is not ours.
    case $code$verb in 0* | '1net '* | 1doctor) ;; *) fail "$line: ended with $code: $(cat "$work/said")" ;; esac
  done <<< "$examples"
done < "$work/verbs"
[ "$(wc -l < "$work/verbs")" -gt 40 ] || fail "the list of verbs was not found"
exit $failed
