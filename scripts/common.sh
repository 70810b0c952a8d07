# Shared by the scripts beside it; not run by itself.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

fail() {
    echo "${0##*/}: $*" >&2
    exit 1
}

# The packages that the project needs, one a line.
wantedPackages() {
    sed -e 's/#.*//' -e 's/[[:space:]]//g' -e '/^$/d' "$root/scripts/packages.txt"
}

# build PRESET [CMAKE-CACHE-ENTRY...] [-- TARGET...]: configures and builds into build/PRESET.
# A configuration that went well says nothing.
build() {
    local preset=$1 log answer
    shift
    local entries=()
    while [ $# -gt 0 ] && [ "$1" != -- ]; do
        entries+=("$1")
        shift
    done
    [ $# -eq 0 ] || shift
    mkdir -p "$root/build"
    log=$root/build/configure-$preset.log
    (cd "$root" && cmake --preset "$preset" "${entries[@]}") >"$log" 2>&1 || {
        cat "$log" >&2
        fail "$preset can't be configured, see above"
    }
    echo "== building $preset" >&2
    (cd "$root" && cmake --build --preset "$preset" ${1:+--target "$@"}) >&2 ||
        fail "$preset does not build, see above"
}
