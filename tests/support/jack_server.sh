#!/bin/sh
# A private jackd for one test program: jack_server.sh JACK_WAIT NAME RATE_HZ BUFFER_FRAMES [ALSA_PCM]
#
# Prints jackd's process id once jackd accepts clients. Keeps jackd until standard input is closed, which
# happens however the test program ends. Then ends jackd, also if it is stopped or dead, and removes all that
# it leaves.
jack_wait=$1 name=$2 rate=$3 frames=$4 alsa_pcm=$5
log=$(mktemp)

# A signal to the whole process group ends the wait below, but must not prevent the cleanup after it.
trap : HUP INT TERM

# -S: a cycle waits until all clients have finished, up to 20 s (-t), since the machine may be busy.
serve() {
  if [ -n "$alsa_pcm" ]; then set -- alsa -d "$alsa_pcm"; else set -- dummy; fi
  # Do not request the card over the session bus: there may be none.
  export JACK_NO_AUDIO_RESERVATION=1
  exec jackd -n "$name" -p 512 --no-realtime -S -t 20000 -d "$@" -r "$rate" -p "$frames" </dev/null >"$log" 2>&1
}

# Starts jackd and returns once it accepts clients. jackd gives up if one of its threads has not started
# within a second, as happens on a busy machine. In that case prints its log and starts another one, up to 5
# in all.
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

# Ends jackd and sets $status. A server may wait for ever for a client that connects or leaves at that moment,
# so it is killed after 3 s.
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

# A killed server leaves shared memory behind. The next server of the same name removes it.
if [ "$status" -eq 137 ]; then
  begin_server
  end_server
fi
rm -f "/dev/shm/jack_sem.$(id -u)_${name}"_*
rm -f "$log"
