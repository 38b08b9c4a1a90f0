# A terminal that is closed during a run on it.
# statuses: 0
. "$hostile/lib.bash"
meters=$(pick "" --meters)
TERM=xterm script -qefc "echo \$\$ >pid; exec '$TOLVANECTL' run --patch p.json --device '$device' $meters" picture >/dev/null &
until grep -q 'completed OK' picture; do sleep 0.02; done
kill -KILL $!
while [ -d "/proc/$(cat pid)" ]; do sleep 0.02; done
