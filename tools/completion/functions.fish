# SPDX-License-Identifier: MIT
# What the fish completion of each program has. PROGRAM stands for the program's identifier, DEVICES for
# the command that lists devices, given the options in `place`. This head is left out.

# Whether the line is one of this command (if any is named), and has not got the option yet. That of an
# option with an argument may be the word before the cursor.
function __PROGRAM_can -a command option argument
    set -l words (commandline -opc)
    test -z "$command" -o "$words[2]" = "$command"; or return
    test -n "$argument" -a "$words[-1]" = "--$option"; and set -e words[-1]
    not string match -qr -- "^--$option(=|\$)" $words
end

function __PROGRAM_devices
    set -l words (commandline -opc)
    set -l place
    for i in (seq (count $words))
        switch $words[$i]
            case --acserver --acport
                set -a place $words[$i] $words[(math $i + 1)]
            case '--acserver=*' '--acport=*'
                set -a place $words[$i]
        end
    end
    DEVICES
end

# What the argument at the cursor has before its last element, and that element.
function __PROGRAM_list
    set -l token (commandline -ct | string replace -r -- '^--[^=]*=' '' | string unescape)
    string match -rg -- '^((?:.*,)?)([^,]*)$' "$token"
end

# What the command prints, for each element of a list, without those that are there.
function __PROGRAM_each
    set -l list (__PROGRAM_list)
    for item in ($argv)
        string match -q -- '*,'(string split -f 1 \t -- $item)',*' ",$list[1]"
        or echo "$list[1]$item"
    end
end

# Files for the elements behind the first, which fish completes by itself.
function __PROGRAM_files
    set -l list (__PROGRAM_list)
    test -n "$list[1]"; or return
    for file in $list[2]*
        test -d "$file"; and set file $file/
        echo "$list[1]$file"
    end
end
