# A user's sound as a desktop starts it, for shell tests: message bus, PipeWire and WirePlumber with their default
# configuration, in a fresh home. No hardware, no root. Sourced; then call begin_session.
# Needs in TOLVANE_BIN the folder of the built programs, in TOLVANE_SPA the server's plug-ins.
set -euo pipefail

session=$(mktemp -d)
chmod 700 "$session"
unset XDG_CONFIG_HOME PIPEWIRE_REMOTE PIPEWIRE_RUNTIME_DIR
export HOME=$session/home XDG_RUNTIME_DIR=$session XDG_STATE_HOME=$session/home/.local/state
export DBUS_SESSION_BUS_ADDRESS=unix:path=$session/bus DBUS_SYSTEM_BUS_ADDRESS=unix:path=/nonexistent
export PATH=$session/bin:$TOLVANE_BIN:$PATH
mkdir -p "$HOME" "$session/bin"
cd "$HOME"

others=() # further processes that end with the session
# shellcheck disable=SC2317  # called by the trap
end_session() {
    local status=$? name
    for name in wireplumber pipewire dbus-daemon; do
        [ ! -e "$session/$name.pid" ] || others+=("$(cat "$session/$name.pid")")
    done
    kill -9 "${others[@]}" 2>/dev/null || true
    if [ $status -ne 0 ]; then
        for name in "$session"/*.log; do
            echo "== $name" >&2
            tail -n 15 "$name" >&2
        done
    fi
    wait 2>/dev/null || true
    rm -rf "$session"
}
trap end_session EXIT

fail() {
    echo "$(basename "$0"): $*" >&2
    exit 1
}

# until_true CONDITION...: waits until the command succeeds, at most a minute.
until_true() {
    local end=$((SECONDS + 60))
    until "$@" >/dev/null 2>&1; do
        [ $SECONDS -lt $end ] || fail "in a minute not true: $*"
        sleep 0.05
    done
}

launch() {
    "$@" >>"$session/$1.log" 2>&1 &
    echo $! >"$session/$1.pid"
}

# Written as programs, so that a stand-in for systemctl can call them too.
cat >"$session/bin/start-sound" <<EOF
#!/bin/bash
SPA_PLUGIN_DIR=$TOLVANE_SPA setsid pipewire >>$session/pipewire.log 2>&1 &
echo \$! >$session/pipewire.pid
until [ -S $session/pipewire-0 ] && pw-cli info 0 >/dev/null 2>&1; do sleep 0.05; done
plug-cards
exec start-manager
EOF
cat >"$session/bin/start-manager" <<EOF
#!/bin/bash
setsid wireplumber >>$session/wireplumber.log 2>&1 &
echo \$! >$session/wireplumber.pid
until pw-metadata 0 default.audio.sink 2>/dev/null | grep -q value; do sleep 0.05; done
EOF
cat >"$session/bin/kill-manager" <<EOF
#!/bin/bash
kill -9 \$(cat $session/wireplumber.pid)
rm $session/wireplumber.pid
EOF
cat >"$session/bin/kill-sound" <<EOF
#!/bin/bash
kill -9 \$(cat $session/pipewire.pid) \$(cat $session/wireplumber.pid)
rm $session/{pipewire,wireplumber}.pid $session/pipewire-0*
EOF
cat >"$session/bin/plug-cards" <<EOF
#!/bin/bash
set -e
exec >>$session/cards.log 2>&1
EOF
chmod +x "$session"/bin/*

# add_card NAME DESCRIPTION INPUTS OUTPUTS: a card of null nodes, which is there at each start of PipeWire. The home
# knows nothing of it. Its clock starts a cycle when it is due and everybody has finished the last one: a test must not
# depend on the machine's pace.
add_card() {
    node() {
        local position
        position=$(seq -s' ' -f 'AUX%g' 0 $(($4 - 1)))
        echo "pw-cli create-node adapter '{ factory.name = support.null-audio-sink node.name = $1 device.id = 900
            device.name = $2 node.description = \"$3\" media.class = $5 audio.channels = $4 object.linger = true
            audio.position = [ $position ] node.group = cards priority.driver = 30000 }'"
    }
    {
        echo "pw-cli create-node spa-node-factory '{ factory.name = tolvane.patient.driver tolvane.clock.ppm = 0
            library.name = tolvane_patient_driver node.name = clock node.group = cards priority.driver = 40000
            object.linger = true }'"
        node "$1.source" "$1" "$2" "$3" Audio/Source/Virtual
        node "$1.sink" "$1" "$2" "$4" Audio/Sink
    } >>"$session/bin/plug-cards"
}

begin_session() {
    launch dbus-daemon --session --address="$DBUS_SESSION_BUS_ADDRESS" --nofork
    until_true test -S "$session/bus"
    start-sound
}

# Makes the cycles so long that pw-cat, which reads and writes its files between cycles without real-time priority, has
# more than a second for each.
lengthen_cycles() { pw-metadata -n settings 0 clock.force-quantum 8192 >/dev/null; }

# has_port PORT: true if the graph has it.
has_port() { pw-link -io | grep -qxF "$1"; }

# wire FROM TO: links two ports once both are there.
wire() {
    until_true has_port "$1"
    until_true has_port "$2"
    pw-link "$1" "$2"
}
