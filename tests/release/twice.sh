#!/bin/sh
# Makes the release of the last commit twice, in folders of different names, with another time zone, language, mask and
# moment, and wants the same bytes.
set -eu
CDPATH='' cd -- "$(dirname -- "$0")/../.."

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
trap 'exit 1' HUP INT TERM
mkdir "$work/second and longer"
git clone -q . "$work/first"
git clone -q . "$work/second and longer/copy"

(umask 022 && cd "$work/first" && TZ=UTC LC_ALL=C ./package.sh > "$work/log" 2>&1) || { cat "$work/log"; exit 1; }
sleep 2
(umask 077 && cd "$work/second and longer/copy" && TZ=Pacific/Auckland LC_ALL='' LANG=C.UTF-8 CXXFLAGS=-g \
    ./package.sh > "$work/log" 2>&1) || { cat "$work/log"; exit 1; }

cd "$work/first/dist"
sha256sum -- * > "$work/sums"
cat "$work/sums"
cd "$work/second and longer/copy/dist"
sha256sum --strict -c "$work/sums"
[ "$(ls)" = "$(ls "$work/first/dist")" ]
