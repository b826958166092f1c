#!/bin/sh
# Takes the pictures of the dialogs in docs/pictures/ from the real program, on a screen of its own, and the one of a
# review, docs/review.png, in a browser without a screen.
#   docs/take-pictures.sh            all of them
#   docs/take-pictures.sh review     that of the review alone
set -eu
CDPATH='' cd -- "$(dirname -- "$0")/.."
. cmake/setup.sh

need_packages g++ cmake ninja-build libutf8proc-dev nlohmann-json3-dev libcli11-dev libtomlplusplus-dev qt6-base-dev xvfb openbox xdotool imagemagick chromium
build_release
work=$(mktemp -d)
program='' screen='' manager=''
trap 'kill $program $screen $manager 2> /dev/null || true; rm -rf "$work"' EXIT
samples/make-machine.sh "$work/machine" build/samples/mkimage

# The sample installation, in a folder whose name may stand in a picture: the first screen of its review.
review() {
    results=/tmp/delvane-results
    rm -rf "$results"
    cp -a "$work/machine" "$work/installed"
    export DELVANE_MACHINE="$work/installed" DELVANE_HOME="$work/home"
    build/delvane /s "/res:$results/" /bc:Before
    samples/install-sample.sh "$work/installed" build/samples/mkimage
    build/delvane /s "/res:$results/" /cc:After
    build/delvane review Before After --results "$results" --quiet || [ $? -eq 1 ]
    mv "$results/After - Before.review.html" "$work/review.html"
    HOME=$work timeout 60 chromium --headless --no-sandbox --disable-gpu --hide-scrollbars --window-size=1280,1040 \
        --screenshot="$work/review.png" "file://$work/review.html"
    convert "$work/review.png" -crop 1280x1000+0+0 +repage -strip +dither -colors 256 docs/review.png
    rm -rf "$results"
}
review
[ "${1:-}" != review ] || exit 0

export DISPLAY=:93 DELVANE_MACHINE="$work/machine" DELVANE_HOME="$work/home" TZ=UTC
Xvfb $DISPLAY -screen 0 1200x900x24 > /dev/null 2>&1 &
screen=$!
sleep 1
openbox > /dev/null 2>&1 &
manager=$!
sleep 1

keys() { timeout 5 xdotool key "$@" && sleep 0.7; }
# The window of that title.
window() { timeout 5 xdotool search --sync --onlyvisible --name "$1" | tail -n 1; }
picture() { # TITLE NAME
    import -window "$(window "$1")" "docs/pictures/$2.png"
    mogrify -strip +dither -colors 256 "docs/pictures/$2.png"
}
to_front() { timeout 5 xdotool windowactivate --sync "$(window "$1")" && sleep 0.3; }
main='Install Delvane - v2.1'

mkdir -p docs/pictures
build/delvane > /dev/null 2>&1 &
program=$!
sleep 2
import -window root -crop 591x368+304+266 +repage -strip docs/pictures/splash.png
sleep 5
to_front "$main"
keys alt+r
picture 'Create New Snapshot' new-snapshot
xdotool type Before
keys Return
to_front "$main"
keys alt+e
xdotool type After
keys Return
sleep 1
picture "$main" main
to_front "$main"
keys alt+o
keys Down
picture 'Load Snapshot' load-snapshot
keys Escape
to_front "$main"
keys alt+t
keys Return
picture 'Select Which Portions' options
keys Escape
to_front "$main"
keys alt+h
keys Up
keys Return
picture 'About Norvelle' about
kill $program

# A capture that lasts: many thousand names in folders that lead to each other.
mkdir -p "$work/machine/drive_c/web"
for folder in $(seq 120); do
    mkdir "$work/machine/drive_c/web/$folder"
    (cd "$work/machine/drive_c/web/$folder" && for other in $(seq 120); do ln -s "../$other" "$other"; done)
done
DELVANE_HOME=$work/second build/delvane /nologo /cc:Long > /dev/null 2>&1 &
program=$!
picture 'Creating Snapshot' progress
kill $program
