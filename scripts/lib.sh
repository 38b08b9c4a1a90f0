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
