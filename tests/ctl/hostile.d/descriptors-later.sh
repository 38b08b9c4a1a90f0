# A run whose process loses all spare descriptors: it plays on, and says why it cannot read its patch.
# statuses: 0
. "$hostile/lib.bash"
"${background[@]}" run --patch p.json --device "$device" --watch >trace 2>messages &
run=$!
until grep -q 'completed OK' trace; do sleep 0.02; done
prlimit --pid $run --nofile=3:3
kill -HUP $run
until grep -q 'Too many open files; the routes stay as they were' messages; do sleep 0.02; done
prlimit --pid $run --nofile=3:1024 2>/dev/null || true
end_by TERM $run
