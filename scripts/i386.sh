# Debian packages for i386 beside those of this machine's own word size. Many cannot be installed with
# the other ones, so these are unpacked only.

# korv_unpack_i386 FOLDER PACKAGE...: fails where the package index or a package is out of reach.
korv_unpack_i386() {
    local folder apt package
    folder=$(realpath -m "$1")
    apt=$folder.apt
    shift
    rm -rf "$folder" "$apt"
    mkdir -p "$folder" "$apt/lists/partial" "$apt/cache/archives/partial" "$apt/packages"
    local options=(-qq -o APT::Architecture=i386 -o APT::Architectures=i386 -o APT::Sandbox::User=
                   -o "Dir::State::lists=$apt/lists" -o "Dir::Cache=$apt/cache")
    # A source that cannot be read now need not be the one that holds the packages.
    apt-get "${options[@]}" update || true
    if ! (cd "$apt/packages" && apt-get "${options[@]}" download "$@"); then
        rm -rf "$folder" "$apt"
        echo "The i386 packages $* cannot be had: is Debian's index for i386 reachable?" >&2
        return 1
    fi
    for package in "$apt"/packages/*.deb; do
        dpkg-deb -x "$package" "$folder"
    done
    rm -r "$apt"
}
