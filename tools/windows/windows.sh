# ./dev windows: everything that has to do with the Windows client. Sourced by ./dev.

for part in versions common sources deps wine build use package; do
    # shellcheck source=/dev/null
    . "$top/tools/windows/$part.sh"
done

windows_usage() {
    cat <<'TXT'
usage: ./dev windows [COMMAND]

  deps              build the libraries, once for each version and option
  build             build the client and the camera program
  test [REGEX]      run the tests under Wine
  run [--screenshot FILE]
                    the demo with the client under Wine
  package           make the installer and the portable zip

Without a command: all but run. What is made lies in build/windows.
TXT
}

windows_deps() {
    setup
    need_packages "${windows_packages[@]}"
    build_libraries
}

windows_build() {
    windows_deps
    build_client "$@"
}

windows() {
    local command=${1:-all}
    shift || true
    case $command in
        deps) windows_deps ;;
        build) windows_build orvelle orvelle-camera ;;
        test) windows_build; ensure_wine; start_desk; test_client "$@" ;;
        run) windows_build orvelle; ensure_wine; run_client "$@" ;;
        package) windows_build orvelle orvelle-camera; package_client ;;
        all) windows_build; package_client; ensure_wine; start_desk; test_client ;;
        help | -h | --help) windows_usage ;;
        *) windows_usage >&2; return 2 ;;
    esac
}
