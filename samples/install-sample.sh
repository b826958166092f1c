#!/bin/sh
# Plays a badly behaved installation on the sample machine: "Harbour Ledger 3.0" does whatever an installation should
# not do, so that every list of the report has an entry.
set -eu
[ $# -eq 2 ] || { echo "usage: $0 FOLDER MKIMAGE" >&2; exit 2; }
folder=$1 mkimage=$2
installed=2004-11-02T10:15:00Z
registry=$(cd "$(dirname "$0")" && pwd)/install

cd "$folder/drive_c"
case $mkimage in
    /*) ;;
    *) mkimage=$OLDPWD/$mkimage ;;
esac

# Each makes a file and the folders above it, or writes over a file that is there.
image() { # KIND PATH VERSION SIZE
    mkdir -p "$(dirname "$2")"
    "$mkimage" "$1" "$2" --product "$3" --file "$3" --size "$4"
}
text() { # PATH TEXT
    mkdir -p "$(dirname "$1")"
    printf '%b' "$2" > "$1"
}
bytes() { # PATH SIZE
    mkdir -p "$(dirname "$1")"
    truncate -s "$2" "$1"
}

product='Program Files/Harbour Ledger'
common_menu='ProgramData/Microsoft/Windows/Start Menu/Programs'
roaming=users/marta/AppData/Roaming
documents=users/marta/Documents

# Where a program belongs, if only all of it were 32-bit.
image pe32 "$product/ledger.exe" 3.0.1.118 1384448
image dll "$product/ledgrpt.dll" 3.0.1.118 327680
image ne "$product/convert/ldgconv.exe" 2.5 94208
text "$product/Read me.txt" 'Harbour Ledger 3.0\r\n'
bytes "$product/Modèles/Facture d'été.hlt" 18432
bytes "$product/Modèles/Überweisung.hlt" 11264

# An executable of another product is replaced, and its templates go.
image dll 'Program Files/Quay Notes/spelling.dll' 1.6.0.0 118784
rm -r 'Program Files/Quay Notes/Templates'

# The system directory gets executables and a kernel-mode driver, and an older version of what it had.
image dll windows/system32/hlcore.dll 3.0.1.118 221184
image pe32 windows/hlunin.exe 1.0 45056
image dll windows/system32/comctl32.dll 5.80.2614.3600 540432
image pe32-native windows/system32/drivers/hlguard.sys 1.0.0.7 15872

# The files of older systems.
printf '[Harbour Ledger]\r\nPath=C:\\LEDGER\r\n' >> windows/win.ini
printf '[386Enh]\r\ndevice=hlguard.386\r\n' >> windows/system.ini
printf 'FILES=120\r\n' > config.sys
text autoexec.bat 'SET LEDGER=C:\\LEDGER\r\n'

# A folder of its own beside the right ones, with executables in it.
image pe64 LEDGER/bin/hlsync.exe 3.0.1.118 176128
bytes LEDGER/Données/clients.hld 2621440
text hlsetup.log 'Setup ended without errors.\r\n'

# The Start Menu: documents and the uninstaller among the shortcuts, and those of others touched.
bytes "$common_menu/Harbour Ledger/Harbour Ledger.lnk" 904
bytes "$common_menu/Harbour Ledger/Read me.lnk" 866
bytes "$common_menu/Harbour Ledger/Uninstall.lnk" 871
bytes "$common_menu/Quay Notes.lnk" 834
rm "$roaming/Microsoft/Windows/Start Menu/Übersicht.lnk"

# Application data: its own, and what another product kept there.
text "$roaming/Harbour Ledger/ledger.cfg" 'Currency=EUR\r\n'
text "$roaming/Quay Notes/settings.ini" '[View]\r\nZoom=85\r\n'
rm -r 'users/marta/AppData/Local/Quay Notes'

# The user's documents.
bytes "$documents/Harbour Ledger/Übungsbuchungen.hlb" 73728
bytes "$documents/Budget 2004.qn" 16896
rm users/Public/Documents/Welcome.txt

# The registry: sections that begin with one of the given lines go, or lose the value of that name; what install/ holds
# is added.
drop_key() { # FILE LINE
    LINE=$2 awk '/^\[/ { drop = index($0, ENVIRON["LINE"]) == 1 } !drop' "$1" > "$1.new"
    mv "$1.new" "$1"
}
drop_value() { # FILE LINE NAME
    LINE=$2 NAME="\"$3\"=" awk '/^\[/ { inside = index($0, ENVIRON["LINE"]) == 1 }
        !(inside && index($0, ENVIRON["NAME"]) == 1)' "$1" > "$1.new"
    mv "$1.new" "$1"
}
drop_key ../system.reg '[Software\\Quay Notes\\Spelling]'
drop_key ../system.reg '[Software\\Classes\\.qnt]'
drop_value ../user.reg '[Software\\Quay Notes\\Recent]' 1
cat "$registry/system.reg" >> ../system.reg
cat "$registry/user.reg" >> ../user.reg

# Every file and folder that was touched just now gets the time of the installation.
find . ../system.reg ../user.reg -newermt "$installed" -exec touch -d "$installed" {} +
