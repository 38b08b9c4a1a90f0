# Names of random bytes: no control character may reach the terminal.
# statuses: 0
. "$hostile/lib.bash"
comes_right() {
    name=$(head -c 4000 /dev/urandom | tr -d '\000/\n' | head -c 40)$(printf '\033[2J\n\302\2332Jx\233y')
    "$TOLVANECTL" check -- "./$name" > out 2> err; [ $? = 1 ] && harmless out err && [ "$(wc -l < err)" = 1 ] || return 1
    echo '[]' > "./$name"; "$TOLVANECTL" check -- "./$name" > out 2> err; [ $? = 0 ] && harmless out err && [ "$(wc -l < out)" = 2 ] || return 1
    echo '[]' > p.json; timeout 20 "$TOLVANECTL" run --patch p.json --device "x$name" --seconds 1 > out 2> err; [ $? = 4 ] && harmless out err || return 1
    XDG_CONFIG_HOME=$PWD "$TOLVANECTL" aggregate create "$name" x > out 2> err; [ $? = 2 ] && harmless out err && [ ! -e tolvane ]
}
comes_right || exit 93
