# Recordings cut off anywhere: refused, or with --partial rendered as far as they go.
# statuses: 0
. "$hostile/lib.bash"
comes_right() {
    a_recording $((1000 + attempt)) in.wav
    rm in.wav
    case $((attempt % 4)) in 0) f=wav ;; 1) f=aiff ;; 2) f=ogg ;; 3) f=au ;; esac
    sox -n -r 48000 -c 2 whole.$f synth 3 noise 2>/dev/null
    size=$(stat -c %s whole.$f); cut=$((size / 3 + (RANDOM * 32768 + RANDOM) % (size / 2)))
    head -c $cut whole.$f > cut
    "$TOLVANECTL" render --patch p.json cut out.wav > out 2> err; [ $? = 1 ] && grep -q 'is cut off: ' err && [ "$(wc -l < err)" = 1 ] && [ ! -e out.wav ] || return 1
    "$TOLVANECTL" render --partial --patch p.json cut out.wav > out 2> err && grep -q 'is cut off: ' err && [ "$(soxi -s out.wav 2>/dev/null)" -gt 0 ] || return 1
    [ $f = ogg ] || { ! "$TOLVANECTL" render --patch p.json - out2.wav < <(cat cut) 2> err && grep -q 'is cut off: only' err && [ ! -e out2.wav ]; } || return 1
    "$TOLVANECTL" render --patch p.json whole.$f out3.wav 2> err && [ ! -s err ]
}
comes_right || exit 93
