# New files through symbolic links: to a file, to nothing, across two folders, and in a loop.
# statuses: 0
. "$hostile/lib.bash"
comes_right() {
    a_recording $((1000 + attempt)) in.wav
    mkdir d
    case $((attempt % 4)) in
      0) echo old > real; ln -s real out ;;
      1) ln -s real out ;;
      2) ln -s d/next out; ln -s ../real d/next ;;
      3) ln -s b out; ln -s out b; ! "$TOLVANECTL" render --patch p.json in.wav out 2> err && grep -q 'Too many levels' err && [ -L out ]; return ;;
    esac
    "$TOLVANECTL" render --patch p.json in.wav out && [ -L out ] && [ ! -L real ] && [ -s real ] && soxi real > /dev/null 2>&1
}
comes_right || exit 93
