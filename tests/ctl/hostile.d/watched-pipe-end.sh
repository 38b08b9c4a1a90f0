# A run with a time limit whose watched patch is replaced by a pipe.
# statuses: 0
. "$hostile/lib.bash"
"$TOLVANECTL" run --patch p.json --device "$device" --watch --seconds 0.6 >trace &
run=$!
until grep -q 'completed OK' trace; do sleep 0.02; done
a_moment
mkfifo pipe && mv pipe p.json
wait $run
