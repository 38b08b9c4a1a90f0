# Meters on a terminal that cannot move its cursor, and on one that can, ended by SIGQUIT.
# statuses: 0
. "$hostile/lib.bash"
export TERM
TERM=$(pick dumb xterm)
script -qefc "'$TOLVANECTL' run --patch p.json --device '$device' --meters & echo \$! >pid; wait \$!" picture >/dev/null &
until grep -q -e '-18.0 dBFS' picture; do sleep 0.02; done
kill -QUIT "$(cat pid)"
wait $!
status=$?
case $TERM in
    dumb) ! grep -q $'\033' picture || exit 91 ;;
    xterm) grep -zq $'\033\[?1049l.*cycles: ' picture || exit 91 ;;
esac
exit $status
