#!/bin/sh
# Measures what is claimed to be fast, each as a ratio of processor time to a peer in the same run:
#   capture   capture and save of 300,000 files      against GNU find printing the same facts
#   compare   load, comparison and page, 1% changed  against comm -3 over the same facts as sorted text
#   review    the same two snapshots reviewed         against the comparison
#   flat      one directory of 200,000 names         against one of 20,000
#   text      registry text of 500,000 values        against reading and decoding every line of it
#   hive      a registry hive of 200,000 values      against hivexml
#   keys      one key of 200,000 subkeys             against one of 20,000, in text and hives, sorted and not
# Usage: bench/run.sh [JOB...]. BENCH_ROUNDS sets the rounds (default 7), BENCH_DATA the folder of what is measured
# (default: delvane-bench below the temporary folder; about 520,000 files, kept for the next run).
set -eu
CDPATH='' cd -- "$(dirname -- "$0")/.."
. cmake/setup.sh

need_packages g++ cmake ninja-build libutf8proc-dev nlohmann-json3-dev libcli11-dev libtomlplusplus-dev findutils coreutils libhivex-bin
# The default build with some small programs more.
cmake -S . -B build-bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DDELVANE_TESTS=OFF -DDELVANE_QT=OFF -DDELVANE_BENCH=ON > /dev/null
cmake --build build-bench > /dev/null
program=$PWD/build-bench/delvane
tools=$PWD/build-bench/bench
rounds=${BENCH_ROUNDS:-7}
data=${BENCH_DATA:-${TMPDIR:-/tmp}/delvane-bench}
mkdir -p "$data"
cd "$data"
export DELVANE_HOME="$data/home" LC_ALL=C.UTF-8
unset WINEPREFIX DELVANE_USER

machine() { # KIND NAME FILES
    [ -e "$2/.made" ] || { rm -rf "$2"; "$tools/make_tree" "$1" "$2" "$3"; : > "$2/.made"; }
}
registry() { # KIND NAME COUNT [shuffled]
    [ -e "$2/.made" ] || { rm -rf "$2"; "$tools/make_registry" "$1" "$2" "$3" ${4:-}; : > "$2/.made"; }
}
# The comparison of a machine with one that has no registry tells how many values the snapshot holds.
added_by() { # JOB MACHINE EMPTY VALUES
    kind=text
    [ "$1" = text ] || kind=hive
    registry flat-$kind "$3" 1
    DELVANE_MACHINE=$2 "$program" /s /cc:full
    DELVANE_MACHINE=$3 "$program" /s /bc:empty
    DELVANE_MACHINE=$2 "$program" /s /b:empty /c:full /g || true
    result "$1" "$4" "$(sed -n 's|.*Values Added:.*<TD>\([0-9]*\)</TD>.*|\1|p' "home/Results/full - empty.htm")"
    rm -f home/Results/*empty* home/Results/full*
}
facts() { find "$1/drive_c" -printf '%p\t%s\t%T@\n' | LC_ALL=C sort; }
pair() { "$tools/pair_time" "$rounds" "$@"; }
result() { # JOB EXPECTED SEEN
    [ "$2" = "$3" ] || { echo "$0: $1: the answer is wrong: $3 instead of $2" >&2; exit 1; }
}

# Takes the snapshots once, and changes the machine in between.
snapshots() {
    machine machine m300k 300000
    [ ! -e home/Results/After.dvs ] || return 0
    facts m300k > before.txt
    DELVANE_MACHINE=m300k "$program" /s /bc:Before
    "$tools/make_tree" change m300k
    facts m300k > after.txt
    DELVANE_MACHINE=m300k "$program" /s /cc:After
}

echo "| command | cpu s | ratio | min-max | peak MB |"
echo "|---|---|---|---|---|"
for job in ${*:-capture compare review flat text hive keys}; do
    case $job in
        capture)
            snapshots
            DELVANE_MACHINE=m300k "$program" /s /bc:check
            # Every file and directory has a path in the snapshot.
            result capture "$(find m300k/drive_c -mindepth 1 | wc -l)" "$(grep -aoF 'C:\' home/Results/check.dvs | wc -l)"
            pair "GNU find -printf of the same facts (= 1)" \
                "find m300k/drive_c -printf '%p %s %T@ %C@ %A@ %m\n' > /dev/null" \
                "delvane: capture and save" "DELVANE_MACHINE=m300k '$program' /s /bc:check"
            echo "| the snapshot file | | | | $(stat -c %s home/Results/check.dvs | awk '{printf "%.1f", $1 / 1048576}') |"
            rm home/Results/check.dvs
            ;;
        compare)
            snapshots
            DELVANE_MACHINE=m300k "$program" /s /b:Before /c:After /g || true
            page="home/Results/After - Before.htm"
            added=$(LC_ALL=C join -v 2 -t "$(printf '\t')" before.txt after.txt | wc -l)
            result compare "$added" "$(sed -n 's|.*Files Added:</A></TD><TD>\([0-9]*\)<.*|\1|p' "$page")"
            pair "comm -3, sorted lines (= 1)" "LC_ALL=C comm -3 before.txt after.txt > /dev/null" \
                "delvane: load both, compare, write the page" \
                "DELVANE_MACHINE=m300k '$program' /s /b:Before /c:After /g; [ \$? -eq 1 ]"
            ;;
        review)
            snapshots
            DELVANE_MACHINE=m300k "$program" review Before After --write jsonl --fail-on none --quiet
            lines="home/Results/After - Before.review.jsonl"
            added=$(LC_ALL=C join -v 2 -t "$(printf '\t')" before.txt after.txt | wc -l)
            result review "$added" "$(grep -c '"kind":"file","change":"added"' "$lines")"
            pair "delvane: load both, compare, write the classic page (= 1)" \
                "DELVANE_MACHINE=m300k '$program' /s /b:Before /c:After /g; [ \$? -eq 1 ]" \
                "delvane review: page, lines, SARIF, JUnit, Markdown and .reg" \
                "DELVANE_MACHINE=m300k '$program' review Before After --write html,jsonl,sarif,junit,markdown,reg --fail-on none --quiet"
            ;;
        flat)
            machine flat flat20k 20000
            machine flat flat200k 200000
            pair "delvane: one directory of 20,000 names (= 1)" "DELVANE_MACHINE=flat20k '$program' /s /bc:flat20k" \
                "delvane: one of 200,000" "DELVANE_MACHINE=flat200k '$program' /s /bc:flat200k"
            ;;
        text)
            registry text text500k 500000
            [ "$("$tools/scan_text" text500k/system.reg)" -eq 500000 ]
            added_by text text500k empty_prefix 500000
            pair "reading and decoding every line (= 1)" "'$tools/scan_text' text500k/system.reg > /dev/null" \
                "delvane: capture and save of 500,000 values" "DELVANE_MACHINE=text500k '$program' /s /bc:text"
            ;;
        hive)
            registry hive hive200k 200000
            added_by hive hive200k empty_volume 200000
            pair "hivexml (= 1)" "hivexml hive200k/Windows/System32/config/SOFTWARE > /dev/null" \
                "delvane: capture and save of 200,000 values" "DELVANE_MACHINE=hive200k '$program' /s /bc:hive"
            ;;
        keys)
            for order in sorted shuffled; do
                for kind in text hive; do
                    [ $order = sorted ] && option= || option=shuffled
                    for count in 20000 200000; do
                        registry flat-$kind $kind$order$count $count $option
                    done
                    pair "delvane: one key of 20,000 subkeys, $kind, $order (= 1)" \
                        "DELVANE_MACHINE=$kind${order}20000 '$program' /s /bc:keys" \
                        "delvane: one of 200,000" "DELVANE_MACHINE=$kind${order}200000 '$program' /s /bc:keys"
                done
            done
            ;;
        *)
            echo "usage: $0 [capture|compare|review|flat|text|hive|keys]..." >&2
            exit 2
            ;;
    esac
done
