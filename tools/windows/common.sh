# Names and helpers that the Windows scripts share. Sourced by ./dev, which runs them from the top
# of the tree.

triplet=i686-w64-mingw32
windows=$top/build/windows
windows_libs=$windows/deps
windows_logs=$windows/logs
jobs=${ORVELLE_JOBS:-$(nproc)}

windows_packages=(
    g++-mingw-w64-i686-posix nasm make autoconf automake libtool dpkg-dev debootstrap nsis zip
)

# The compilers with POSIX threads under their plain names, whatever update-alternatives says.
use_cross_compiler() {
    local tool
    mkdir -p "$windows/bin"
    for tool in gcc g++; do
        ln -sf "/usr/bin/$triplet-$tool-posix" "$windows/bin/$triplet-$tool"
    done
    PATH=$windows/bin:$PATH
}

# logged NAME COMMAND...: runs it with its output in a file of its own, shown where it fails.
logged() {
    local name=$1 start=$SECONDS log=$windows_logs/$1.log code
    shift
    mkdir -p "$windows_logs"
    printf '%s ... ' "$name" >&2
    # Within a condition it would run on after an error.
    set +e
    (set -euo pipefail; "$@") >"$log" 2>&1
    code=$?
    set -e
    if [ $code = 0 ]; then
        echo "$((SECONDS - start)) s" >&2
    else
        echo "failed; the end of $log:" >&2
        tail -n 40 "$log" >&2
        return $code
    fi
}
