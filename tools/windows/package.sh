# The portable zip and the installer. Sourced.

windows_package=$windows/package

project_version() {
    sed -n 's/^project(Orvelle VERSION \([0-9.]*\) .*/\1/p' "$top/CMakeLists.txt"
}

package_client() {
    local version
    version=$(project_version)
    rm -rf "$windows_package"
    mkdir -p "$windows_package/Orvelle"
    fill_package "$windows_package/Orvelle"
    (cd "$windows_package" && zip -q -r -9 "$windows/Orvelle-$version-portable.zip" Orvelle)
    list_for_uninstaller "$windows_package/Orvelle" >"$windows_package/files.nsh"
    logged installer makensis -V2 -DVERSION="$version" -DFILES="$windows_package/Orvelle" \
        -DLIST="$windows_package/files.nsh" -DICON="$windows_client/resources/baked/orvelle.ico" \
        -DOUTPUT="$windows/Orvelle-$version-setup.exe" "$top/packaging/windows/installer.nsi"
    du -h "$windows/Orvelle-$version-portable.zip" "$windows/Orvelle-$version-setup.exe"
}

# So that nothing else goes that a user may have put there.
list_for_uninstaller() {
    (cd "$1" && find . -type f -printf 'Delete "$INSTDIR\\%P"\n' &&
        find . -mindepth 1 -depth -type d -printf 'RMDir "$INSTDIR\\%P"\n') | tr / '\\'
}

fill_package() {
    local folder=$1 name
    cp "$windows_bin"/{orvelle,orvelle-camera}.exe "$folder"
    put_libraries "$folder"
    rm "$folder/Qt5Test.dll"
    find "$folder" -name '*.exe' -o -name '*.dll' | xargs "$triplet-strip"
    cp -r "$windows_bin"/{language,manual,qt.conf} "$folder"
    # Windows opens nothing by the name of LICENSE.
    cp CHANGELOG.md "$folder/CHANGELOG.txt"
    mkdir -p "$folder"/{licences,translations}
    cp /usr/share/qt5/translations/{qt,qtbase}_zh_CN.qm "$folder/translations"
    cp LICENSE "$folder/licences/Orvelle.txt"
    for name in "${!source_version[@]}"; do
        cp "$(source_dir "$name")/debian/copyright" "$folder/licences/${name%-opensource-src}.txt"
    done
    for name in "${!source_version[@]}"; do echo "$name ${source_version[$name]}"; done | sort |
        sed '1i The libraries are built from these source packages of Debian:\n' >"$folder/licences/sources.txt"
    cp /usr/share/doc/gcc-mingw-w64-base/copyright "$folder/licences/gcc-mingw-w64.txt"
}
