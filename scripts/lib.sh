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
