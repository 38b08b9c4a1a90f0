# Commands with 4 to 39 descriptors.
# statuses: 0 1
. "$hostile/lib.bash"
a_recording 1000 in.wav
most=$((4 + RANDOM % 36))
# In a subshell, so that the script's own shell is not limited.
limited() { (ulimit -n $most; exec "$TOLVANECTL" "$@"); }
case $((attempt % 6)) in
    0) fail_in_one_line limited devices ;;
    1) fail_in_one_line limited run --patch p.json --seconds 0.1 ;;
    2) fail_in_one_line limited aggregate list ;;
    3) fail_in_one_line limited aggregate create Stage One Two ;;
    4) fail_in_one_line limited render --patch p.json in.wav out.wav ;;
    5) fail_in_one_line limited check p.json ;;
esac
