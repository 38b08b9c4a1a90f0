# A watched patch that is replaced by a pipe, and then by a file again.
# statuses: 0
. "$hostile/lib.bash"
"${background[@]}" run --patch p.json --device "$device" --watch >trace 2>messages &
run=$!
until grep -q 'completed OK' trace; do sleep 0.02; done
mkfifo pipe && mv pipe p.json
until grep -q 'is not a regular file' messages; do sleep 0.02; done
printf '[{"inputChannel":1,"outputChannel":1,"gain":1.0,"active":true}]' >new && mv new p.json
until grep -q '1 route is live' messages; do sleep 0.02; done
end_by TERM $run
