# SPDX-License-Identifier: GPL-3.0-or-later
# bash completion for tarnwell-cli: its commands, their options, and folders or
# songs where a command takes them.

# Folders, and the files the library would hold, below what is typed so far.
_tarnwell_cli_songs()
{
    local path
    compopt -o filenames 2> /dev/null
    while IFS= read -r path; do
        if [[ -d $path ]]; then
            COMPREPLY+=("$path")
            continue
        fi
        case ${path,,} in
            *.mp3 | *.aiff | *.aif | *.wav | *.m4a | *.caf | *.flac) COMPREPLY+=("$path") ;;
        esac
    done < <(compgen -f -- "$1")
}

_tarnwell_cli_folders()
{
    compopt -o filenames 2> /dev/null
    mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -d -- "$1")
}

_tarnwell_cli()
{
    local cur=${COMP_WORDS[COMP_CWORD]}
    local prev=${COMP_WORDS[COMP_CWORD - 1]}
    local command=${COMP_WORDS[1]}
    COMPREPLY=()

    if ((COMP_CWORD == 1)); then
        if [[ $cur == -* ]]; then
            mapfile -t COMPREPLY < <(compgen -W '--help' -- "$cur")
        else
            mapfile -t COMPREPLY < <(compgen -W 'scan tags write play search artists artwork' -- "$cur")
        fi
        return
    fi

    case $command in
        scan | artists)
            ((COMP_CWORD == 2)) && _tarnwell_cli_folders "$cur"
            ;;
        search)
            # The query that follows the folder is free text.
            ((COMP_CWORD == 2)) && _tarnwell_cli_folders "$cur"
            ;;
        tags)
            _tarnwell_cli_songs "$cur"
            ;;
        write)
            case $prev in
                --title | --artist | --album) return ;;
            esac
            if [[ $cur == -* ]]; then
                mapfile -t COMPREPLY < <(compgen -W '--title --artist --album' -- "$cur")
            else
                _tarnwell_cli_songs "$cur"
            fi
            ;;
        play)
            if [[ $cur == -* ]]; then
                mapfile -t COMPREPLY < <(compgen -W '--shuffle --repeat --no-gapless --no-levelling' -- "$cur")
            else
                _tarnwell_cli_songs "$cur"
            fi
            ;;
        artwork)
            case $prev in
                --artist | --album) return ;;
                --file) _tarnwell_cli_songs "$cur"; return ;;
                --out)
                    compopt -o filenames 2> /dev/null
                    mapfile -t COMPREPLY < <(compgen -f -- "$cur")
                    return
                    ;;
            esac
            mapfile -t COMPREPLY < <(compgen -W '--artist --album --file --out' -- "$cur")
            ;;
    esac
}

complete -F _tarnwell_cli tarnwell-cli
