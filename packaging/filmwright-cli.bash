# SPDX-License-Identifier: MIT
# Completion of filmwright-cli for bash.

# Folders, and files whose names match the extended pattern, in any case.
_filmwright_cli_paths()
{
    local word=$1 pattern=$2 path
    compopt -o filenames 2>/dev/null
    while IFS= read -r path; do
        # shellcheck disable=SC2053
        [[ -d $path || ${path,,} == $pattern ]] && COMPREPLY+=("$path")
    done < <(compgen -f -- "$word")
}

_filmwright_cli_words()
{
    local word=$1
    shift
    mapfile -t COMPREPLY < <(compgen -W "$*" -- "$word")
}

# What the help of a command says, so that nothing has to be kept in step with it:
# its options, and the choices of one of them ("--format <avi|mov>").
_filmwright_cli_options()
{
    "${COMP_WORDS[0]}" "$1" --help 2>/dev/null | grep -oE '^ +--[a-z-]+'
}

_filmwright_cli_choices()
{
    "${COMP_WORDS[0]}" "$1" --help 2>/dev/null | sed -n "s/^ *$2 <\([^>]*\)>.*/\1/p" | tr '|' ' '
}

_filmwright_cli_recipes()
{
    "${COMP_WORDS[0]}" recipes 2>/dev/null | cut -d' ' -f1
}

_filmwright_cli()
{
    local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local command=${COMP_WORDS[1]}
    COMPREPLY=()

    if [[ $COMP_CWORD -eq 1 ]]; then
        _filmwright_cli_words "$word" convert info verify recipes encoders tools --help --version
        return
    fi
    case $command:$previous in
        convert:--format | convert:--quality | convert:--progress | convert:--existing)
            _filmwright_cli_words "$word" "$(_filmwright_cli_choices convert "$previous")"
            return
            ;;
        convert:--jobs) _filmwright_cli_words "$word" auto "$(seq "$(nproc)")"; return ;;
        convert:--dark | convert:--flat | convert:--flat-dark)
            _filmwright_cli_paths "$word" '*.mlv'
            return
            ;;
        convert:--matrix) _filmwright_cli_words "$word" recorded auto; return ;;
        convert:--white-level | convert:--black-level)
            _filmwright_cli_words "$word" recorded auto
            return
            ;;
        convert:--white-balance) _filmwright_cli_words "$word" camera auto; return ;;
        convert:--lut) _filmwright_cli_paths "$word" '*.cube'; return ;;
        convert:--exposure | convert:--frames | convert:--buffer) return ;;
        convert:--repair-pixels)
            _filmwright_cli_paths "$word" '*.@(fpm|bpm|txt)'
            mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -W 'auto off' -- "$word")
            return
            ;;
        convert:--recipe)
            _filmwright_cli_paths "$word" '*.recipe'
            mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -W "$(_filmwright_cli_recipes)" -- "$word")
            return
            ;;
        convert:--temp-dir | convert:--output) _filmwright_cli_paths "$word" ''; return ;;
        convert:--report) _filmwright_cli_paths "$word" '*.json'; return ;;
    esac
    if [[ $word == -* ]]; then
        _filmwright_cli_words "$word" "$(_filmwright_cli_options "$command")"
        return
    fi
    case $command in
        convert | info | verify) _filmwright_cli_paths "$word" '*.mlv' ;;
    esac
}

complete -F _filmwright_cli filmwright-cli
