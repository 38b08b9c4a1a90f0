# The same in a folder that cannot be written.
# statuses: 0
. "$hostile/lib.bash"
comes_right() {
    a_recording 1000 in.wav
    mkdir disk && mount -t tmpfs tmpfs disk || return 1
    mkdir disk/tolvane
    printf '{"aggregates":[{"name":"Stage","members":[{"uid":"pipewire:x","name":"Card","inputChannels":1,"outputChannels":1}]}]}' > disk/tolvane/aggregates.json
    mount -o remount,ro disk || return 1
    export XDG_CONFIG_HOME=$PWD/disk
    case $((attempt % 3)) in
        0) fail_in_one_line "$TOLVANECTL" render --patch p.json in.wav disk/out.wav ;;
        1) fail_in_one_line "$TOLVANECTL" aggregate delete Stage ;;
        2) fail_in_one_line "$TOLVANECTL" soak --device "$device" --minutes 0.01 --report disk/soak.html >out ;;
    esac
    [ $? = 1 ] && grep -q 'Read-only file system' message || return 1
    [ "$("$TOLVANECTL" aggregate list | grep -c '^Stage')" = 1 ]
}
comes_right || exit 93
