# A second signal at any moment of the end that the first one has begun.
# statuses: 0 130 143
. "$hostile/lib.bash"
"${background[@]}" run --patch p.json --device "$device" >trace &
run=$!
begun $run
until grep -q 'completed OK' trace; do sleep 0.01; done
start=${EPOCHREALTIME/./}
kill -INT $run
for _ in 1 2 3; do
    sleep "0.00$((RANDOM % 10))"
    kill "-$(pick INT TERM)" $run 2>/dev/null
done
wait $run
in_time "$start" $?
