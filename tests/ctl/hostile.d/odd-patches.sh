# A folder, a device, a file of 10 GB, a file without an end and a socket as a patch: one message each, and soon.
# statuses: 0
. "$hostile/lib.bash"
refused() {
    local patch=$1 text=$2
    case $((attempt % 3)) in
        0) fail_in_one_line "$TOLVANECTL" check "$patch" >out ;;
        1) fail_in_one_line "$TOLVANECTL" run --patch "$patch" --device "$device" --seconds 0.1 >out ;;
        2) fail_in_one_line "$TOLVANECTL" render --patch "$patch" in.wav out.wav >out ;;
    esac
    case $? in 1 | 3) ;; *) return 1 ;; esac
    grep -q "$text" message && [ ! -e out.wav ]
}
comes_right() {
    a_recording 1000 in.wav
    mkdir folder
    truncate -s 10G huge
    refused folder 'Is a directory' && refused huge 'larger than 256 MiB' && refused /dev/zero 'larger than 256 MiB' &&
        refused /dev/null 'there is no text' && refused missing/p.json 'No such file'
}
comes_right || exit 93
