# shellcheck shell=bash disable=SC2034,SC2154  # the names are shared with the script that sources this
# Sourced by tests/network/run: the configurations of the two machines' PipeWire servers.
declare -A interfaces=([sender]=net-sender [receiver]=net-receiver)
declare -A addresses=([sender]=10.69.0.1 [receiver]=10.69.0.2)
channels=${CHANNELS:-8}
sink=to-stage       # the sender's sink: what is played into it goes to the network
session=stage       # the name under which the stream is announced, and the receiver's node
card=local.card     # the receiver's own sound card
aux=$(seq --separator=, --format=AUX%g 0 $((channels - 1)))
positions="[ ${aux//,/ } ]"
# No session manager runs here, so the nodes must make their ports themselves.
ports="adapter.auto-port-config = { mode = dsp monitor = true position = preserve }"
# Without a session manager, a node takes part in a driver's cycle by its group.
driven="node.group = cards"

# True if the announcements have a module of their own, as since 0.3.67.
has_announcer() { [ -e "$(pkg-config --variable=moduledir libpipewire-0.3)/libpipewire-module-rtp-sap.so" ]; }

# The stream as the AES67 profile has it: 24 bit, 48 kHz, packets of 1 ms, multicast.
sender_modules() {
    local announce="sap.ip = 239.255.255.255" module=""
    if has_announcer; then
        module="{ name = libpipewire-module-rtp-sap
            args = { local.ifname = ${interfaces[sender]} source.ip = ${addresses[sender]} $announce
                stream.rules = [ { matches = [ { sess.sap.announce = true } ] actions = { announce-stream = { } } } ] } }"
        announce=""
    fi
    cat <<END
    { name = libpipewire-module-rtp-sink
        args = { local.ifname = ${interfaces[sender]} source.ip = ${addresses[sender]} $announce
            destination.ip = 239.69.1.1 destination.port = 5004
            net.mtu = 1280 sess.min-ptime = 1 sess.max-ptime = 1 sess.latency.msec = 100 sess.name = $session
            audio.format = S24BE audio.rate = 48000 audio.channels = $channels audio.position = $positions
            stream.props = { node.name = $sink media.class = Audio/Sink sess.sap.announce = true $driven $ports } } }
    $module
END
}

receiver_modules() {
    local source="media.class = Audio/Source node.name = $session node.description = \"Stage network\" sess.latency.msec = $latency_ms
        resample.disable = $is_one_clock $driven $ports"
    local interface="local.ifname = ${interfaces[receiver]} sap.ip = 239.255.255.255"
    if has_announcer; then
        cat <<END
    { name = libpipewire-module-rtp-sap
        args = { $interface
            stream.rules = [ { matches = [ { rtp.session = $session } ] actions = { create-stream = { $source } } } ] } }
END
    else
        echo "{ name = libpipewire-module-rtp-source args = { $interface stream.props = { $source } } }"
    fi
}

receiver_objects() {
    cat <<END
    { factory = adapter args = { factory.name = support.null-audio-sink node.name = $card
        node.description = "Local card" media.class = Audio/Sink device.id = 77 device.name = $card
        audio.channels = $channels audio.position = $positions audio.format = F32P audio.rate = 48000
        priority.driver = 30000 object.linger = true $driven $ports } }
END
}

# server_configuration MODULES OBJECTS PPM: of a server whose clock is faster than the machine's by this much.
server_configuration() {
    cat <<END
context.properties = {
    core.daemon = true
    core.name = pipewire-0
    support.dbus = false
    link.max-buffers = 16
    mem.warn-mlock = false
    default.clock.rate = 48000
    default.clock.quantum = $quantum
    default.clock.min-quantum = $quantum
    default.clock.max-quantum = $quantum
}
context.spa-libs = {
    audio.convert.* = audioconvert/libspa-audioconvert
    audio.adapt = audioconvert/libspa-audioconvert
    support.* = support/libspa-support
}
context.modules = [
    { name = libpipewire-module-rt args = { nice.level = -11 rt.prio = 70 } flags = [ ifexists nofail ] }
    { name = libpipewire-module-protocol-native }
    { name = libpipewire-module-metadata }
    { name = libpipewire-module-spa-node-factory }
    { name = libpipewire-module-client-node }
    { name = libpipewire-module-client-device }
    { name = libpipewire-module-access args = { } }
    { name = libpipewire-module-adapter }
    { name = libpipewire-module-link-factory }
    { name = libpipewire-module-session-manager }
    $1
]
context.objects = [
    { factory = metadata args = { metadata.name = default } }
    { factory = spa-node-factory args = { factory.name = support.node.driver node.name = Dummy-Driver
        node.group = pipewire.dummy priority.driver = 20000 } }
    { factory = spa-node-factory args = { factory.name = tolvane.patient.driver library.name = tolvane_patient_driver
        node.name = Card-Clock node.group = cards priority.driver = 40000 tolvane.clock.ppm = "$3" } }
    $2
]
END
}
