# Completion for tolvanectl in bash.

_tolvanectl() {
    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD - 1]}
    local command=${COMP_WORDS[1]} options='' files=no
    COMPREPLY=()

    case $prev in
    --patch | --report | --token-file | --scenes)
        compopt -o filenames
        mapfile -t COMPREPLY < <(compgen -f -- "$cur")
        return
        ;;
    --device | --wait | --rate | --buffer | --periods | --outputs | --seconds | --osc | --ramp | --minutes | --edits-per-minute) return ;;
    esac

    if [ "$COMP_CWORD" -eq 1 ]; then
        options='devices check render run soak aggregate --help --version'
    else
        case $command in
        devices) options='--json --long --channels --watch --wait --help' ;;
        check) options='--device --wait --help' files=yes ;;
        render) options='--patch --outputs --buffer --partial --help' files=yes ;;
        run) options='--patch --device --wait --rate --buffer --periods --watch --meters --seconds --osc --token-file --scenes --ramp --help' ;;
        soak) options='--device --wait --minutes --edits-per-minute --report --full-speed --help' ;;
        aggregate)
            case ${COMP_WORDS[2]} in
            list) options='--json --wait --help' ;;
            create) options='--wait --help' ;;
            delete) options='--help' ;;
            *) options='list create delete --help' ;;
            esac
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
