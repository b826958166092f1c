#!/bin/bash
# Times the captures of the Windows build under Wine against a program that walks the same by the same calls and keeps
# nothing, in turn, and prints medians of their times and of the ratio of each round. A server that stays serves both.
set -eu
cd "$(dirname "$0")/.."
rounds=${BENCH_ROUNDS:-9}
export DELVANE_TEST_PREFIX="$PWD/build-windows/prefix" DELVANE_HOME='C:\Bench'
cmake --preset windows -DDELVANE_BENCH=ON > /dev/null
cmake --build build-windows --target delvane api_walk
drive=$DELVANE_TEST_PREFIX/drive_c
cmake/wine.sh cmd /c exit
mkdir -p "$drive/Bench" "$drive/many"
for i in $(seq 100); do
    mkdir -p "$drive/many/$i"
    [ -f "$drive/many/$i/500" ] || (cd "$drive/many/$i" && touch $(seq 500))
done
export WINEPREFIX=$DELVANE_TEST_PREFIX
wineserver -w
wineserver -p
trap 'wineserver -k; rm -rf "$drive/many" "$drive/Bench"' EXIT
cmake/wine.sh cmd /c exit > /dev/null 2>&1 < /dev/null

# Milliseconds of a command.
taken() {
    local begin
    begin=$(date +%s%N)
    "$@" > /dev/null
    echo $((($(date +%s%N) - begin) / 1000000))
}
median() {
    sort -n | sed -n "$(((rounds + 1) / 2))p"
}

printf '%-40s %8s %8s %7s\n' '' 'peer ms' 'ms' 'ratio'
while read -r what peer switches; do
    rows=
    for _ in $(seq "$rounds"); do
        a=$(taken cmake/wine.sh build-windows/bench/api_walk.exe "$peer")
        # The switches are meant to be split.
        # shellcheck disable=SC2086
        b=$(taken cmake/wine.sh build-windows/delvane.exe /s /bc:x $switches)
        rows+="$a $b $((b * 100 / a))"$'\n'
    done
    ratio=$(printf %s "$rows" | cut -d ' ' -f 3 | median)
    printf '%-40s %8s %8s %5s.%02d\n' "$what" "$(printf %s "$rows" | cut -d ' ' -f 1 | median)" \
        "$(printf %s "$rows" | cut -d ' ' -f 2 | median)" $((ratio / 100)) $((ratio % 100))
done << 'END'
capture_and_save_of_drive_C: C: /r:hklm- /r:hkcu- /r:hkcr-
capture_and_save_of_HKLM HKLM /dg:HD- /r:hkcu- /r:hkcr-
capture_and_save_of_HKCR HKCR /dg:HD- /r:hkcu- /r:hklm-
END
