#!/bin/sh
# Runs a Windows program under Wine, quietly and apart from the user's own prefix: in the one that DELVANE_TEST_PREFIX
# names, which is made when it is not there.
#   wine.sh PROGRAM [ARGUMENT...]
set -eu
prefix=${DELVANE_TEST_PREFIX:-${TMPDIR:-/tmp}/delvane-wine-$(id -u)}
mkdir -p "$prefix/home"
export WINEPREFIX="$prefix" HOME="$prefix/home" WINEDEBUG=-all LC_ALL=C.UTF-8
# Nothing of the host's desktop is touched, and nobody is asked to install anything.
export WINEDLLOVERRIDES="mscoree,mshtml,winemenubuilder.exe="
if [ ! -f "$prefix/made" ]; then
    # Several tests may come at once; one makes the prefix.
    exec 9> "$prefix/lock"
    flock 9
    if [ ! -f "$prefix/made" ]; then
        env -u DISPLAY wineboot -i > /dev/null 2>&1
        : > "$prefix/made"
    fi
    exec 9>&-
fi
exec wine "$@"
