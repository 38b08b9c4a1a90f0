# Sourced by the other scripts: changes to the top of the project and provides builds and tests by preset.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# build_preset PRESET [TARGET...]: configures and builds. Prints what the configuration leaves out, and all of its output on
# an error.
build_preset() {
    local preset=$1 log
    shift
    log=$(mktemp)
    if ! cmake --preset "$preset" -Wno-dev >"$log" 2>&1; then
        cat "$log" >&2
        rm -f "$log"
        return 1
    fi
    grep ': absent' "$log" || true
    rm -f "$log"
    if [ $# -gt 0 ]; then
        cmake --build "build/$preset" --target "$@"
    else
        cmake --build "build/$preset"
    fi
}

# run_suite PRESET: runs all tests of the preset, two per processor, as most of them wait for a sound server's
# cycles.
run_suite() { ctest --preset "$1" -j "$((2 * $(nproc)))"; }

# set_build_date: the only time in a package is that of its version.
set_build_date() {
    SOURCE_DATE_EPOCH=$(date --utc +%s --date "$(sed -n '/^## /{s/.*(\(.*\))/\1/p;q}' CHANGELOG.md)")
    export SOURCE_DATE_EPOCH
}

# pack PRESET: makes the Debian package of a built preset in build/packages, and prints its path. Prints all output on an
# error.
pack() (
    cd "build/$1"
    cpack --config CPackConfig.cmake -G DEB >cpack.log || { cat cpack.log >&2; exit 1; }
    sed -n 's/.* package: \(.*\) generated\.$/\1/p' cpack.log
)
