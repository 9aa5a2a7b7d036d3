# SPDX-License-Identifier: Apache-2.0
# Completion of camerasim's command lines for bash. Source this file, or put it into
# /usr/share/bash-completion/completions under the name camerasim.
#
# Every word comes from the program itself: commands and options from its own parser, providers,
# cameras and devices from the device that runs.

# Words of one kind: asks the program that is being completed.
_camerasim_names() {
    local program=${COMP_WORDS[0]/#\~/$HOME}
    "$program" names "$@" "${_camerasim_device[@]}" 2>/dev/null
}

# What may stand at the place of a positional argument: $1 command, $2 its place, from 1, $3.. what
# stands at the places before.
_camerasim_arguments() {
    case $1:$2 in
        open:1|close:1|torch:1) _camerasim_names cameras ;;
        dump:1) _camerasim_names services ;;
        torch:2) printf '%s\n' on off ;;
        kill:1|hang:1|start:1) _camerasim_names providers; echo service ;;
        plug:1|unplug:1) _camerasim_names providers ;;
        plug:2|unplug:2) _camerasim_names devices-of "$3" ;;
        wait:1) printf '%s\n' camera provider property cameras ;;
        wait:2)
            case $3 in
                camera) _camerasim_names cameras ;;
                provider) _camerasim_names providers ;;
            esac ;;
        wait:3)
            case $3 in
                camera) printf '%s\n' PRESENT NOT_PRESENT ;;
                provider) printf '%s\n' connected disconnected running dead ;;
                property) printf '%s\n' is contains ;;
            esac ;;
        up:1|tour:1) compgen -d -- "$_camerasim_current" ;;
    esac
}

# The value of an option: $1 the option.
_camerasim_values() {
    case $1 in
        --device) _camerasim_names devices; compgen -d -- "$_camerasim_current" ;;
        --format) printf '%s\n' table json ;;
        --priority) printf '%s\n' V D I W E F ;;
        --program) _camerasim_names providers ;;
        --service) _camerasim_names services ;;
        -o|--output) compgen -f -- "$_camerasim_current" ;;
        *) return 1 ;;
    esac
}

# Whether an option is followed by a value.
_camerasim_takes_value() {
    case $1 in
        --device|--format|--priority|--program|--service|--tag|--from|--timeout|--pause|-o|--output)
            return 0 ;;
    esac
    return 1
}

# Everything that may stand where the cursor is, given the words before it.
_camerasim_candidates() {
    local command= option= word
    local -a places=()
    _camerasim_device=()
    for word in "$@"; do
        if [[ -n $option ]]; then
            [[ $option != --device ]] || _camerasim_device=(--device "$word")
            option=
        elif [[ $word == --device=* ]]; then
            _camerasim_device=("$word")
        elif _camerasim_takes_value "$word"; then
            option=$word
        elif [[ $word != -* && -z $command ]]; then
            command=$word
        elif [[ $word != -* ]]; then
            places+=("$word")
        fi
    done
    if [[ -n $option ]]; then
        _camerasim_values "$option"
    elif [[ $_camerasim_current == --*=* ]]; then
        option=${_camerasim_current%%=*}
        _camerasim_current=${_camerasim_current#*=}
        _camerasim_values "$option"
    elif [[ -z $command && $_camerasim_current != -* ]]; then
        _camerasim_names commands
    elif [[ $_camerasim_current == -* ]]; then
        _camerasim_names options "$command"
    else
        _camerasim_arguments "$command" $((${#places[@]} + 1)) "${places[@]}"
    fi
}

_camerasim() {
    # bash breaks words at '@' and '=', camera names do not: the line is split at blanks again.
    local line=${COMP_LINE:0:COMP_POINT}
    local _camerasim_current= candidate
    local -a words=() _camerasim_device=()
    read -ra words <<<"$line"
    if [[ $line != *[[:blank:]] && ${#words[@]} -gt 0 ]]; then
        _camerasim_current=${words[-1]}
        unset 'words[-1]'
    fi
    COMPREPLY=()
    local whole=$_camerasim_current
    local start=$whole
    [[ $whole != --*=* ]] || start=${whole#*=}
    # Of the word, bash keeps what is before the place that it completes.
    local kept= added=
    [[ $COMP_WORDBREAKS != *@* || $start != *@* ]] || kept=${start%"${start##*@}"}
    [[ $COMP_WORDBREAKS == *=* ]] || added=${whole%"$start"}
    local files=yes
    while IFS= read -r candidate; do
        [[ $candidate == "$start"* ]] || continue
        [[ -e $candidate ]] || files=
        COMPREPLY+=("$added${candidate#"$kept"}")
    done < <(_camerasim_candidates "${words[@]:1}" | sort -u)
    # Directories are gone on with, and names are quoted; the slash of a provider is none of these.
    [[ -z $files || ${#COMPREPLY[@]} -eq 0 ]] || compopt -o filenames 2>/dev/null
}

complete -F _camerasim camerasim
