# Debian's source packages. They are looked up in lists of this build's own, so that the machine's
# stay as they are. Sourced.

windows_sources=$windows/sources

source_lists() {
    local file
    for file in /etc/apt/sources.list.d/debian.sources /etc/apt/sources.list; do
        [ -s "$file" ] && break
    done
    case $file in
        *.sources)
            sed 's/^Types:.*/Types: deb-src/' "$file" >"$windows_sources/lists/own.sources"
            echo "$windows_sources/lists/own.sources"
            ;;
        *)
            sed -n 's/^deb /deb-src /p' "$file" >"$windows_sources/lists/own.list"
            echo "$windows_sources/lists/own.list"
            ;;
    esac
}

own_apt() {
    local command=$1
    shift
    "$command" -o Dir::Etc::sourcelist="$(source_lists)" -o Dir::Etc::sourceparts=- \
        -o Dir::State::lists="$windows_sources/lists" -o Dir::Cache="$windows_sources/lists" "$@"
}

source_dir() {
    echo "$windows_sources/$1_${source_version[$1]#*:}"
}

fetch_sources() {
    local package missing=()
    mkdir -p "$windows_sources"/{lists/partial,packages}
    for package in "${!source_version[@]}"; do
        [ -d "$(source_dir "$package")" ] || missing+=("$package=${source_version[$package]}")
    done
    [ ${#missing[@]} = 0 ] && return 0
    logged sources download_sources "${missing[@]}"
}

download_sources() {
    local wanted package description into
    own_apt apt-get -q update
    cd "$windows_sources/packages"
    own_apt apt-get -q source --download-only "$@"
    for wanted in "$@"; do
        package=${wanted%%=*}
        into=$(source_dir "$package")
        description=${package}_${source_version[$package]#*:}.dsc
        rm -rf "$into.part"
        dpkg-source --no-check --no-copy -x "$description" "$into.part"
        mv "$into.part" "$into"
    done
}
