# The tests and the demo under Wine. Sourced.

# Where Windows keeps the data of the user that Wine makes up.
wine_data=$wine_root/root/wine/drive_c/users/root/AppData/Local

test_client() {
    ctest --test-dir "$windows_client" --output-on-failure -R "${1:-.}"
}

# The cameras of the demo are Linux programs.
run_client() {
    build release orvelle-camera
    ORVELLE_CLIENT="$top/tools/windows/in_wine.sh $windows_bin/orvelle.exe" \
        ORVELLE_DEMO_DATA=$wine_data "$top/tools/run_demo.sh" "$@"
}
