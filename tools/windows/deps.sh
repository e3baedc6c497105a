# The libraries of the Windows client, each built once into build/windows/deps/NAME-KEY. The key is
# made of the versions, the compiler and the recipe itself, so a changed option builds that library
# (and what is linked with it) anew, and nothing else. Shared libraries throughout, so that users
# can put others in their place. Sourced.

# In the order in which they are built.
windows_libraries=(libsodium srt x264 ffmpeg qt)

declare -A library_sources=(
    [libsodium]=libsodium [srt]=srt [x264]=x264 [ffmpeg]=ffmpeg
    [qt]="qtbase-opensource-src qtmultimedia-opensource-src"
)
declare -A library_uses=([ffmpeg]=x264)

library_key() {
    local name=$1 part
    {
        for part in ${library_sources[$name]}; do echo "$part ${source_version[$part]}"; done
        for part in ${library_uses[$name]:-}; do library_key "$part"; done
        "$triplet-gcc" --version | head -n 1
        declare -f "build_$name"
    } | sha256sum | cut -c 1-12
}

# Where a library lies, or will.
library_prefix() {
    echo "$windows_libs/$1-$(library_key "$1")"
}

# Every prefix, as CMake takes a list.
library_prefixes() {
    local name list=
    for name in "${windows_libraries[@]}"; do list+="${list:+;}$(library_prefix "$name")"; done
    echo "$list"
}

# One that was interrupted goes on where it was.
build_libraries() {
    local name prefix build
    use_cross_compiler
    fetch_sources
    for name in "${windows_libraries[@]}"; do
        prefix=$(library_prefix "$name")
        [ -e "$prefix/complete" ] && continue
        build=$windows_libs/build/$(basename "$prefix")
        mkdir -p "$build"
        find "$windows_libs" -maxdepth 2 -name "$name-*" ! -name "$(basename "$prefix")" \
            -exec rm -rf {} +
        logged "$name" build_library "$name" "$build" "$prefix"
        touch "$prefix/complete"
        rm -rf "$build"
    done
}

build_library() {
    cd "$2"
    "build_$1" "$3"
}

# cmake_library SOURCE PREFIX OPTION...
cmake_library() {
    local source=$1 prefix=$2
    shift 2
    cmake -S "$source" -B . -G Ninja -DCMAKE_TOOLCHAIN_FILE="$top/cmake/windows-i686.cmake" \
        -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX="$prefix" "$@"
    ninja -j"$jobs" install
}

# Debian's source comes without the configure script.
build_libsodium() {
    (cd "$(source_dir libsodium)" && autoreconf -fi)
    "$(source_dir libsodium)/configure" --host="$triplet" --prefix="$1" \
        --enable-shared --disable-static --disable-ssp
    make -j"$jobs"
    make install
}

# The link brings its own encryption.
build_srt() {
    cmake_library "$(source_dir srt)" "$1" -DENABLE_ENCRYPTION=OFF -DENABLE_STDCXX_SYNC=ON \
        -DENABLE_APPS=OFF -DENABLE_UNITTESTS=OFF -DENABLE_SHARED=ON -DENABLE_STATIC=OFF
}

build_x264() {
    "$(source_dir x264)/configure" --host="$triplet" --cross-prefix="$triplet-" --prefix="$1" \
        --enable-shared --disable-cli --disable-opencl --bit-depth=8
    make -j"$jobs"
    make install
}

# Decoders, the AAC and MJPEG encoders, MP4 and MOV are the client's; the other encoders,
# formats and protocols are the camera program's.
build_ffmpeg() {
    PKG_CONFIG_LIBDIR=$(library_prefix x264)/lib/pkgconfig \
        "$(source_dir ffmpeg)/configure" --prefix="$1" \
        --enable-cross-compile --target-os=mingw32 --arch=x86 --cpu=i686 \
        --cross-prefix="$triplet-" --pkg-config=pkg-config --enable-shared --disable-static \
        --disable-debug --disable-doc --disable-programs --disable-autodetect \
        --disable-everything --disable-postproc --disable-avfilter \
        --disable-pthreads --enable-w32threads --enable-gpl --enable-libx264 \
        --enable-decoder=h264,hevc,mpeg4,h263,mjpeg,aac,mp3,mp3float,speex \
        --enable-decoder=pcm_alaw,pcm_mulaw,pcm_s8,pcm_s16le,adpcm_ima_qt,adpcm_g726,rawvideo \
        --enable-encoder=aac,mjpeg,libx264,pcm_alaw,mpeg4,h263 \
        --enable-parser=h264,hevc,mpeg4video,h263,mjpeg,aac,mpegaudio \
        --enable-muxer=mp4,mov,matroska --enable-demuxer=mov,matroska,mpegts,rtsp,aac,wav,mjpeg \
        --enable-protocol=file,tcp,udp,rtp,http \
        --enable-bsf=aac_adtstoasc,h264_mp4toannexb,hevc_mp4toannexb,extract_extradata \
        --enable-indev=dshow
    make -j"$jobs"
    make install
}

# Folder by folder: the whole tree would first build tools that Debian has for this machine.
build_qt() {
    local base folder folders=(
        3rdparty/pcre2 corelib winmain 3rdparty/libpng 3rdparty/libjpeg 3rdparty/freetype
        3rdparty/harfbuzz-ng gui openglextensions platformsupport network xml widgets testlib
        plugins/platforms/windows plugins/styles/windowsvista plugins/imageformats/jpeg
        plugins/imageformats/gif plugins/imageformats/ico
    )
    base=$(source_dir qtbase-opensource-src)
    # The import libraries of mingw have names in lower case.
    sed -i 's/-lSecur32/-lsecur32/; s/-lCrypt32/-lcrypt32/' "$base/src/network/ssl/ssl.pri"
    mkdir -p base multimedia
    cd base
    [ -e Makefile ] || "$base/configure" -opensource -confirm-license -release -shared -xplatform win32-g++ \
        -device-option CROSS_COMPILE="$triplet-" -external-hostbindir /usr/lib/qt5/bin \
        -prefix "$1" -hostprefix "$1" -nomake examples -nomake tests -nomake tools \
        -no-compile-examples -opengl desktop -no-angle -no-dbus -no-icu -no-openssl -schannel \
        -no-cups -no-vulkan -no-sql-sqlite -no-sql-odbc -no-feature-sql -no-feature-concurrent \
        -no-feature-printer -qt-zlib -qt-libpng -qt-libjpeg -qt-freetype -qt-harfbuzz -qt-pcre \
        -qt-doubleconversion -no-feature-tabletevent -no-direct2d -no-feature-tuiotouch \
        -no-separate-debug-info
    make -s sub-src-qmake_all
    for folder in "${folders[@]}"; do
        make -C "src/$folder" -j"$jobs"
        case $folder in 3rdparty/*) ;; *) make -s -C "src/$folder" install ;; esac
    done
    install_qt_tools "$base" "$1"
    cd ../multimedia
    ../base/bin/qmake "$(source_dir qtmultimedia-opensource-src)/qtmultimedia.pro"
    make -s qmake_all
    for folder in multimedia plugins/windowsaudio; do
        make -C "src/$folder" -j"$jobs"
        make -s -C "src/$folder" install
    done
}

# What CMake looks for beside the libraries.
install_qt_tools() {
    local base=$1 prefix=$2 tool
    mkdir -p "$prefix"/{mkspecs,bin}
    cp -rn "$base"/mkspecs/{win32-g++,common,features} "$prefix/mkspecs/"
    for tool in moc rcc uic qmake; do ln -sf "/usr/lib/qt5/bin/$tool" "$prefix/bin/$tool"; done
}
