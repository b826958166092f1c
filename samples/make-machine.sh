#!/bin/sh
# Makes the sample machine: a folder in the form of a Wine prefix, before anything is installed on it. What it holds
# stands in machine/: the texts of its registry, and the manifest of its files.
set -eu
[ $# -eq 2 ] || { echo "usage: $0 FOLDER MKIMAGE" >&2; exit 2; }
folder=$1 mkimage=$2
sources=$(dirname "$0")/machine
[ ! -e "$folder/drive_c" ] || { echo "$0: $folder holds a machine already" >&2; exit 1; }

mkdir -p "$folder/drive_c" "$folder/dosdevices"
ln -s ../drive_c "$folder/dosdevices/c:"
ln -s / "$folder/dosdevices/z:"
cp "$sources/system.reg" "$sources/user.reg" "$folder"
touch -d 2004-09-17T18:35:00Z "$folder/system.reg" "$folder/user.reg"

# Without comments and blank lines, and with bare separators.
sed -e '/^#/d' -e '/^$/d' -e 's/ *| */|/g' "$sources/manifest" > "$folder/entries"

while IFS='|' read -r kind written mode content path; do
    target=$folder/drive_c/$path
    case $kind in
        folder) mkdir "$target" ;;
        text) printf '%b' "$content" > "$target" ;;
        bytes) truncate -s "$content" "$target" ;;
        *)
            version=${content% *}
            "$mkimage" "$kind" "$target" --product "$version" --file "$version" --size "${content#* }"
            ;;
    esac
done < "$folder/entries"

# A file that is made moves the time of its folder, so the times come last.
while IFS='|' read -r kind written mode content path; do
    touch -d "$written" "$folder/drive_c/$path"
    chmod "$mode" "$folder/drive_c/$path"
done < "$folder/entries"
touch -d 2004-03-14T09:00:00Z "$folder/drive_c"
rm "$folder/entries"
