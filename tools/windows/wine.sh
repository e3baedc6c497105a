# Wine in a 32-bit Debian tree of its own, of which the machine's package system knows nothing.
# Sourced.

wine_root=$windows/wine/root
wine_packages=(
    wine32 wine libgl1 libgl1-mesa-dri libpulse0 fonts-dejavu-core fonts-wqy-microhei
)

wine_key() {
    { echo "$debian_suite ${wine_packages[*]}"; declare -f make_wine_tree; } | sha256sum | cut -c 1-12
}

ensure_wine() {
    local key
    key=$(wine_key)
    [ -e "$windows/wine/complete-$key" ] && return 0
    as_root rm -rf "$windows/wine"
    mkdir -p "$windows/wine"
    logged wine make_wine_tree
    touch "$windows/wine/complete-$key"
}

make_wine_tree() {
    as_root debootstrap --arch=i386 --variant=minbase "$debian_suite" "$wine_root" \
        "$(debian_mirror)"
    in_wine apt-get install -q -y --no-install-recommends "${wine_packages[@]}"
    as_root rm -rf "$wine_root"/var/cache/apt/archives
    in_wine wineboot --init
    in_wine winecfg -v win10
    in_wine wineserver --wait
}

debian_mirror() {
    cat /etc/apt/sources.list.d/debian.sources /etc/apt/sources.list 2>/dev/null |
        sed -nE 's/^(URIs:|deb ).*(https?:[^ ]+).*/\2/p' | head -n 1
}

# in_wine COMMAND...: as root of the tree, in the folder that this is called in, which the tree
# sees under its own name, like the whole project. Only the settings named here are passed on; Wine
# itself drops those of Qt unless their names begin with WINE.
in_wine() {
    (exec_in_wine "$@")
}

# The same in place of the calling shell, so that a signal reaches the command. Above others: nearly
# every call of a program takes a turn of Wine's one server, so that on a busy machine it gets little
# done, and links fall silent.
exec_in_wine() {
    local name settings=() sound=${PULSE_SERVER:-} root=()
    [ "$(id -u)" = 0 ] || root=(sudo)
    for name in DISPLAY PULSE_SERVER ${!ORVELLE_*}; do settings+=("$name=${!name:-}"); done
    exec "${root[@]}" unshare --mount --propagation private "$top/tools/windows/in_tree.sh" \
        "$wine_root" "$top" "${sound:+$(dirname "${sound#unix:}")}" \
        nice -n -10 env -i HOME=/root PATH=/usr/lib/wine:/usr/sbin:/usr/bin:/sbin:/bin LANG=C.UTF-8 \
        DEBIAN_FRONTEND=noninteractive WINEPREFIX=/root/wine WINEDEBUG="${WINEDEBUG:--all}" \
        WINEDLLOVERRIDES=mscoree,mshtml,winedbg.exe= LIBGL_ALWAYS_SOFTWARE=1 WINEQT_FORCE_STDERR_LOGGING=1 \
        "${settings[@]}" "$@"
}
