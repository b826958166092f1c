#!/bin/sh
# Makes the files of a release in dist/ out of the last commit: an archive for Linux, a Debian package, and an archive
# for Windows. The same commit gives the same bytes, wherever and whenever they are made with the same compilers. With
# --check the files are tried as well.
set -eu
CDPATH='' cd -- "$(dirname -- "$0")"
. cmake/setup.sh

fail() {
    echo "$0: $1" >&2
    exit 1
}

step() {
    printf '\n== %s\n' "$1"
}

case ${1-} in
    '' | --check) ;;
    *) fail "usage: $0 [--check]" ;;
esac
need_packages g++ g++-mingw-w64-x86-64-posix cmake ninja-build libutf8proc-dev nlohmann-json3-dev libcli11-dev libtomlplusplus-dev qt6-base-dev dpkg-dev git zip

# Nothing of the caller's own settings gets into the files.
umask 022
export LC_ALL=C TZ=UTC
unset CC CXX CFLAGS CXXFLAGS CPPFLAGS LDFLAGS

[ -z "$(git status --porcelain)" ] || fail "there are changes that are not committed; a release is made of a commit"
SOURCE_DATE_EPOCH=$(git log -1 --format=%ct)
export SOURCE_DATE_EPOCH
version=$(sed -n 's/^project(delvane VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt)
[ -n "$version" ] || fail "CMakeLists.txt tells no version"
[ "$(dpkg-parsechangelog -l packaging/changelog -S Version)" = "$version" ] ||
    fail "packaging/changelog begins with another version than $version"

work=$PWD/build-package
source=$work/source
rm -rf "$work" dist
mkdir -p "$source" dist
git archive --format=tar HEAD | tar -x -C "$source"

# fill FROM TO NAME=VALUE...  a text with its @NAME@ replaced.
fill() {
    from=$1 to=$2
    shift 2
    cp "$from" "$to"
    for pair in "$@"; do
        sed -i "s|@${pair%%=*}@|${pair#*=}|g" "$to"
    done
}

# The highest version of that name which one of the programs asks its libraries for.
highest() { # NAME FILE...
    name=$1
    shift
    objdump -T "$@" | grep -oE "\($name"'_[0-9.]+\)' | tr -d '()' | sort -Vu | tail -n 1 | sed 's/.*_//'
}

# One time, one owner and two modes for all that stands in the folder.
settle() {
    chmod -R u=rwX,go=rX,a-st "$1"
    find "$1" -exec touch -h -d "@$SOURCE_DATE_EPOCH" {} +
}

build_linux() {
    step "Building for Linux"
    hardening='-D_FORTIFY_SOURCE=2 -fstack-protector-strong -fstack-clash-protection -fcf-protection'
    linking='-Wl,-z,relro,-z,now,--as-needed'
    cmake -S "$source" -B "$work/linux" -G Ninja -DCMAKE_BUILD_TYPE=Release -DDELVANE_TESTS=OFF \
        -DCMAKE_CXX_FLAGS="$hardening -ffile-prefix-map=\"$work\"=." -DCMAKE_POSITION_INDEPENDENT_CODE=ON \
        -DCMAKE_EXE_LINKER_FLAGS="-pie $linking" -DCMAKE_MODULE_LINKER_FLAGS="$linking"
    cmake --build "$work/linux" -j "$(nproc)"
    DESTDIR=$work/root cmake --install "$work/linux" --prefix /usr --component Unspecified
    strip --strip-unneeded --remove-section=.comment "$work/root/usr/bin/delvane" \
        "$work/root/usr/lib/delvane/delvane-qt.so"
}

pack_linux() {
    step "Packing for Linux"
    name=delvane-$version-linux-x64
    folder=$work/$name
    installed=$work/root/usr
    mkdir "$folder"
    cp -r "$installed/bin/delvane" "$installed/lib/delvane/delvane-qt.so" "$installed/share/delvane/." \
        "$installed/share/man/man1/delvane.1" "$source/LICENSE" "$source/packaging/copyright" "$folder"
    fill "$source/packaging/notes-linux.txt" "$folder/README.txt" VERSION="$version" \
        GLIBC="$(highest GLIBC "$folder/delvane" "$folder/delvane-qt.so")" \
        GLIBCXX="$(highest GLIBCXX "$folder/delvane" "$folder/delvane-qt.so")" \
        QT="$(highest Qt "$folder/delvane-qt.so")"
    settle "$folder"
    tar -C "$work" --format=gnu --sort=name --owner=0 --group=0 --numeric-owner -cf - "$name" |
        gzip -9n > "dist/$name.tar.gz"
}

pack_debian() {
    step "Packing for Debian"
    root=$work/root
    documents=$root/usr/share/doc/delvane
    mkdir -p "$documents" "$root/DEBIAN" "$work/debian"
    cp "$source/packaging/copyright" "$documents"
    gzip -9n "$root/usr/share/man/man1/delvane.1"
    gzip -9nc "$source/packaging/changelog" > "$documents/changelog.gz"

    # The dialogs alone need Qt, so it is recommended: a desktop gets it, and an unattended machine can do without.
    cp "$source/packaging/control" "$source/packaging/changelog" "$work/debian"
    (
        cd "$work"
        dpkg-shlibdeps -T"$work/substvars" -dRecommends -e"$root/usr/lib/delvane/delvane-qt.so" \
            -dDepends -e"$root/usr/bin/delvane"
        dpkg-gencontrol -T"$work/substvars" -P"$root" -f"$work/files"
    )
    settle "$root"
    (cd "$root" && find usr -type f | sort | xargs md5sum > DEBIAN/md5sums)
    settle "$root/DEBIAN"
    dpkg-deb --root-owner-group --threads-max=1 -Zxz --build "$root" "dist/delvane_${version}_amd64.deb"
}

# Windows' own line ends.
with_crlf() {
    sed -i 's/$/\r/' "$@"
}

make_windows() {
    step "Building for Windows"
    name=delvane-$version-windows-x64
    folder=$work/$name
    # The linker strips: it knows how to leave the time of the build out of the program.
    (
        cd "$source"
        cmake -S . -B "$work/windows" -G Ninja --toolchain cmake/mingw.cmake -DCMAKE_BUILD_TYPE=Release \
            -DDELVANE_TESTS=OFF -DCMAKE_CXX_FLAGS="-ffile-prefix-map=\"$work\"=." \
            -DCMAKE_EXE_LINKER_FLAGS=-s\ -Wl,--no-insert-timestamp
    )
    cmake --build "$work/windows" -j "$(nproc)" --target delvane
    step "Packing for Windows"
    mkdir "$folder"
    cp "$work/windows/delvane.exe" "$folder"
    cp -r "$source/docs/Using.htm" "$source/docs/pictures" "$source/docs/review.md" "$source/docs/review.png" \
        "$source/docs/ci.md" "$source/docs/fleet.md" "$folder"
    cp "$source/LICENSE" "$folder/LICENSE.txt"
    cat "$source/packaging/copyright" /usr/share/doc/mingw-w64-common/copyright > "$folder/licences of parts.txt"
    fill "$source/packaging/notes-windows.txt" "$folder/README.txt" VERSION="$version"
    with_crlf "$folder"/*.txt
    settle "$folder"
    (cd "$work" && find "$name" | sort | zip -9 -X -q -@ "$OLDPWD/dist/$name.zip")
}

build_linux
pack_linux
pack_debian
make_windows

step "The release, of $(git log -1 --format='%h, %cs')"
(cd dist && for file in *; do
    printf '%8d  %s  %s\n' "$(stat -c %s "$file")" "$(sha256sum "$file" | cut -d ' ' -f 1)" "$file"
done)

[ "${1-}" != --check ] || tests/release/check.sh
