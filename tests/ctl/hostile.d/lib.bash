# Sourced by the kinds. A status of 90 and more is their own: 90 is too slow, 91 a wrong message, 92 a file that should not be,
# 93 anything else that did not come out as it has to.
set -u
printf '[{"inputChannel":0,"outputChannel":0,"gain":1.0,"active":true}]' >p.json
device="Tolvane Virtual Device"
# A shell has what it starts in the background ignore SIGINT.
background=(env --default-signal=INT,QUIT "$TOLVANECTL")

# pick WORD...: one of them, in turn with the attempts.
pick() {
    local words=("$@")
    echo "${words[attempt % $#]}"
}

# a_moment: a part of the first third of a second.
a_moment() { sleep "0.$(printf '%03d' $((RANDOM % 333)))"; }

# fill PIPE: until it takes no more. (A description of its own, so that no other writer gets its O_NONBLOCK.)
fill() { dd if=/dev/zero of="$1" bs=4096 oflag=nonblock conv=notrunc 2>/dev/null || true; }

# end_by SIGNAL PID: sends it, and gives the status that the process ended with. It ends within a second; another one is
# left to the machine, which stands still now and then.
end_by() {
    local start=${EPOCHREALTIME/./} status
    kill "-$1" "$2"
    wait "$2"
    status=$?
    [ $((${EPOCHREALTIME/./} - start)) -lt 2000000 ] || return 90
    return $status
}

# fail_in_one_line COMMAND...: its status; 91 where it fails without one message, or with more. That a run has begun is
# none.
fail_in_one_line() {
    local status=0
    "$@" 2>messages || status=$?
    grep -v '^tolvanectl: routing on ' messages >message || true
    cat message
    [ $status = 0 ] || [ "$(grep -c '^tolvanectl: ' message)/$(wc -l <message)" = 1/1 ] || return 91
    return $status
}

# a_recording FRAMES FILE: of one channel of 16 bits.
a_recording() { sox -n -r 48000 -c 1 -e signed -b 16 "$2" synth "$1s" sine 440 2>/dev/null; }

# harmless FILE...: no byte of them drives a terminal.
harmless() {
    ! LC_ALL=C grep -qP '[\x00-\x08\x0b-\x1f\x7f]|\xc2[\x80-\x9f]|(?<![\xc2-\xf4])(?<![\xc2-\xf4][\x80-\xbf])(?<![\xc2-\xf4][\x80-\xbf]{2})[\x80-\x9f]' "$@"
}
