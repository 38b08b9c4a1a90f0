# Completion for tolvanectl in fish.

function __tolvanectl_aggregate
    __fish_seen_subcommand_from aggregate; and __fish_seen_subcommand_from $argv
end

set -l commands devices check render run soak aggregate
complete -c tolvanectl -f
complete -c tolvanectl -l help -d 'Print help'
complete -c tolvanectl -n "not __fish_seen_subcommand_from $commands" -l version -d 'Print the version'
complete -c tolvanectl -n "not __fish_seen_subcommand_from $commands" -a devices -d 'List the devices'
complete -c tolvanectl -n "not __fish_seen_subcommand_from $commands" -a check -d 'Read patch files'
complete -c tolvanectl -n "not __fish_seen_subcommand_from $commands" -a render -d 'Route a sound file'
complete -c tolvanectl -n "not __fish_seen_subcommand_from $commands" -a run -d 'Route live'
complete -c tolvanectl -n "not __fish_seen_subcommand_from $commands" -a soak -d 'Test a device for a long time'
complete -c tolvanectl -n "not __fish_seen_subcommand_from $commands" -a aggregate -d 'Use several devices as one'

complete -c tolvanectl -n '__fish_seen_subcommand_from devices' -l json -d 'Print JSON'
complete -c tolvanectl -n '__fish_seen_subcommand_from devices' -l long -d 'With the lasting identities'
complete -c tolvanectl -n '__fish_seen_subcommand_from devices' -l channels -d 'The channels, of all devices or one'
complete -c tolvanectl -n '__fish_seen_subcommand_from devices' -l watch -d 'Report arrivals and departures'
complete -c tolvanectl -n '__fish_seen_subcommand_from devices' -l wait -x -d 'Seconds to wait for servers'

complete -c tolvanectl -n '__fish_seen_subcommand_from check render' -F

complete -c tolvanectl -n '__fish_seen_subcommand_from render run' -l patch -r -F -d 'The patch file'
complete -c tolvanectl -n '__fish_seen_subcommand_from render run' -l buffer -x -d 'Frames of a cycle'
complete -c tolvanectl -n '__fish_seen_subcommand_from render' -l outputs -x -d 'Channels of the result'
complete -c tolvanectl -n '__fish_seen_subcommand_from render' -l partial -d 'Render a recording that is cut off'

complete -c tolvanectl -n '__fish_seen_subcommand_from check run soak' -l device -x -d 'The device'
complete -c tolvanectl -n '__fish_seen_subcommand_from check run soak' -l wait -x -d 'Seconds to wait for servers and the device'
complete -c tolvanectl -n '__fish_seen_subcommand_from run' -l rate -x -d 'Samples a second'
complete -c tolvanectl -n '__fish_seen_subcommand_from run' -l periods -x -d 'Buffers that the hardware holds'
complete -c tolvanectl -n '__fish_seen_subcommand_from run' -l watch -d 'Take over changes of the patch file'
complete -c tolvanectl -n '__fish_seen_subcommand_from run' -l meters -d 'Show levels'
complete -c tolvanectl -n '__fish_seen_subcommand_from run' -l seconds -x -d 'Stop after this time'
complete -c tolvanectl -n '__fish_seen_subcommand_from run' -l osc -x -d 'Take commands by OSC'
complete -c tolvanectl -n '__fish_seen_subcommand_from run' -l token-file -r -F -d 'What clients must know'
complete -c tolvanectl -n '__fish_seen_subcommand_from run' -l scenes -x -a '(__fish_complete_directories)' -d 'Folder of scenes'
complete -c tolvanectl -n '__fish_seen_subcommand_from run' -l ramp -x -d 'Milliseconds that a change takes'

complete -c tolvanectl -n '__fish_seen_subcommand_from soak' -l minutes -x -d 'How long'
complete -c tolvanectl -n '__fish_seen_subcommand_from soak' -l edits-per-minute -x -d 'Changes of the routes'
complete -c tolvanectl -n '__fish_seen_subcommand_from soak' -l report -r -F -d 'Write a page with the results'
complete -c tolvanectl -n '__fish_seen_subcommand_from soak' -l full-speed -d 'Without pauses'

complete -c tolvanectl -n '__fish_seen_subcommand_from aggregate; and not __fish_seen_subcommand_from list create delete' \
    -a 'list create delete'
complete -c tolvanectl -n '__tolvanectl_aggregate list' -l json -d 'Print JSON'
complete -c tolvanectl -n '__tolvanectl_aggregate list create' -l wait -x -d 'Seconds to wait for servers and devices'
