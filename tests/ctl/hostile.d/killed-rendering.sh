# A rendering killed midway leaves no file. Without /proc a new file needs a hidden name, and only that is left; the
# next rendering is not in its way.
# statuses: 0
. "$hostile/lib.bash"

# kill_rendering: feeds a rendering a part of a recording through a pipe and kills it.
kill_rendering() {
    local feeder rendering
    mkfifo q
    (head -c $((300000 + attempt * 1000)) long.wav; exec sleep 60) >q & feeder=$!
    "$TOLVANECTL" render --patch p.json - out.wav <q & rendering=$!
    sleep 0.1
    kill -9 $rendering; wait $rendering 2>/dev/null
    kill $feeder 2>/dev/null; wait $feeder 2>/dev/null
    rm q
}

comes_right() {
    a_recording $((1000 + attempt)) in.wav
    sox -n -r 48000 -c 1 -e signed -b 16 long.wav synth 10 sine 440 2>/dev/null
    kill_rendering
    [ "$(ls -A | tr '\n' ' ')" = "in.wav long.wav p.json " ] || return 1
    mount -t tmpfs tmpfs /proc
    kill_rendering
    hidden=$(ls -d .tolvanectl-*.part) || return 1
    "$TOLVANECTL" render --patch p.json in.wav out.wav
    [ "$(ls -A | tr '\n' ' ')" = "$hidden in.wav long.wav out.wav p.json " ] && rm "$hidden"
}
comes_right || exit 93
