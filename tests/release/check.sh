#!/bin/sh
# Tries the files of a release, which package.sh has made, as those who get them do: looks at what they hold, and lets
# an ordinary user do the main job with each program for Linux. Ends with 0 if all is as it should be.
set -eu
CDPATH='' cd -- "$(dirname -- "$0")/../.."
. cmake/setup.sh

fail() {
    echo "$0: $1" >&2
    exit 1
}

done_with() {
    echo "   $1"
}

need_packages binutils dpkg-dev lintian desktop-file-utils groff-base libqt6widgets6 util-linux unzip
version=$(sed -n 's/^project(delvane VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt)
package=$PWD/dist/delvane_${version}_amd64.deb
archive=$PWD/dist/delvane-$version-linux-x64.tar.gz
windows=$PWD/dist/delvane-$version-windows-x64.zip
mkimage=$PWD/build-package/linux/samples/mkimage
for file in "$package" "$archive" "$windows" "$mkimage"; do
    [ -f "$file" ] || fail "$file is missing; ./package.sh makes it"
done

work=$(cd "$(mktemp -d)" && pwd -P)
process=
trap 'kill $process 2> /dev/null || true; chmod -R u+w "$work"; rm -rf "$work"' EXIT
trap 'exit 1' HUP INT TERM
chmod 755 "$work"

# As somebody without rights, in an environment of their own. What the user's folder holds is theirs.
home=$work/home
mkdir "$home"
user() {
    if [ "$(id -u)" -eq 0 ]; then
        chown -R 65534:65534 "$home"
        setpriv --reuid=65534 --regid=65534 --clear-groups env -i PATH="$PATH" HOME="$home" "$@"
    else
        env -i PATH="$PATH" HOME="$home" "$@"
    fi
}

# Runs the command as that user and wants that exit code.
user_gets() { # CODE COMMAND...
    wanted=$1
    shift
    code=0
    user "$@" || code=$?
    [ "$code" -eq "$wanted" ] || fail "exit code $code and not $wanted: $*"
}

# Snapshot, installation, snapshot, report, on the sample machine.
do_main_job() { # PROGRAM RESULTS
    rm -rf "$home/machine"
    samples/make-machine.sh "$home/machine" "$mkimage"
    user_gets 0 env DELVANE_MACHINE="$home/machine" "$1" /s /bc:Before
    samples/install-sample.sh "$home/machine" "$mkimage"
    user_gets 1 env DELVANE_MACHINE="$home/machine" "$1" /s /b:Before /cc:After /g
    grep -q 'Kernel Mode Drivers Installed' "$2/After - Before.htm" || fail "the report in $2 lacks a finding"
    done_with "an ordinary user takes and compares snapshots; the report is there"
}

# A visible run that has loaded its module, and lasts until it is ended.
show_window() { # PROGRAM MODULE
    # The number of the process is that of the shell which becomes the program.
    # shellcheck disable=SC2016
    user env QT_QPA_PLATFORM=offscreen DELVANE_MACHINE="$home/machine" \
        sh -c 'echo $$ > "$HOME/process"; exec "$@"' sh "$1" /nologo 2> "$work/said" &
    tries=0
    until process=$(cat "$home/process" 2> /dev/null) && grep -qF "$2" "/proc/$process/maps"; do
        tries=$((tries + 1))
        [ $tries -lt 100 ] || fail "a visible run of $1 does not load $2: $(cat "$work/said")"
        sleep 0.1
    done
    sleep 1
    kill "$process" 2> /dev/null || fail "the visible run of $1 did not last"
    wait
    process=
    rm "$home/process"
    # Without the module it does not last: it is this one that was used.
    mv "$2" "$2.away"
    user_gets 32 env QT_QPA_PLATFORM=offscreen DELVANE_MACHINE="$home/machine" "$1" /nologo 2> /dev/null
    mv "$2.away" "$2"
    done_with "a visible run shows its window by ${2#"$work/"}"
}

check_program() { # FILE
    readelf -hldW "$1" > "$work/elf"
    for mark in 'Type: *DYN' 'GNU_RELRO' 'BIND_NOW' 'GNU_STACK .* RW '; do
        grep -q "$mark" "$work/elf" || fail "$1 is not hardened: no $mark"
    done
    readelf -W --dyn-syms "$1" | grep -q __stack_chk_fail || fail "$1 does not guard its stack"
    ! readelf -SW "$1" | grep -qE '\.symtab|\.debug' || fail "$1 is not stripped"
    ! strings "$1" | grep -qF "$PWD" || fail "$1 tells where it was built"
}

echo "== $(basename "$package")"
lintian --allow-root --fail-on error,warning "$package" || fail "lintian complains"
done_with "lintian finds no error and no warning"
[ "$(dpkg-deb -f "$package" Version)" = "$version" ] || fail "the package has another version"
! dpkg-deb -f "$package" Depends Pre-Depends | grep -qi qt || fail "an unattended machine would have to install Qt"
dpkg-deb -f "$package" Recommends | grep -q libqt6widgets6 || fail "a desktop would not get Qt"
dpkg-deb -x "$package" "$work/root"
usr=$work/root/usr
(cd "$work/root" && dpkg-deb --ctrl-tarfile "$package" | tar -xO ./md5sums | md5sum --quiet -c -)
program=$usr/bin/delvane
check_program "$program"
check_program "$usr/lib/delvane/delvane-qt.so"
readelf -s -W "$program" | grep -q '_chk@GLIBC' || fail "the program is built without checked calls"
done_with "program and module are hardened and stripped"
desktop-file-validate "$usr/share/applications/delvane.desktop"
[ -f "$usr/bin/$(sed -n 's/^Exec=//p' "$usr/share/applications/delvane.desktop")" ] || fail "the entry starts nothing"
for size in 32 48 64 128 256; do
    # Width and height stand behind the signature and the head of the first chunk.
    measures=$(od -An -v -tx1 -j16 -N8 "$usr/share/icons/hicolor/${size}x$size/apps/delvane.png" | tr -d ' ')
    [ "$measures" = "$(printf '%08x%08x' $size $size)" ] || fail "the icon of $size has another size: $measures"
done
done_with "desktop entry and icons are valid"

zcat "$usr/share/man/man1/delvane.1.gz" > "$work/delvane.1"
groff -K utf8 -man -ww -z "$work/delvane.1" 2> "$work/warnings"
[ ! -s "$work/warnings" ] || fail "the manual page is not clean: $(cat "$work/warnings")"
"$program" --help | grep -oE '(^|[ ;])/[a-z]+' | tr -d ' ;' | sort -u > "$work/switches"
[ "$(wc -l < "$work/switches")" -gt 10 ] || fail "--help tells no switches"
while read -r switch; do
    grep -qE -- "$switch([^a-z]|\$)" "$work/delvane.1" || fail "the manual page lacks $switch"
done < "$work/switches"
grep -q "$version" "$work/delvane.1" || fail "the manual page is of another version"
[ "$("$program" --version)" = "Install Delvane $version" ] || fail "the program is of another version"
done_with "the manual page is clean and tells each switch of --help"

chmod -R a-w "$work/root"
do_main_job "$program" "$home/.local/share/delvane/Results"
if [ "$(id -u)" -eq 0 ]; then
    DELVANE_MACHINE="$home/machine" HOME="$work/root-home" "$program" /s "/res:$work/root-home/"
    [ "$(ls "$usr/bin")" = delvane ] || fail "root's files lie beside the program"
    [ -f "$work/root-home/.local/share/delvane/delvane.cfg" ] || fail "root's files are not in root's folder"
    done_with "root's files lie in root's own folder"
fi
chmod u+w "$usr/lib/delvane"
show_window "$program" "$usr/lib/delvane/delvane-qt.so"
[ -s "$usr/share/delvane/Using.htm" ] || fail "the help page is missing"

# Every picture of the help page stands where the page looks for it.
check_pictures() { # FOLDER
    grep -o 'src="[^"]*"' "$1/Using.htm" | cut -d '"' -f 2 | while read -r picture; do
        [ -s "$1/$picture" ] || fail "$1/$picture is missing"
    done
}
check_pictures "$usr/share/delvane"

echo "== $(basename "$archive")"
tar -xzf "$archive" -C "$home"
folder=$home/delvane-$version-linux-x64
cmp "$program" "$folder/delvane" || fail "the archive has another program than the package"
check_pictures "$folder"
! grep -q '@' "$folder/README.txt" || fail "the notes are not filled in"
do_main_job "$folder/delvane" "$folder/Results"
show_window "$folder/delvane" "$folder/delvane-qt.so"

echo "== $(basename "$windows")"
unzip -q "$windows" -d "$work"
folder=$work/delvane-$version-windows-x64
check_pictures "$folder"
! grep -q '@' "$folder/README.txt" || fail "the notes are not filled in"
for text in "$folder"/*.txt; do
    ! grep -qv "$(printf '\r')\$" "$text" || fail "$text has a line without Windows' end"
done
objdump -p "$folder/delvane.exe" | sed -n 's/.*DLL Name: //p' > "$work/libraries"
[ -s "$work/libraries" ] || fail "delvane.exe is no program for Windows"
! grep -iE 'libstdc|libgcc|winpthread' "$work/libraries" || fail "delvane.exe needs a library that is not there"
done_with "the program needs libraries of Windows alone: $(sort "$work/libraries" | paste -s -d ' ')"
echo "== The release is as it should be"
