# An existing aggregate whose name has control characters: it is listed, escaped, and can be deleted.
# statuses: 0
. "$hostile/lib.bash"
comes_right() {
    mkdir tolvane; name=$(printf 'a\033[%dJ\n\302\233b' $attempt)
    printf '{"aggregates":[{"name":"a\\u001b[%dJ\\n\\u009bb","members":[{"uid":"pipewire:x","name":"c\\u001b","inputChannels":1,"outputChannels":1}]}]}' $attempt > tolvane/aggregates.json
    export XDG_CONFIG_HOME=$PWD
    for a in list 'list --json'; do "$TOLVANECTL" aggregate $a > out 2> err && harmless out err || return 1; done
    grep -q "u009bb" out && "$TOLVANECTL" aggregate delete "$name" && [ "$("$TOLVANECTL" aggregate list | wc -l)" = 1 ]
}
comes_right || exit 93
