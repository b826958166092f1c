#!/bin/sh
# Shows the main job on a sample machine: a snapshot, an installation, another snapshot, the report that compares the two,
# and a review of them. Installs what is missing and builds the program first. Ends with 0 if all went as it should.
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

# A review has codes of its own, which are no bits.
in_words_of_review() {
    case $1 in
        0) echo "nothing that is open is a warning or an error" ;;
        1) echo "warnings or errors are open" ;;
        2) echo "the call or the list is wrong" ;;
        *) echo "a snapshot or a file failed" ;;
    esac
}

# Runs the program on the machine in that folder and wants that exit code.
run() { # FOLDER CODE SWITCH...
    machine=$1 wanted=$2
    shift 2
    echo "   delvane $*"
    code=0
    DELVANE_MACHINE=$machine DELVANE_HOME=$home build/delvane "$@" > "$work/said" || code=$?
    sed 's/^/      /' "$work/said"
    case $1 in
        review) words=$(in_words_of_review $code) ;;
        *) words=$(in_words $code | paste -s -d , | sed 's/,/, /g') ;;
    esac
    echo "   exit code $code: $words"
    [ $code -eq "$wanted" ] || fail "exit code $wanted was expected"
}

# Compares the two snapshots of a machine and shows what the page says.
report() { # FOLDER CURRENT BASELINE
    page="$home/Results/$2 - $3.htm"
    run "$1" 1 /s "/b:$3" "/c:$2" /g
    [ -s "$page" ] || fail "there is no report at $page"
    # Without the links, which lead to another place of the page.
    grep -aoE '<P>(ERROR|WARNING|INFO) - .*' "$page" > "$work/findings" || fail "the report holds no finding"
    sed -E 's/ Click <A.*//; s/<[^>]*>//g' "$work/findings" | fold -s -w 97 |
        sed -E '/^(ERROR|WARNING|INFO) - /!s/^/    /; s/^/   /; s/ *$//'
    sed -nE 's|^<TR><TD>(<A [^>]*>)?([^<]*:)(</A>)?</TD><TD>([0-9]+)</TD>.*|\4 \2|p' "$page" |
        while read -r count label; do printf '   %5d  %s\n' "$count" "${label%:}"; done
}

need_packages g++ cmake ninja-build libutf8proc-dev nlohmann-json3-dev libcli11-dev libtomlplusplus-dev qt6-base-dev
step "Building the program, build/delvane"
# A first build goes without the tests, which would need GoogleTest; one that is there stays as it is.
if is_configured; then build_release; else build_release -DDELVANE_TESTS=OFF; fi

unset DELVANE_USER
home=$PWD/build/demo
rm -rf "$home"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
trap 'exit 1' HUP INT TERM

step "Making the sample machine, a small Wine prefix, in $work/machine"
samples/make-machine.sh "$work/machine" build/samples/mkimage
echo "   $(find "$work/machine/drive_c" -type f | wc -l) files on its drive C:"

step "Making a second one of it, the volume of a Windows machine with registry hives, in $work/volume"
samples/make-volume.sh "$work/machine" "$work/volume" build/samples/mkhive
echo "   $(find "$work/volume" -type f | wc -l) files on its drive C:"

step "Taking snapshots before the installation"
run "$work/machine" 0 /s /bc:Before
run "$work/volume" 0 /s "/bc:Volume before"

step "Installing the sample application, Harbour Ledger, which behaves badly"
samples/install-sample.sh "$work/machine" build/samples/mkimage
samples/make-volume.sh "$work/machine" "$work/volume" build/samples/mkhive

step "Taking snapshots after it"
run "$work/machine" 0 /s /cc:After
run "$work/volume" 0 /s "/cc:Volume after"

step "What the installation did to the Wine prefix"
report "$work/machine" After Before

step "What it did to the Windows volume"
report "$work/volume" "Volume after" "Volume before"

step "The same two snapshots of the Wine prefix, reviewed for a script"
run "$work/machine" 1 review Before After
[ -s "$home/Results/After - Before.review.html" ] || fail "there is no page of the review"
cat << END
   That is an answer and no failure: a job that ends with this code stops here, until the installation is mended or
   somebody has looked at what it did and said why it is right.
END

step "A list that accepts it, drafted, with the reasons filled in"
list=$home/accepted.toml
run "$work/machine" 1 review Before After --write none --quiet --draft "$list"
sed -i 's/^reason = ""/reason = "looked at for the demonstration"/' "$list"
grep -v '^#' "$list" | sed -n '2,6s/^/   /p'
echo "   ... $(grep -c '^\[\[accept\]\]' "$list") entries in all"

step "The same review with the list"
run "$work/machine" 0 review Before After --output "$home/Accepted" --accept "$list"

step "The reports"
echo "   $home/Results/After - Before.htm"
echo "   $page"
echo "   $home/Results/After - Before.review.html"
echo "   $home/Accepted/After - Before.review.html"
