#!/bin/sh
# Checks the Windows half of src/platform with the MinGW compiler, without linking.
set -eu

cd "$(dirname "$0")/.."
compiler=${MINGW_CXX:-x86_64-w64-mingw32-g++}
if ! command -v "$compiler" >/dev/null 2>&1; then
    echo "check_windows: skipped, no $compiler (package g++-mingw-w64-x86-64)"
    exit 0
fi

status=0
for file in src/platform/*_windows.cpp src/platform/windows_*.cpp src/platform/native_message.cpp; do
    "$compiler" -std=c++17 -fsyntax-only -Wall -Wextra -Wpedantic -Wshadow -Werror \
        -DUNICODE -DWIN32_LEAN_AND_MEAN -D_WIN32_WINNT=0x0601 -I src "$file" || status=1
done
exit $status
