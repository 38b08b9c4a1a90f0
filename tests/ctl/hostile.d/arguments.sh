# Arguments that look like lists, octal or hexadecimal numbers, and invalid arguments.
# statuses: 0
. "$hostile/lib.bash"
comes_right() {
    a_recording $((1000 + attempt)) in.wav
    echo '[]' > '[p]'; echo '[]' > p
    [ "$("$TOLVANECTL" check '[p]' | head -1)" = '[p]:' ] || return 1
    "$TOLVANECTL" render --patch p.json --outputs 0$((attempt % 9 + 1)) in.wav out.wav && [ "$(soxi -c out.wav 2>/dev/null)" = $((attempt % 9 + 1)) ] || return 1
    for bad in "run --patch p --device=" "run --patch p --seconds 9e9" "run --patch p --seconds 0x$attempt" "render --patch p --outputs 0x$attempt in.wav out.wav" bogus$attempt "aggregate bogus" ""; do
      "$TOLVANECTL" $bad > out 2> err; [ $? = 2 ] && [ ! -s out ] && grep -q '^tolvanectl: ' err || return 1
    done
    "$TOLVANECTL" run --patch p --device '' 2> err; [ $? = 2 ] && grep -q 'cannot be empty' err
}
comes_right || exit 93
