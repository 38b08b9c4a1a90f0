# Standard output is a pipe without a reader.
# statuses: 1
. "$hostile/lib.bash"
mkfifo unread
exec 3<>unread 4>unread 3>&-
case $((attempt % 4)) in
    0) fail_in_one_line "$TOLVANECTL" devices >&4 ;;
    1) fail_in_one_line "$TOLVANECTL" check p.json >&4 ;;
    2) fail_in_one_line "$TOLVANECTL" devices --watch >&4 ;;
    3) fail_in_one_line "$TOLVANECTL" run --patch p.json --device "$device" --seconds 0.2 >&4 ;;
esac
