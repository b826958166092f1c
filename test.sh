#!/bin/sh
# Runs every test: installs what is missing, builds the program with its tests, and ends with the code of ctest.
set -eu
CDPATH='' cd -- "$(dirname -- "$0")"
. cmake/setup.sh

need_packages g++ cmake ninja-build pkg-config libutf8proc-dev qt6-base-dev libgtest-dev libgmock-dev
build_release -DDELVANE_TESTS=ON
exec ctest --test-dir build -j2 --output-on-failure --no-tests=error
