# Sourced by the tests of what ships.
set -euo pipefail
failures=0

# complain TEXT...: notes a failure and goes on.
complain() {
    echo "FAILED: $*" >&2
    failures=$((failures + 1))
}

# expect WHAT COMMAND...: the command must succeed. Its output is shown if it does not.
expect() {
    local what=$1 output
    shift
    if output=$("$@" 2>&1); then
        echo "ok: $what"
    else
        complain "$what"
        printf '    %s\n' "$output" >&2
    fi
}

# finish: the status of the whole test.
finish() {
    [ "$failures" = 0 ] || { echo "$failures failures" >&2; exit 1; }
}
