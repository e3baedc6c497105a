# 32-bit Windows, built by mingw-w64 with POSIX threads. The prefixes of its libraries come in
# CMAKE_PREFIX_PATH; nothing of this machine's own is taken.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_C_COMPILER i686-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER i686-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER i686-w64-mingw32-windres)

set(CMAKE_FIND_ROOT_PATH /usr/i686-w64-mingw32 ${CMAKE_PREFIX_PATH})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(pkgconfig_folders ${CMAKE_PREFIX_PATH})
list(TRANSFORM pkgconfig_folders APPEND /lib/pkgconfig)
list(JOIN pkgconfig_folders : pkgconfig_folders)
set(ENV{PKG_CONFIG_LIBDIR} "${pkgconfig_folders}")
set(ENV{PKG_CONFIG_PATH} "")
# The libraries may have been moved since they were built.
set(PKG_CONFIG_ARGN --define-prefix)

set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../tools/windows/in_wine.sh)
