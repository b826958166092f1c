#!/bin/sh
# Captures one Wine prefix twice, with the Windows build from inside and with the Linux build from outside, and compares
# the snapshots node by node; then lets each build make the report of both pairs.
#   parity.sh WINDOWS-PROGRAM LINUX-PROGRAM COMPARE-PROGRAM
# Ends with 0 where nothing differs but what known-differences.txt names.
set -eu
windows=$(realpath "$1") linux=$(realpath "$2") compare=$(realpath "$3")
here=$(realpath "$(dirname "$0")")
wine=$here/../../cmake/wine.sh
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
trap 'exit 1' HUP INT TERM
export DELVANE_TEST_PREFIX="$work/prefix" TZ=UTC
unset DELVANE_USER DISPLAY

fail() {
    echo "$0: $1" >&2
    exit 1
}

# The registry's files are whole when the server has ended.
settle() {
    WINEPREFIX=$DELVANE_TEST_PREFIX wineserver -w
}

# The exit code of a capture or a report must be this one.
expect() { # CODE COMMAND...
    wanted=$1 code=0
    shift
    "$@" || code=$?
    [ "$code" -eq "$wanted" ] || fail "exit code $code instead of $wanted: $*"
}

on_linux() {
    DELVANE_MACHINE=$DELVANE_TEST_PREFIX DELVANE_HOME="$drive/Delvane" "$linux" "$@"
}
on_windows() {
    "$wine" 'C:\Delvane\delvane.exe' "$@"
}

echo "-- making a prefix"
"$wine" cmd /c exit
drive=$DELVANE_TEST_PREFIX/drive_c
mkdir "$drive/Delvane"
cp "$windows" "$drive/Delvane/delvane.exe"

# Names and links as installers leave them, and as nobody should.
mkdir -p "$drive/odd/sub dir" "$drive/odd/empty" "$drive/odd/Æther" "$drive/odd/日本語/中"
printf 1 > "$drive/odd/plain.txt"
printf 22 > "$drive/odd/UPPER.TXT"
printf 333 > "$drive/odd/.hidden"
printf 4444 > "$drive/odd/no extension"
printf 5 > "$drive/odd/日本語/中/テスト.jpn"
printf 6 > "$drive/odd/Æther/naïve café.TXT"
printf 7 > "$drive/odd/𝔘𝔫𝔦.uni"
: > "$drive/odd/sub dir/_under"
: > "$drive/odd/sub dir/Zed"
: > "$drive/odd/sub dir/abc"
printf 8 > "$drive/odd/read only.txt"
chmod 444 "$drive/odd/read only.txt"
touch -d '1999-12-31 23:59:59.123456789 UTC' "$drive/odd/plain.txt"
touch -d '1960-02-29 12:00:00 UTC' "$drive/odd/UPPER.TXT"
ln -s plain.txt "$drive/odd/link to file"
ln -s nowhere "$drive/odd/dangling"
ln -s 'sub dir' "$drive/odd/link to dir"
ln -s . "$drive/odd/loop"
ln -s .. "$drive/odd/Æther/up"
# A directory whose path is longer than Windows' usual limit.
long=$drive/odd
for level in 1 2 3 4 5 6; do
    long="$long/level $level of a path that gets too long for the calls"
done
mkdir -p "$long"
printf 9 > "$long/deep.txt"
# One that is as deep as a walk goes.
( cd "$drive/odd" && mkdir deep && cd deep && i=0 && while [ $i -lt 1005 ]; do mkdir d && cd d && i=$((i + 1)); done )

echo "-- odd keys and values"
cat > "$drive/odd.reg" << 'END'
Windows Registry Editor Version 5.00

[HKEY_CURRENT_USER\Software\Odd]
@="unnamed"
"text"="quotes \" and \\ backslashes"
"empty"=""
"expand"=hex(2):25,00,50,00,25,00,00,00
"multi"=hex(7):61,00,00,00,62,00,00,00,00,00
"unended"=hex(1):61,00,62,00
"odd"=hex(1):61,00,62
"none"=hex(0):
"binary"=hex:
"number"=dword:ffffffff
"short number"=hex(4):01,02
"big"=hex(5):00,00,00,01
"wide"=hex(b):01,02,03,04,05,06,07,08
"other"=hex(80000001):01,02,03
"Ünïcödé"="żółć Ж 日本"
"emoji"=hex(1):3d,d8,00,de,00,00
"lone"=hex(1):3d,d8,61,00,00,00

[HKEY_CURRENT_USER\Software\Odd\日本語]
"値"="テスト"

[HKEY_CURRENT_USER\Software\Odd\_under]
[HKEY_CURRENT_USER\Software\Odd\Zed]
[HKEY_CURRENT_USER\Software\Odd\abc]

[HKEY_CLASSES_ROOT\.odd]
@="oddfile"

[HKEY_CLASSES_ROOT\oddfile]
@="An odd file"

[HKEY_CLASSES_ROOT\oddfile\DefaultIcon]
@="C:\\odd\\icon.dll,1"

[HKEY_CLASSES_ROOT\oddfile\shell\open\command]
@="odd.exe \"%1\""
END
iconv -f UTF-8 -t UTF-16LE "$drive/odd.reg" | { printf '\377\376'; cat; } > "$drive/odd-wide.reg"
"$wine" regedit /S 'C:\odd-wide.reg'
rm "$drive/odd.reg" "$drive/odd-wide.reg"
settle

# Links are made in the server's files: one to another key, one that leads nowhere, one to its own ancestor.
link() { # KEY TARGET
    printf '\n[Software\\\\Odd\\\\%s] 1700000000\n#link\n"SymbolicLinkValue"=hex(6):' "$1"
    printf '%s' "$2" | iconv -f UTF-8 -t UTF-16LE | od -An -v -tx1 | tr -s ' \n' ',' | sed 's/^,//; s/,$//'
}
{
    link target '\Registry\Machine\Software\Microsoft\Windows\CurrentVersion\Uninstall'
    link nowhere '\Registry\Machine\Software\None'
    link above '\Registry\Machine\Software\Odd'
} >> "$DELVANE_TEST_PREFIX/system.reg"

echo "-- capturing it twice"
expect 0 on_windows /s /bc:FromWithin
settle
expect 0 on_linux /s /cc:FromWithout
"$compare" "$here/known-differences.txt" "$drive/Delvane/Results/FromWithin.dvs" "$drive/Delvane/Results/FromWithout.dvs"

echo "-- comparing it with either build"
printf x > "$drive/windows/system32/new.dll"
mkdir -p "$drive/Program Files/App"
cp "$drive/windows/system32/notepad.exe" "$drive/Program Files/App/app.exe"
printf 'x' > "$drive/odd/more.odd"
"$wine" reg add 'HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall\App' /v DisplayName /d App /f > /dev/null
"$wine" reg add 'HKCR\.app' /ve /d none /f > /dev/null
settle
expect 0 on_windows /s /cc:FromWithin2
settle
expect 0 on_linux /s /cc:FromWithout2
for pair in 'FromWithin FromWithin2' 'FromWithout FromWithout2'; do
    before=${pair% *} after=${pair#* }
    page="$drive/Delvane/Results/$after - $before.htm"
    expect 1 on_windows /s "/b:$before" "/c:$after" /g
    mv "$page" "$work/windows.htm"
    settle
    expect 1 on_linux /s "/b:$before" "/c:$after" /g
    mv "$page" "$work/$before.htm"
    # A line feed of ours is a carriage return and a line feed there, and nothing else has the one before the other.
    sed 's/$/\r/; $s/\r$//' "$work/$before.htm" > "$work/expected.htm"
    cmp "$work/windows.htm" "$work/expected.htm" || fail "the two builds make different reports of $before and $after"
done
# What the two pairs found, but for the names of the snapshots and the time.
for side in FromWithin FromWithout; do
    sed -E "s/$side(2?)/Snapshot\1/g; s/[A-Z][a-z]{2} [A-Z][a-z]{2} [ 0-9]{2} [0-9:]{8} [0-9]{4}/TIME/g" \
        "$work/$side.htm" > "$work/$side.txt"
done
diff "$work/FromWithin.txt" "$work/FromWithout.txt" || fail "the two pairs of snapshots give different reports"
grep -q 'new.dll' "$work/FromWithout.txt" || fail "the report does not hold what was added"
echo "the reports of both builds and of both pairs are the same"
