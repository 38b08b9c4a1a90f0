# Standard input, output and error closed, in every combination.
# statuses: 0
. "$hostile/lib.bash"
closed=$((attempt % 7 + 1))
case $((attempt / 7 % 3)) in
    0) words=(devices) ;;
    1) words=(check p.json) ;;
    2) words=(run --patch p.json --device "$device" --seconds 0.2) ;;
esac
[ $((closed & 1)) = 0 ] || exec <&-
[ $((closed & 2)) = 0 ] || exec >&-
[ $((closed & 4)) = 0 ] || exec 2>&-
"$TOLVANECTL" "${words[@]}"
