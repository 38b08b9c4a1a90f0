# A signal at any moment of a run; in half of the attempts a SIGHUP comes first.
# statuses: 0 129 130 143
. "$hostile/lib.bash"
"${background[@]}" run --patch p.json --device "$device" --watch >trace &
run=$!
a_moment
[ $((RANDOM % 2)) = 0 ] || kill -HUP $run
end_by "$(pick INT TERM)" $run
