# SPDX-License-Identifier: Apache-2.0
# Completion of camerasim's command lines for bash. Source this file, or put it into
# /usr/share/bash-completion/completions under the name camerasim.
#
# Every word comes from the program itself, which knows its commands and asks the device that runs.
# In place of files it says that the shell may offer them.

# Everything that may stand where the cursor is, given the words before it and that word.
_camerasim_candidates() {
    local program=${COMP_WORDS[0]/#\~/$HOME} candidate
    "$program" names "$@" 2>/dev/null | while IFS= read -r candidate; do
        case $candidate in
            :files) compgen -f -- "$_camerasim_start" ;;
            :directories) compgen -d -- "$_camerasim_start" ;;
            *) printf '%s\n' "$candidate" ;;
        esac
    done
}

_camerasim() {
    # bash breaks words at '@' and '=', camera names do not: the line is split at blanks again.
    local line=${COMP_LINE:0:COMP_POINT}
    local whole= candidate
    local -a words=()
    read -ra words <<<"$line"
    if [[ $line != *[[:blank:]] && ${#words[@]} -gt 0 ]]; then
        whole=${words[-1]}
        unset 'words[-1]'
    fi
    COMPREPLY=()
    local start=$whole
    [[ $whole != --*=* ]] || start=${whole#*=}
    local _camerasim_start=$start
    # Of the word, bash keeps what is before the place that it completes.
    local kept= added=
    [[ $COMP_WORDBREAKS != *@* || $start != *@* ]] || kept=${start%"${start##*@}"}
    [[ $COMP_WORDBREAKS == *=* ]] || added=${whole%"$start"}
    local files=yes
    while IFS= read -r candidate; do
        [[ $candidate == "$start"* ]] || continue
        [[ -e $candidate ]] || files=
        COMPREPLY+=("$added${candidate#"$kept"}")
    done < <(_camerasim_candidates "${words[@]:1}" "$whole" | sort -u)
    # Directories are gone on with, and names are quoted; the slash of a provider is none of these.
    [[ -z $files || ${#COMPREPLY[@]} -eq 0 ]] || compopt -o filenames 2>/dev/null
}

complete -F _camerasim camerasim
