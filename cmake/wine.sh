#!/bin/sh
# Runs a Windows program under Wine, quietly and apart from the user's own prefix: in the one that DELVANE_TEST_PREFIX
# names, which is made when it is not there. DELVANE_TEST_LOCALE chooses the code page.
#   wine.sh PROGRAM [ARGUMENT...]
set -eu
prefix=${DELVANE_TEST_PREFIX:-$(realpath "$(dirname "$0")/..")/build-windows/prefix}
mkdir -p "$prefix/home"
export WINEPREFIX="$prefix" HOME="$prefix/home" WINEDEBUG=-all
export LC_ALL="${DELVANE_TEST_LOCALE:-C.UTF-8}"
# Nothing of the host's desktop is touched, and nobody is asked to install anything.
export WINEDLLOVERRIDES="mscoree,mshtml,winemenubuilder.exe="
if [ ! -f "$prefix/made" ]; then
    # Several tests may come at once; one makes the prefix.
    exec 9> "$prefix/lock"
    flock 9
    if [ ! -f "$prefix/made" ]; then
        env -u DISPLAY wineboot -i > /dev/null 2>&1
        wineserver -w  # the next one may have a display
        : > "$prefix/made"
    fi
    exec 9>&-
fi
exec wine "$@"
