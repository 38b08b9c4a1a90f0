#!/bin/sh
# A private jackd for one test program: jack_server.sh JACK_WAIT NAME RATE_HZ BUFFER_FRAMES [ALSA_PCM]
#
# Prints jackd's process id once it takes clients, and keeps jackd until its own standard input ends, which it does
# however the test program ends. Then jackd goes, running, stopped or dead, and nothing of it stays behind.
jack_wait=$1 name=$2 rate=$3 frames=$4 alsa_pcm=$5
log=$(mktemp)

# A signal for the whole group of processes ends the waiting below, and not the clearing up after it.
trap : HUP INT TERM

# -S: a cycle ends when all clients are through, however long that takes on a busy machine (-t).
serve() {
  if [ -n "$alsa_pcm" ]; then set -- alsa -d "$alsa_pcm"; else set -- dummy; fi
  # Nobody is asked for the card: there may be no session bus.
  export JACK_NO_AUDIO_RESERVATION=1
  exec jackd -n "$name" -p 512 --no-realtime -S -t 20000 -d "$@" -r "$rate" -p "$frames" </dev/null >"$log" 2>&1
}

# Returns when it takes clients. jackd gives itself up when a thread of its own has not begun after a second, which
# happens on a busy machine: then another one is started, and what the first had to say is printed.
begin_server() {
  for attempt in 1 2 3 4 5; do
    serve &
    pid=$!
    "$jack_wait" "$name" "$pid" && return
    echo "jackd has not come up, attempt $attempt:" >&2
    cat "$log" >&2
    kill -KILL "$pid" 2>/dev/null
    wait "$pid"
  done
}

# Its status is then in $status. A server that a client joins or leaves just then may wait for it without end.
end_server() {
  kill -TERM "$pid" 2>/dev/null
  kill -CONT "$pid" 2>/dev/null
  (sleep 3; kill -KILL "$pid") </dev/null >/dev/null 2>&1 &
  guard=$!
  wait "$pid"
  status=$?
  kill "$guard" 2>/dev/null
}

begin_server
echo "$pid"
exec 1>&2
cat >/dev/null
end_server

# What a killed server leaves in shared memory is cleared away by the next one of its name.
if [ "$status" -eq 137 ]; then
  begin_server
  end_server
fi
rm -f "/dev/shm/jack_sem.$(id -u)_${name}"_*
rm -f "$log"
