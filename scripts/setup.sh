# Installs what the other scripts need and is missing: Debian packages, through apt-get, as root or with
# sudo. Sourced with the names of further packages as arguments. Does nothing when all are there.
korv_setup() {
    local package missing=()
    for package in cmake ninja-build g++ g++-multilib libcli11-dev python3 "$@"; do
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
