# Commands with 20 to 60 MB of memory.
# statuses: 0 1
. "$hostile/lib.bash"
a_recording 1000 in.wav
most=$((20000 + RANDOM % 40000))
# In a subshell, so that the script's own shell is not limited.
limited() { (ulimit -v $most; exec "$TOLVANECTL" "$@"); }
case $((attempt % 5)) in
    0) fail_in_one_line limited devices ;;
    1) fail_in_one_line limited run --patch p.json --seconds 0.1 ;;
    2) fail_in_one_line limited aggregate list ;;
    3) fail_in_one_line limited aggregate create Stage One Two ;;
    4) fail_in_one_line limited render --patch p.json --outputs 1024 --buffer 65536 in.wav out.wav ;;
esac
