#!/bin/sh
# Shows the main job on a sample machine: a snapshot, an installation, another snapshot, and the report that compares
# the two. Installs what is missing and builds the program first. Ends with 0 if all went as it should.
set -eu
CDPATH='' cd -- "$(dirname -- "$0")"
. cmake/setup.sh

step() {
    printf '\n== %s\n' "$1"
}

fail() {
    echo "$0: $1" >&2
    exit 1
}

# The bits of an exit code in words.
in_words() {
    [ "$1" -ne 0 ] || echo "nothing to report"
    [ "$1" -lt 128 ] || echo "ended by a signal"
    [ "$1" -lt 128 ] || return 0
    rest=$1
    while read -r bit words; do
        [ $((rest & bit)) -eq 0 ] || echo "$words"
    done << END
1 information or warnings
2 errors
4 snapshot not created
8 snapshot not loaded
16 no report
32 no window
64 not started
END
}

# Runs the program on the sample machine and wants that exit code.
run() { # CODE SWITCH...
    wanted=$1
    shift
    echo "   delvane $*"
    code=0
    DELVANE_MACHINE=$work/machine DELVANE_HOME=$home build/delvane "$@" || code=$?
    echo "   exit code $code: $(in_words $code | paste -s -d , | sed 's/,/, /g')"
    [ $code -eq "$wanted" ] || fail "exit code $wanted was expected"
}

need_packages g++ cmake ninja-build pkg-config libutf8proc-dev
step "Building the program, build/delvane"
# A first build goes without the tests, which would need GoogleTest; one that is there stays as it is.
if is_configured; then build_release; else build_release -DDELVANE_TESTS=OFF; fi

unset DELVANE_USER
home=$PWD/build/demo
page="$home/Results/After - Before.htm"
rm -rf "$home"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
trap 'exit 1' HUP INT TERM

step "Making the sample machine, a small Wine prefix, in $work/machine"
samples/make-machine.sh "$work/machine" build/samples/mkimage
echo "   $(find "$work/machine/drive_c" -type f | wc -l) files on its drive C:"

step "Taking a snapshot before the installation"
run 0 /s /bc:Before

step "Installing the sample application, Harbour Ledger, which behaves badly"
samples/install-sample.sh "$work/machine" build/samples/mkimage

step "Taking a snapshot after it"
run 0 /s /cc:After

step "Comparing the two and writing the report"
run 1 /s /b:Before /c:After /g
[ -s "$page" ] || fail "there is no report at $page"

step "What the report finds"
# Without the links, which lead to another place of the page.
grep -aoE '<P>(ERROR|WARNING|INFO) - .*' "$page" > "$work/findings" || fail "the report holds no finding"
sed -E 's/ Click <A.*//; s/<[^>]*>//g' "$work/findings" | fold -s -w 97 |
    sed -E '/^(ERROR|WARNING|INFO) - /!s/^/    /; s/^/   /; s/ *$//'

step "What the installation did to the files"
sed -nE 's|^<TR><TD>(<A [^>]*>)?([^<]*)(</A>)?</TD><TD>([0-9]+)</TD></TR>$|\4 \2|p' "$page" |
    while read -r count label; do printf '   %5d  %s\n' "$count" "${label%:}"; done

step "The report"
echo "   $page"
