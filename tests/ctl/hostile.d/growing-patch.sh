# A patch that grows for as long as it is read: refused, or taken as far as it was written, but never waited for.
# statuses: 0 1 3
. "$hostile/lib.bash"
a_recording 1000 in.wav
route='{"inputChannel":0,"outputChannel":0,"gain":1.0,"active":true}'
printf '[%s' "$route" >growing.json
yes ",$route" | head -c 4000000 | tr -d '\n' >more
(while :; do cat more; done) >>growing.json & writer=$!
sleep 0.0$((RANDOM % 10))
case $((attempt % 2)) in
    0) fail_in_one_line "$TOLVANECTL" check growing.json >out ;;
    1) fail_in_one_line "$TOLVANECTL" render --patch growing.json in.wav out.wav ;;
esac
status=$?
kill $writer
wait $writer 2>/dev/null
exit $status
