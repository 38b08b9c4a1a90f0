# A channel that no device can have, after any number of valid routes.
# statuses: 0
. "$hostile/lib.bash"
comes_right() {
    case $((attempt % 4)) in 0) c=-1 ;; 1) c=2147483647 ;; 2) c=$((-2 - attempt)) ;; 3) c=$((2147483648 + attempt)) ;; esac
    { printf '['; for i in $(seq $attempt); do printf '{"inputChannel":0,"outputChannel":0,"gain":1,"active":true},'; done
      printf '{"inputChannel":0,"outputChannel":%s,"gain":1,"active":true}]' $c; } > p.json
    "$TOLVANECTL" check p.json > out 2> err; [ $? = 3 ] && [ ! -s out ] && grep -q "element $attempt, member \"outputChannel\"" err
}
comes_right || exit 93
