# SPDX-License-Identifier: MIT
# What the zsh completion of each program has. PROGRAM stands for the program's identifier, DEVICES for
# the command that lists devices, given the options in `place`. This head is left out.

_PROGRAM_devices() {
    local -a place macs shown
    local line i
    for ((i = 2; i < CURRENT; i++)); do
        case ${words[i]} in
            --acserver|--acport) place+=("${(Q)words[i]}" "${(Q)words[i+1]}") ;;
            --acserver=*|--acport=*) place+=("${(Q)words[i]}") ;;
        esac
    done
    DEVICES |
    while IFS= read -r line; do
        macs+=("${line%%$'\t'*}")
        shown+=("${line/$'\t'/  }")
    done
    local expl
    _wanted devices expl 'device' compadd "$@" -l -M 'm:{a-f}={A-F}' -d shown -a macs
}
