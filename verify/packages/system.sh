# Makes a tree with its own package database and as much of a 32-bit Debian system as programs need, from
# this machine's multilib files. Sourced with the folder to work in as $work; the tree is $tree.
tree=$work/tree

in_tree() {
    chroot "$tree" "$@"
}

install_packages() {
    dpkg --root="$tree" --log="$work/dpkg.log" --install "$@"
}

purge_packages() {
    dpkg --root="$tree" --log="$work/dpkg.log" --purge "$@"
}

# make_package NAME VERSION [CONTROL LINE]...: a package of the files in $work/system/NAME.
make_package() {
    local folder=$work/system/$1
    mkdir -p "$folder/DEBIAN"
    printf '%s\n' "Package: $1" "Version: $2" "Architecture: i386" "Description: $1 of the tree" \
        "Maintainer: nobody <nobody@example.org>" "${@:3}" >"$folder/DEBIAN/control"
    dpkg-deb --root-owner-group --build "$folder" "$work/system/$1.deb" >/dev/null
}

# take PACKAGE FILE...: files of this machine, for the package.
take() {
    local file
    for file in "${@:2}"; do
        mkdir -p "$work/system/$1$(dirname "$file")"
        cp -L "$file" "$work/system/$1$file"
    done
}

make_system() {
    local libc gcc
    libc=$(dpkg-query -W -f '${Version}' libc6-i386)
    gcc=$(dpkg-query -W -f '${Version}' lib32stdc++6)
    rm -rf "$work/system" "$tree"
    mkdir -p "$work/system"

    take libc6 /usr/lib32/{ld-linux.so.2,libc.so.6,libm.so.6}
    mkdir -p "$work/system/libc6/lib" "$work/system/libc6/etc"
    ln -s ../usr/lib32/ld-linux.so.2 "$work/system/libc6/lib/ld-linux.so.2"
    printf '/usr/lib32\n/usr/lib/i386-linux-gnu\n' >"$work/system/libc6/etc/ld.so.conf"
    make_package libc6 "$libc"
    make_package libc6-dev "$libc"
    take libgcc-s1 /usr/lib32/libgcc_s.so.1
    make_package libgcc-s1 "$gcc"
    take libstdc++6 /usr/lib32/libstdc++.so.6
    make_package libstdc++6 "$gcc"

    # The loader's cache is made when a package's trigger asks for it. The host uses the locale.
    take libc-bin /sbin/ldconfig $(find /usr/lib/locale/C.utf8 -type f)
    mkdir -p "$work/system/libc-bin/DEBIAN"
    echo interest-noawait ldconfig >"$work/system/libc-bin/DEBIAN/triggers"
    gcc -m32 -static -o "$work/system/libc-bin/DEBIAN/postinst" -x c - <<'C'
#include <unistd.h>
int main(void) { return execl("/sbin/ldconfig", "ldconfig", (char*)0); }
C
    make_package libc-bin "$libc"

    mkdir -p "$tree"/var/lib/dpkg/{updates,info,triggers}
    touch "$tree"/var/lib/dpkg/{status,available}
    echo i386 >"$tree/var/lib/dpkg/arch"
    install_packages "$work"/system/*.deb
}
