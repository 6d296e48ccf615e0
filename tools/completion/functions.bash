# SPDX-License-Identifier: MIT
# What the bash completion of each program has. PROGRAM stands for the program's identifier, DEVICES for
# the command that lists devices, given the options in `place`. This head is left out.

# The words before the cursor as they were typed in `words`, and the one at the cursor in `cur`. Bash
# parts words at = and : as well, and replaces only the last part: `kept` is what is before it.
_PROGRAM_words()
{
    local line=${COMP_LINE:0:COMP_POINT} blank part i
    for ((i = 0; i <= COMP_CWORD; i++)); do
        blank=${line%%[![:space:]]*}
        line=${line#"$blank"}
        part=${COMP_WORDS[i]}
        ((i == COMP_CWORD)) && part=$line
        if [[ $i -eq 0 || -n $blank ]]; then
            words+=("$part")
        else
            words[-1]+=$part
        fi
        line=${line#"$part"}
    done
    cur=${words[-1]}
    unset 'words[-1]'
    [[ $part == [=:] ]] && part=
    kept=${cur%"$part"}
}

# Takes the quotation from `text`; a quotation mark may be open.
_PROGRAM_unquote()
{
    case $text in
    \"* | \'*) text=${text:1} ;;
    *) text=${text//\\/} ;;
    esac
}

_PROGRAM_devices()
{
    local place=() i
    for i in "${!words[@]}"; do
        case ${words[i]} in
        --acserver | --acport) place+=("${words[i]}" "${words[i + 1]}") ;;
        --acserver=* | --acport=*) place+=("${words[i]}") ;;
        esac
    done
    DEVICES
}

# Offers arguments: their kind, then the words of a kind that has some. `before` is what stands before
# them in the word.
_PROGRAM_argument()
{
    local kind=$1 text=${cur#"$before"} found i
    _PROGRAM_unquote
    if [[ $kind == *_list ]]; then
        before+=${text%"${text##*,}"}
        text=${text##*,}
    fi
    case $kind in
    words | word_list) mapfile -t COMPREPLY < <(compgen -W "${*:2}" -- "$text") ;;
    file*) mapfile -t COMPREPLY < <(compgen -f -- "$text") ;;
    folder) mapfile -t COMPREPLY < <(compgen -d -- "$text") ;;
    mac*) mapfile -t COMPREPLY < <(compgen -W "$(_PROGRAM_devices | cut -f 1)" -- "${text^^}") ;;
    esac
    [[ $kind == *_list ]] && compopt -o nospace
    [[ $kind == f* ]] && compopt -o filenames
    text=$kept
    _PROGRAM_unquote
    for i in "${!COMPREPLY[@]}"; do
        found=${COMPREPLY[i]}
        if [[ $kind == mac_list && ,${before#*=} == *",$found,"* ]]; then
            unset "COMPREPLY[i]"
            continue
        fi
        [[ $kind == file_list && -d $found ]] && found+=/
        found=$before$found
        # Bash does not quote these two in what is not the name of a file, such as a list of names.
        if [[ $kind == file_list && $found == *,* && $found == *[\`$]* ]]; then
            unset "COMPREPLY[i]"
            continue
        fi
        COMPREPLY[i]=${found:${#text}}
    done
}

# Offers options, and their arguments: the kind of operands, then --OPTION, or --OPTION=KIND, with a *
# before those that are offered again.
_PROGRAM_options()
{
    local operands=$1 option before='' word=${words[-1]}
    shift
    if [[ $cur == --*=* ]]; then
        word=${cur%%=*}
        before=$word=
    fi
    for option; do
        option=${option#\*}
        if [[ $option == "$word="* ]]; then
            # shellcheck disable=SC2086
            _PROGRAM_argument ${option#*=}
            return
        fi
    done
    if [[ -n $operands && $cur != -* ]]; then
        _PROGRAM_argument "$operands"
        return
    fi
    for option; do
        word=${option%%=*}
        [[ $word == \** || " ${words[*]%%=*} " != *" $word "* ]] || continue
        word=${word#\*}
        [[ $word == "$cur"* ]] && COMPREPLY+=("$word")
    done
}
