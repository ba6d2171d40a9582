#!/usr/bin/env bash
# Makes the Debian packages, installs them into an empty root, uses them from another project, and removes
# them: packages.sh BUILD_FOLDER
set -euo pipefail
umask 022
build=$(cd "$1" && pwd)
here=$(cd "$(dirname "$0")/.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export ZOLT_HOME=$work/home

(cd "$work" && cpack --config "$build/CPackConfig.cmake" -G DEB -B "$work/packages" > cpack.log 2>&1) || { cat "$work/cpack.log"; exit 1; }
root=$work/root
mkdir -p "$root/var/lib/dpkg/info" "$root/var/lib/dpkg/updates" "$root/var/lib/dpkg/triggers"
touch "$root/var/lib/dpkg/status"
# The scripts of the packages do no more than to call ldconfig, which has nothing to do here.
mkdir "$work/bin"
ln -s "$(command -v true)" "$work/bin/ldconfig"
manage() { PATH=$work/bin:$PATH dpkg --root="$root" --log=/dev/null --force-not-root,depends,bad-path,script-chrootless "$@" > "$work/dpkg.log" 2>&1 || { cat "$work/dpkg.log"; exit 1; }; }
manage -i "$work"/packages/*.deb

expect() { [ "$2" = "$3" ] || { echo "$1: expected \"$2\", got \"$3\"" >&2; exit 1; }; }
PATH=$root/usr/bin:$PATH
expect tool "$root/usr/bin/zolt" "$(command -v zolt)"
zolt -q prefs set Audio Device "USB headset"
expect get "USB headset" "$(zolt prefs get Audio Device)"
expect registered "zolt: $(find "$root" -name libzolt41.so.0): registered for this user" "$(zolt register 2>&1)"
# Each group and each verb that stands alone has a page, which is named by all the others.
pages=$(zolt help | sed -n '/^Options/q; s/^  \([a-z]*\) .*/zolt-\1/p' | sort -u)
expect pages 10 "$(wc -w <<< "$pages")"
for page in zolt $pages; do
  zcat -f "$root/usr/share/man/man1/$page".1* > "$work/page" || { echo "no man page $page" >&2; exit 1; }
  for other in $pages; do
    [ "$other" = "$page" ] || grep -q "fB$other\\\\fR(1)" "$work/page" || { echo "$page does not name $other" >&2; exit 1; }
  done
done

# By CMake and by pkg-config.
cmake -S "$here/consumer" -B "$work/consumer" -DCMAKE_PREFIX_PATH="$root/usr" > "$work/cmake.log" &&
  cmake --build "$work/consumer" > "$work/cmake.log" 2>&1 || { cat "$work/cmake.log"; exit 1; }
expect cmake "USB headset" "$("$work/consumer/consumer")"
PKG_CONFIG_PATH=$(dirname "$(find "$root/usr" -name zolt41.pc)")
export PKG_CONFIG_PATH
read -ra flags <<< "$(pkg-config --cflags --libs zolt41)"
"${CXX:-g++}" -std=c++20 "$here/consumer/consumer.cpp" "${flags[@]}" -Wl,-rpath,"$(pkg-config --variable=libdir zolt41)" -o "$work/program"
expect pkg-config "USB headset" "$("$work/program")"

manage -r zolt41-doc zolt libzolt41-dev libzolt41-0
expect remains "" "$(find "$root" -path "$root/var" -prune -o -name '*zolt*' -print)"
