#!/usr/bin/env bash
# in_wine.sh PROGRAM [ARGUMENT...]: runs a Windows program under the Wine of ./dev windows. What ctest
# starts the tests by.
set -euo pipefail
top=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
# shellcheck source=tools/windows/common.sh
. "$top/tools/windows/common.sh"
# shellcheck source=tools/windows/wine.sh
. "$top/tools/windows/wine.sh"
exec_in_wine wine "$@"
