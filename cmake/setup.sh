# What demo.sh, test.sh and package.sh share: the packages of the system and the release build. They source it from the
# project's folder, which stays the current one.

as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    elif command -v sudo > /dev/null; then
        sudo "$@"
    else
        echo "this needs root or sudo: $*" >&2
        return 1
    fi
}

# need_packages PKG...  installs those of the Debian packages that are missing.
need_packages() {
    missing=
    for package in "$@"; do
        case $(dpkg-query -W -f '${db:Status-Status}' "$package" 2> /dev/null) in
            installed*) ;;
            *) missing="$missing $package" ;;
        esac
    done
    [ -n "$missing" ] || return 0
    echo "== Installing$missing"
    # A source of packages that cannot be reached matters only if one of these comes from there.
    as_root apt-get -q -o DPkg::Lock::Timeout=120 update || true
    # The list is meant to be split.
    # shellcheck disable=SC2086
    as_root env DEBIAN_FRONTEND=noninteractive apt-get -q -o DPkg::Lock::Timeout=120 install -y \
        --no-install-recommends $missing
}

# True if build/ was configured, and for this place: a copied folder brings the paths of its origin.
is_configured() {
    [ -f build/build.ninja ] && grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$(pwd -P)" build/CMakeCache.txt
}

# True if build/ has the settings, each of the form -DNAME=VALUE.
has_settings() {
    for setting in "$@"; do
        name=${setting%%=*}
        grep -qx "${name#-D}:[A-Z]*=${setting#*=}" build/CMakeCache.txt || return 1
    done
}

# build_release [-DNAME=VALUE...]  builds the preset "release" in build/. It is configured only when it is not yet, or
# when it has other settings than these.
build_release() {
    if ! is_configured; then
        cmake --fresh --preset release "$@"
    elif ! has_settings "$@"; then
        cmake --preset release "$@"
    fi || {
        # A half configured folder would pass for a whole one the next time.
        rm -f build/build.ninja
        return 1
    }
    cmake --build build
}
