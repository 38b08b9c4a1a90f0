# A rendering, a change of the aggregates and a report on a full disk: one message, and the old file stays.
# statuses: 0
. "$hostile/lib.bash"
comes_right() {
    a_recording 100000 in.wav
    mkdir disk && mount -t tmpfs -o size=128k tmpfs disk || return 1
    mkdir disk/tolvane
    printf '{"aggregates":[{"name":"Stage","members":[{"uid":"pipewire:x","name":"Card","inputChannels":1,"outputChannels":1}]}]}' > disk/tolvane/aggregates.json
    cp disk/tolvane/aggregates.json before
    echo old > disk/out.wav; echo old > disk/soak.html
    head -c $((attempt * 37 % 4096)) /dev/zero > disk/odd
    dd if=/dev/zero of=disk/full bs=4096 2>/dev/null; dd if=/dev/zero of=disk/full2 bs=1 count=4096 2>/dev/null
    export XDG_CONFIG_HOME=$PWD/disk
    case $((attempt % 3)) in
        0) fail_in_one_line "$TOLVANECTL" render --patch p.json in.wav disk/out.wav ;;
        1) fail_in_one_line "$TOLVANECTL" aggregate delete Stage ;;
        2) fail_in_one_line "$TOLVANECTL" soak --device "$device" --minutes 0.01 --report disk/soak.html >out ;;
    esac
    [ $? = 1 ] && grep -q 'No space left on device' message || return 1
    cmp -s before disk/tolvane/aggregates.json && [ "$(cat disk/out.wav disk/soak.html)" = $'old\nold' ] || return 1
    [ "$(cd disk && find . -type f | sort | tr '\n' ' ')" = "./full ./full2 ./odd ./out.wav ./soak.html ./tolvane/aggregates.json " ]
}
comes_right || exit 93
