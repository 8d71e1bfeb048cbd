# Makes trees with a Debian system in them, which are gone when their work is done. Sourced with the folder
# to work in as $work; the packages that apt has fetched stay in $work/cache.
# shellcheck shell=bash disable=SC2154  # The callers set $work.
mirror=http://deb.debian.org/debian

# in_tree VARIANT ARCHITECTURES FILE... -- COMMAND...: runs the command in a tree with the files in
# /packages, and takes what it leaves in /packages/out to $work/debs. The command's folder is /packages.
in_tree() {
    local variant=$1 architectures=$2 copies=()
    shift 2
    while [ "$1" != -- ]; do
        copies+=("$1")
        shift
    done
    shift
    mkdir -p "$work/cache/partial"
    # shellcheck disable=SC2016  # mmdebstrap runs the hooks with the tree as $1.
    mmdebstrap --quiet --variant="$variant" --architectures="$architectures" \
        --skip=essential/unlink --dpkgopt=force-unsafe-io \
        --setup-hook='mkdir -p "$1/var/cache/apt/archives" "$1/packages/out"' \
        --setup-hook="sync-in $work/cache /var/cache/apt/archives" \
        --customize-hook="copy-in ${copies[*]} /packages" \
        --customize-hook="chroot \"\$1\" env -C /packages $*" \
        --customize-hook="sync-out /var/cache/apt/archives $work/cache" \
        --customize-hook="sync-out /packages/out $work/debs" \
        bookworm /dev/null "deb $mirror bookworm main"
}
