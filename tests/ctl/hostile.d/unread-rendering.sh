# A rendering whose standard output, and in every other attempt also standard error, is a pipe without a
# reader.
# statuses: 0
. "$hostile/lib.bash"
comes_right() {
    a_recording $((1000 + attempt)) in.wav
    mkfifo q; exec 4<>q 3>q 4>&-; rm q
    if [ $((attempt % 2)) = 1 ]; then "$TOLVANECTL" render --patch p.json in.wav out.wav >&3 2>&3; else "$TOLVANECTL" render --patch p.json in.wav out.wav >&3; fi
    s=$?; exec 3>&-; [ $s = 0 ] && [ "$(soxi -s out.wav 2>/dev/null)" = $((1000 + attempt)) ] && [ "$(ls -A | wc -l)" = 3 ]
}
comes_right || exit 93
