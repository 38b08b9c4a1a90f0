# A rendering prints nothing on standard output.
# statuses: 0
. "$hostile/lib.bash"
comes_right() {
    a_recording 1000 in.wav
    [ -z "$("$TOLVANECTL" render --patch p.json in.wav out.wav)" ] && [ -s out.wav ]
}
comes_right || exit 93
