# Completion for tolvanectl in bash.

_tolvanectl() {
    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD - 1]}
    local command=${COMP_WORDS[1]} options='' files=no
    COMPREPLY=()

    case $prev in
    --patch | --report | --token-file | --tls-cert | --tls-key | --tls-ca | --scenes)
        compopt -o filenames
        mapfile -t COMPREPLY < <(compgen -f -- "$cur")
        return
        ;;
    --device | --wait | --rate | --buffer | --periods | --outputs | --seconds | --osc | --http | --at | --number | --ramp | --minutes | --edits-per-minute) return ;;
    esac

    if [ "$COMP_CWORD" -eq 1 ]; then
        options='devices check render run soak aggregate ctl --help --version'
    else
        case $command in
        devices) options='--json --long --channels --watch --wait --help' ;;
        check) options='--device --wait --help' files=yes ;;
        render) options='--patch --outputs --buffer --partial --help' files=yes ;;
        run) options='--patch --device --wait --rate --buffer --periods --watch --meters --seconds --osc --http --tls-cert --tls-key --token-file --scenes --ramp --help' ;;
        soak) options='--device --wait --minutes --edits-per-minute --report --full-speed --help' ;;
        aggregate)
            case ${COMP_WORDS[2]} in
            list) options='--json --wait --help' ;;
            create) options='--wait --help' ;;
            delete) options='--help' ;;
            *) options='list create delete --help' ;;
            esac
            ;;
        ctl)
            local commands='route gain mute unmute label remove scene save-scene scenes undo redo save reset-clips status dump watch'
            local word
            options="$commands --at --token-file --tls --tls-ca --help"
            for word in "${COMP_WORDS[@]:2:COMP_CWORD - 2}"; do
                case $word in
                scenes | status | dump) options='--json --help' ;;
                watch) options='--json --meters --help' ;;
                scene) options='--number --help' ;;
                *) [[ " $commands " != *" $word "* ]] || options='--help' ;;
                esac
            done
            ;;
        esac
    fi

    mapfile -t COMPREPLY < <(compgen -W "$options" -- "$cur")
    if [ $files = yes ] && [[ $cur != -* ]]; then
        compopt -o filenames
        mapfile -t COMPREPLY < <(compgen -f -- "$cur")
    fi
}
complete -F _tolvanectl tolvanectl
