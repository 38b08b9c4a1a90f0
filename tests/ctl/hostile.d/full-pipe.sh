# A signal while standard output is a full pipe.
# statuses: 129 130 143
. "$hostile/lib.bash"
mkfifo full
exec 3<>full
fill full
case $((attempt / 3 % 5)) in
    0) "${background[@]}" devices >&3 & ;;
    1) "${background[@]}" check p.json >&3 & ;;
    2) "${background[@]}" aggregate list >&3 & ;;
    3) "${background[@]}" --help >&3 & ;;
    4) "${background[@]}" devices --watch >&3 & ;;
esac
sleep 0.2
a_moment
end_by "$(pick INT TERM HUP)" $!
