# Fetches Debian packages for i386 and unpacks them. They are not installed, because many of them conflict
# with the packages for this machine's own word size. Sourced.
# shellcheck shell=bash

# korv_unpack_i386 FOLDER PACKAGE...: fails if the package index or a package cannot be fetched.
korv_unpack_i386() {
    local folder apt package
    folder=$(realpath -m "$1")
    apt=$folder.apt
    shift
    rm -rf "$folder" "$apt"
    mkdir -p "$folder" "$apt/lists/partial" "$apt/cache/archives/partial" "$apt/packages"
    local options=(-qq -o APT::Architecture=i386 -o APT::Architectures=i386 -o APT::Sandbox::User=
                   -o "Dir::State::lists=$apt/lists" -o "Dir::Cache=$apt/cache")
    # A package source that fails is not necessarily the one that has the packages.
    apt-get "${options[@]}" update || true
    if ! (cd "$apt/packages" && apt-get "${options[@]}" download "$@"); then
        rm -rf "$folder" "$apt"
        echo "cannot fetch the i386 packages $*; is Debian's package index for i386 reachable?" >&2
        return 1
    fi
    for package in "$apt"/packages/*.deb; do
        dpkg-deb -x "$package" "$folder"
    done
    rm -r "$apt"
}
