# A rendering killed midway leaves no file. Then a rendering whose folder has a hidden file with its process
# number.
# statuses: 0
. "$hostile/lib.bash"
comes_right() {
    a_recording $((1000 + attempt)) in.wav
    sox -n -r 48000 -c 1 -e signed -b 16 long.wav synth 10 sine 440 2>/dev/null
    mkfifo q; (head -c $((300000 + attempt * 1000)) long.wav; exec sleep 60) > q & feeder=$!
    "$TOLVANECTL" render --patch p.json - out.wav < q & t=$!
    sleep 0.1; kill -9 $t; wait $t 2>/dev/null; kill $feeder 2>/dev/null; wait $feeder 2>/dev/null; rm q long.wav
    [ "$(ls -A | tr '\n' ' ')" = "in.wav p.json " ] || return 1
    sh -c ": > .tolvanectl-\$\$.part; exec '$TOLVANECTL' render --patch p.json in.wav out.wav" && [ -s out.wav ] && rm .tolvanectl-*.part
}
comes_right || exit 93
