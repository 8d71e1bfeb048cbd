# Installs Debian packages that other scripts need and that are missing. Sourced.
# shellcheck shell=bash

# korv_install PACKAGE...: through apt-get, as root or with sudo. Does nothing if all are installed, on a system
# without Debian's packages, and where KORV_NO_INSTALL is set.
korv_install() {
    local package missing=()
    [ -z "${KORV_NO_INSTALL:-}" ] && command -v dpkg-query >/dev/null || return 0
    for package in "$@"; do
        [[ $(dpkg-query -W -f '${Status}' "$package" 2>/dev/null) == *'ok installed' ]] ||
            missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    echo "installing: ${missing[*]}"
    local sudo=()
    [ "$(id -u)" -eq 0 ] || sudo=(sudo)
    "${sudo[@]}" apt-get update -q
    "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -q -y --no-install-recommends "${missing[@]}"
}

# korv_setup PACKAGE...: what building for 64 and for 32 bits takes, and the packages.
korv_setup() {
    korv_install cmake ninja-build g++ g++-multilib libcli11-dev libssl-dev python3 "$@"
}

# korv_version: the version of the package, as the headers have it.
korv_version() {
    sed -n 's/^#define KORV_VERSION_\(MAJOR\|MINOR\|PATCH\) \([0-9]*\).*/\2/p' include/korv/base.h | paste -sd.
}
