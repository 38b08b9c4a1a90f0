# Sourced by the scripts of hostile.d. Statuses from 90 on are the scripts' own: 90 too slow, 91 a wrong
# message, 92 a file that should not exist, 93 any other wrong result.
set -u
printf '[{"inputChannel":0,"outputChannel":0,"gain":1.0,"active":true}]' >p.json
device="Tolvane Virtual Device"
# A shell starts background processes with SIGINT and SIGQUIT ignored, so restore them.
background=(env --default-signal=INT,QUIT "$TOLVANECTL")

# pick WORD...: prints one of the words, chosen by the attempt's number.
pick() {
    local words=("$@")
    echo "${words[attempt % $#]}"
}

# a_moment: sleeps for a random time of up to a third of a second.
a_moment() { sleep "0.$(printf '%03d' $((RANDOM % 333)))"; }

# fill PIPE: writes until the pipe is full. It opens the pipe anew, so that O_NONBLOCK does not affect other
# writers.
fill() { dd if=/dev/zero of="$1" bs=4096 oflag=nonblock conv=notrunc 2>/dev/null || true; }

# begun PID: waits until the process runs the program. Before that it is a copy of the shell that ignores SIGINT and
# SIGQUIT.
begun() {
    local program
    while program=$(readlink "/proc/$1/exe") && [ "$program" != "$(readlink -f "$TOLVANECTL")" ]; do :; done
}

# in_time START STATUS: returns the status, or 90 if 2 s have passed since START, in microseconds. A program must end
# within 1 s; the other second allows for stalls of the machine.
in_time() {
    [ $((${EPOCHREALTIME/./} - $1)) -lt 2000000 ] || return 90
    return "$2"
}

# end_by SIGNAL PID: sends the signal and returns the process's exit status, in time.
end_by() {
    local start
    begun "$2"
    start=${EPOCHREALTIME/./}
    kill "-$1" "$2"
    wait "$2"
    in_time "$start" $?
}

# fail_in_one_line COMMAND...: returns the command's status, or 91 if it fails without exactly one line of
# message. The line that a run or a soak has begun does not count.
fail_in_one_line() {
    local status=0
    "$@" 2>messages || status=$?
    grep -v -e '^tolvanectl: routing on ' -e '^tolvanectl: soaking ' messages >message || true
    cat message
    [ $status = 0 ] || [ "$(grep -c '^tolvanectl: ' message)/$(wc -l <message)" = 1/1 ] || return 91
    return $status
}

# a_command_under LIMIT VALUE [RENDER OPTION...]: runs a command, chosen by the attempt's number, under this limit of
# ulimit. Its result is that of fail_in_one_line.
a_command_under() {
    local limit=$1 value=$2
    shift 2
    # In a subshell, so that the script's own shell is not limited.
    limited() { (ulimit "$limit" "$value"; exec "$TOLVANECTL" "$@"); }
    a_recording 1000 in.wav
    case $((attempt % 6)) in
        0) fail_in_one_line limited devices ;;
        1) fail_in_one_line limited run --patch p.json --seconds 0.1 ;;
        2) fail_in_one_line limited aggregate list ;;
        3) fail_in_one_line limited aggregate create Stage One Two ;;
        4) fail_in_one_line limited render --patch p.json "$@" in.wav out.wav ;;
        5) fail_in_one_line limited check p.json ;;
    esac
}

# a_recording FRAMES FILE: makes a sound file with one channel of 16 bits.
a_recording() { sox -n -r 48000 -c 1 -e signed -b 16 "$2" synth "$1s" sine 440 2>/dev/null; }

# harmless FILE...: succeeds if the files contain no control characters except tab and line feed.
harmless() {
    ! LC_ALL=C grep -qP '[\x00-\x08\x0b-\x1f\x7f]|\xc2[\x80-\x9f]|(?<![\xc2-\xf4])(?<![\xc2-\xf4][\x80-\xbf])(?<![\xc2-\xf4][\x80-\xbf]{2})[\x80-\x9f]' "$@"
}
