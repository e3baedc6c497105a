#!/usr/bin/env bash
# A room includes only the rooms below it. Linking would tell too, but not for headers.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

declare -A may=(
    [platform]="platform"
    [core]="core platform"
    [link]="link core platform"
    [frames]="frames core"
    [device]="device link core"
    [render]="render frames core platform"
    [media]="media device render frames link core platform"
    [update]="update core platform"
    [ui]="ui media device render frames update core platform"
    [app]="app ui update media device render frames link core platform"
    [camera]="camera link frames core platform"
)

status=0
for room in "${!may[@]}"; do
    while IFS=: read -r file line include; do
        target=${include#*\"}
        target=${target%%/*}
        if [[ -n ${may[$target]:-} && " ${may[$room]} " != *" $target "* ]]; then
            echo "$file:$line: room '$room' may not include room '$target'"
            status=1
        fi
    done < <(grep -rnE '^#include "[a-z]+/' "src/$room" --include=*.h --include=*.cpp || true)
done
exit $status
