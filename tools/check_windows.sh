#!/usr/bin/env bash
# Checks the sources as Windows would read them, with the MinGW compiler and without linking. The
# libraries' headers are those of this machine, which ask little of the system.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

compiler=${MINGW_CXX:-i686-w64-mingw32-g++-posix}
command -v "$compiler" >/dev/null 2>&1 || compiler=x86_64-w64-mingw32-g++-posix
if ! command -v "$compiler" >/dev/null 2>&1; then
    echo "check_windows: skipped, no MinGW compiler (package g++-mingw-w64-i686-posix)"
    exit 0
fi

headers=$(mktemp -d)
trap 'rm -rf "$headers"' EXIT
libraries=/usr/include/$(gcc -print-multiarch)
ln -s /usr/include/srt "$libraries"/lib{av*,sw*} "$libraries"/qt5/Qt* /usr/include/sodium{,.h} "$headers"
# What these libraries ask for beyond the compiler's own headers.
mkdir "$headers/sys" "$headers/win"
echo 'struct iovec { void* iov_base; size_t iov_len; };' >"$headers/sys/uio.h"
echo 'enum { LOG_CRIT = 2, LOG_ERR, LOG_WARNING, LOG_NOTICE, LOG_DEBUG = 7 };' \
    >"$headers/win/syslog_defs.h"

flags=(-std=c++17 -fsyntax-only -Wall -Wextra -Wpedantic -Wshadow -Werror
    -DUNICODE -DWIN32_LEAN_AND_MEAN -DNOMINMAX -D_WIN32_WINNT=0x0601 -DQT_USE_QSTRINGBUILDER
    '-DORVELLE_DATA_FOLDER="x"' '-DORVELLE_DOC_FOLDER="x"' '-DORVELLE_UPDATE_SERVER="x"' '-DORVELLE_UPDATE_KEY="x"' '-DORVELLE_VERSION="1"'
    -I src -isystem "$headers")
for folder in "$headers"/Qt*; do
    flags+=(-isystem "$folder")
done

# With file names as arguments: only those.
if [ $# = 0 ]; then
    mapfile -t files < <(find src -name '*.cpp' ! -name '*_freedesktop.cpp' ! -name freedesktop.cpp)
    set -- "${files[@]}"
fi
printf '%s\0' "$@" | xargs -0 -n 1 -P "$(nproc)" "$compiler" "${flags[@]}"
