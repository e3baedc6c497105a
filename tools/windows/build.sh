# The client for Windows, and what its programs need beside them. Sourced.

windows_client=$windows/client
windows_bin=$windows_client/bin

# build_client [TARGET...]
build_client() {
    use_cross_compiler
    mkdir -p "$windows_logs"
    # A tool that draws the icons while building.
    build release bake_icons
    cmake --preset windows -DCMAKE_PREFIX_PATH="$(library_prefixes)" \
        -DORVELLE_BAKE_ICONS="$top/build/release/bin/bake_icons" >"$windows_logs/configure.log" 2>&1 ||
        { cat "$windows_logs/configure.log" >&2; return 1; }
    cmake --build --preset windows ${1:+--target "$@"}
    put_libraries "$windows_bin" --symbolic-link
}

# put_libraries FOLDER [OPTION OF CP]: the libraries and plugins that programs look for beside them.
put_libraries() {
    local folder=$1 how=${2:---dereference} runtime name
    runtime=$(dirname "$("$triplet-gcc" -print-file-name=libgcc_s_dw2-1.dll)")
    for name in "${windows_libraries[@]}"; do
        cp --force "$how" "$(library_prefix "$name")"/bin/*.dll "$folder"
    done
    # Wine sees nothing of this machine but the project.
    cp --force "$runtime"/{libgcc_s_dw2-1,libstdc++-6}.dll \
        "/usr/$triplet/lib/libwinpthread-1.dll" "$folder"
    cp --force --recursive "$how" "$(library_prefix qt)"/plugins/* "$folder"
    # Else plugins and texts are looked for where the libraries were built.
    printf '[Paths]\nPrefix = .\nPlugins = .\nTranslations = translations\n' >"$folder/qt.conf"
}
