#!/bin/sh
# Runs every test: installs what is missing, builds the program with its tests, and ends with the code of ctest.
#   ./test.sh              the tests of the Linux build
#   ./test.sh --windows    those of the Windows build, under Wine, and the two builds against each other
set -eu
CDPATH='' cd -- "$(dirname -- "$0")"
. cmake/setup.sh

case ${1:-} in
'') windows=no ;;
--windows) windows=yes ;;
*)
    echo "usage: $0 [--windows]" >&2
    exit 2
    ;;
esac

need_packages g++ cmake ninja-build libutf8proc-dev nlohmann-json3-dev libcli11-dev libtomlplusplus-dev qt6-base-dev libgtest-dev libgmock-dev locales chromium python3
build_release -DDELVANE_TESTS=ON
[ $windows = yes ] || exec ctest --test-dir build -j2 --output-on-failure --no-tests=error

need_packages g++-mingw-w64-x86-64-posix googletest wine wine64 xvfb xauth
export DELVANE_TEST_PREFIX="$PWD/build-windows/prefix"
cmake --preset windows
cmake --build build-windows
# One server for all tests. The first program starts Wine's services, which keep its output open for as long as they run:
# it is not one that somebody waits for.
cmake/wine.sh cmd /c exit
export WINEPREFIX="$DELVANE_TEST_PREFIX"
wineserver -w
wineserver -p
cmake/wine.sh cmd /c exit > /dev/null 2>&1 < /dev/null
code=0
ctest --test-dir build-windows -j2 --output-on-failure --no-tests=error || code=$?
wineserver -k
exit $code
