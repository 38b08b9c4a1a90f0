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

# run_in_a_group USER COMMAND...: runs the command in a control group of the user's own, which goes with it. A service manager
# needs one.
run_in_a_group() {
    local groups=() group tree status=0 name=tolvane-$RANDOM
    for tree in /sys/fs/cgroup /sys/fs/cgroup/systemd /sys/fs/cgroup/unified; do
        if [ -e "$tree/cgroup.procs" ] && mkdir "$tree/$name" 2>/dev/null; then groups+=("$tree/$name"); fi
    done
    [ ${#groups[@]} -gt 0 ] || { echo "not run: this machine lets nobody make a control group"; return 0; }
    for group in "${groups[@]}"; do
        chown -R "$1" "$group"
        echo $$ >"$group/cgroup.procs"
    done
    shift
    "$@" || status=$?
    for group in "${groups[@]}"; do
        echo $$ >"$(dirname "$group")/cgroup.procs"
        find "$group" -depth -type d -exec rmdir {} +
    done
    return "$status"
}

# open_display: an X server, with its number in DISPLAY and its process in display_server. The numbers are the whole machine's,
# even those of an X server in a folder.
open_display() {
    local number
    number=$(mktemp)
    Xvfb -displayfd 3 -screen 0 1280x1024x24 3>"$number" >/dev/null 2>&1 &
    display_server=$!
    until [ -s "$number" ]; do
        kill -0 "$display_server" || return 1
        sleep 0.1
    done
    DISPLAY=:$(cat "$number")
    export DISPLAY
}
