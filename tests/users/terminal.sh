#!/usr/bin/env bash
# The tool in a real terminal: terminal.sh FOLDER_OF_TOOL
set -euo pipefail
export PATH=$1:$PATH
work=$(mktemp -d)
socket=
close() { tmux -S "$socket" kill-server 2> /dev/null || true; }
trap 'close; rm -rf "$work"' EXIT
export ZOLT_HOME=$work/home HOME=$work
unset TMUX
zolt -q prefs set Audio Volume 70 "Ring tone" classic
zolt -q prefs set "Mine: Sub" Volume 71

terminal() { tmux -S "$socket" "$@"; }
shows() { terminal capture-pane -p "${@}"; }
# Types keys, and waits until the screen shows a line.
type_until() {
  local wanted=$1 end=$((SECONDS + 20)); shift
  terminal send-keys "$@"
  until shows | grep -qxF -- "$wanted"; do
    [ $SECONDS -lt $end ] || { echo "after $*, no line \"$wanted\" on the screen:" >&2; shows >&2; exit 1; }
  done
}
open_shell() {
  [ -z "${socket:-}" ] || close
  socket=$work/$1
  terminal -f /dev/null new-session -d -x 100 -y 30 "$@"
}

open_shell bash --norc
type_until 'ready' "PS1=; source <(zolt completion bash); clear; echo re''ady" Enter
type_until 'Volume     70       text  user' 'zolt prefs list Audio' Enter
type_until 'Ring tone  classic  text  user' ''
type_until '70' 'zolt prefs get Aud' Tab 'V' Tab Enter
type_until 'classic' 'zolt prefs get Audio Ri' Tab Enter
# Within quotes that are still open.
type_until '71' 'clear; zolt prefs get "Mine: S' Tab "'V" Tab Enter

# A question, and both answers.
zolt prefs dump Audio > "$work/settings"
sed -i '/Ring tone/d' "$work/settings"
question="zolt: remove 1 value that $work/settings does not name? [y/N]"
type_until "$question" "zolt prefs load $work/settings --replace" Enter
type_until 'ended with 1' n Enter 'echo "ended with $?"' Enter
type_until "$question" "clear; zolt prefs load $work/settings --replace" Enter
type_until 'zolt: user store: 1 value removed' y Enter

# Colour is for terminals, and ends where NO_COLOR is set.
terminal send-keys 'clear; zolt prefs get Audio Volum' Enter
type_until 'done' 'echo do""ne' Enter
[ "$(shows -e | grep -c $'\e\[.*zolt:')" = 1 ] || { echo "no colour" >&2; exit 1; }
terminal send-keys 'clear; NO_COLOR=1 zolt prefs get Audio Volum' Enter
type_until 'done again' 'echo do""ne again' Enter
[ "$(shows -e | grep -c $'\e\[.*zolt:')" = 0 ] || { echo "colour" >&2; exit 1; }

# A watcher that is interrupted says nothing and ends with the signal's status.
interrupted() { printf "clear; sh -c 'trap : INT; %s; code=\$?; echo; echo ended with \$code'" "$1"; }
type_until 'zolt: watching Conferencing:Audio' "$(interrupted 'zolt prefs watch Audio')" Enter
type_until 'ended with 130' C-c

# The way back from an editor.
type_until 'zolt: user store: 1 value written' 'clear; EDITOR="sed -i s/70/75/" zolt prefs edit Audio' Enter

# An interrupted work leaves nothing behind in the folder of temporary files.
mkdir "$work/temporary"
zolt -q rolodex create
zolt -q rolodex new Anna > /dev/null
printf '#!/bin/sh\necho editing\nexec cat\n' > "$work/editor"
chmod +x "$work/editor"
type_until 'editing' "$(interrupted "TMPDIR=$work/temporary EDITOR=$work/editor zolt rolodex edit Anna")" Enter
type_until 'ended with 130' C-c
[ -z "$(ls "$work/temporary")" ] || { echo "a folder is left" >&2; exit 1; }

open_shell zsh -f
type_until 'ready' "PS1=; autoload compinit; compinit -D -u; source <(zolt completion zsh); clear; echo re''ady" Enter
type_until '75' 'zolt prefs get Aud' Tab 'V' Tab Enter
type_until '71' 'clear; zolt prefs get "Mine: S' Tab "'V" Tab Enter
type_until 'watch  each change as it comes, from any program' 'zolt prefs wa' Tab
