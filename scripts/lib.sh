# Shared by the scripts beside it: they run at the top of the project, and build by preset.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# build_preset PRESET [TARGET...]: configures quietly (what it leaves out, it says) and builds.
build_preset() {
    local preset=$1 log
    shift
    log=$(mktemp)
    if ! cmake --preset "$preset" -Wno-dev >"$log" 2>&1; then
        cat "$log" >&2
        rm -f "$log"
        return 1
    fi
    grep '^-- Tolvane:' "$log" || true
    rm -f "$log"
    if [ $# -gt 0 ]; then
        cmake --build "build/$preset" --target "$@"
    else
        cmake --build "build/$preset"
    fi
}

# run_suite PRESET: all of its tests. Most of them wait for a sound server's cycles, so two share a processor, but not under
# a sanitizer, which keeps it busy.
run_suite() {
    local jobs=$((2 * $(nproc)))
    case $1 in asan | tsan) jobs=$(nproc) ;; esac
    ctest --preset "$1" -j "$jobs"
}
