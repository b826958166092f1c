#!/bin/sh
# Makes the second sample machine: the volume of a Windows machine, out of the first one, as it is now. The files are the
# same; the registry texts become the hives that Windows has.
set -eu
[ $# -eq 3 ] || { echo "usage: $0 PREFIX VOLUME MKHIVE" >&2; exit 2; }
prefix=$1 volume=$2 mkhive=$3

rm -rf "$volume"
cp -a "$prefix/drive_c" "$volume"
config=$volume/windows/system32/config
classes=$volume/users/marta/AppData/Local/Microsoft/Windows
mkdir -p "$config" "$classes"

# A hive holds what lies below one key. Of the control sets a disk has only those with numbers.
make_hive() { # HIVE TEXT KEY [NAME=OTHER]
    hive=$1 text=$2
    shift 2
    "$mkhive" "$prefix/$text" "$hive" "$@"
    touch -r "$prefix/$text" "$hive"
}
make_hive "$config/SOFTWARE" system.reg Software
make_hive "$config/SYSTEM" system.reg System CurrentControlSet=ControlSet001
make_hive "$config/SAM" system.reg SAM
make_hive "$config/SECURITY" system.reg SECURITY
make_hive "$volume/users/marta/NTUSER.DAT" user.reg ''
make_hive "$classes/UsrClass.dat" user.reg 'Software\Classes'

# A file that is made moves the time of its folder: those that the first machine has get theirs back.
find "$volume" -type d -newermt 2005-01-01 | while read -r made; do
    same=$prefix/drive_c${made#"$volume"}
    if [ -d "$same" ]; then touch -r "$same" "$made"; else touch -d 2004-03-14T09:00:00Z "$made"; fi
done
