# Changes of the aggregates that are killed at any moment: the file has the old content or the new one, whole.
# statuses: 0
. "$hostile/lib.bash"
comes_right() {
    export XDG_CONFIG_HOME=$PWD
    mkdir tolvane
    { printf '{"aggregates":['
      for i in $(seq 500); do printf '{"name":"Stage %d","members":[{"uid":"pipewire:x","name":"Card","inputChannels":1,"outputChannels":1}]},' "$i"; done
      printf '{"name":"Last","members":[{"uid":"pipewire:x","name":"Card","inputChannels":1,"outputChannels":1}]}]}'; } > tolvane/aggregates.json
    local before=501 now round
    for round in 1 2 3 4 5; do
        "$TOLVANECTL" aggregate delete "Stage $round" 2>/dev/null & delete=$!
        sleep "0.0$(printf '%02d' $((RANDOM % 25)))"
        kill -9 $delete 2>/dev/null; wait $delete 2>/dev/null
        now=$(grep -o '"members"' tolvane/aggregates.json | wc -l)
        [ "$now" = $before ] || [ "$now" = $((before - 1)) ] || return 1
        before=$now
        "$TOLVANECTL" aggregate list --json >list 2>err && [ "$(grep -o '"members"' list | wc -l)" = "$now" ] || return 1
    done
    [ "$(ls -A tolvane)" = aggregates.json ]
}
comes_right || exit 93
