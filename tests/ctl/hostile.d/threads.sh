# Commands of a user who may not start another thread.
# statuses: 1
. "$hostile/lib.bash"
a_recording 1000 in.wav
case $((attempt % 5)) in
    0) words=(devices) ;;
    1) words=(run --patch p.json --seconds 0.1) ;;
    2) words=(aggregate list) ;;
    3) words=(aggregate create Stage One Two) ;;
    4) words=(render --patch p.json in.wav out.wav) ;;
esac
# This limit does not apply to root, so root changes to another user.
if [ "$(id -u)" = 0 ]; then
    chmod 777 . && chmod a+r ./*
    fail_in_one_line setpriv --reuid=61234 --clear-groups prlimit --nproc=1 "$TOLVANECTL" "${words[@]}"
else
    fail_in_one_line prlimit --nproc=1 "$TOLVANECTL" "${words[@]}"
fi
