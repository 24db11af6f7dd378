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

_filmwright_cli()
{
    local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local command=${COMP_WORDS[1]}
    COMPREPLY=()

    if [[ $COMP_CWORD -eq 1 ]]; then
        _filmwright_cli_words "$word" convert info encoders tools --help --version
        return
    fi
    case $command:$previous in
        convert:--format) _filmwright_cli_words "$word" mov avi; return ;;
        convert:--quality) _filmwright_cli_words "$word" high maximum; return ;;
        convert:--jobs) _filmwright_cli_words "$word" auto $(seq "$(nproc)"); return ;;
        convert:--progress) _filmwright_cli_words "$word" text json; return ;;
        convert:--dark | convert:--flat | convert:--flat-dark)
            _filmwright_cli_paths "$word" '*.mlv'
            return
            ;;
        convert:--temp-dir) _filmwright_cli_paths "$word" ''; return ;;
        convert:--report) _filmwright_cli_paths "$word" '*.json'; return ;;
    esac
    if [[ $word == -* ]]; then
        case $command in
            convert)
                _filmwright_cli_words "$word" --format --quality --dark --flat --flat-dark --hdr \
                    --dual-iso --jobs --temp-dir --keep-temp --quiet \
                    --progress --report --help
                ;;
            info | encoders | tools) _filmwright_cli_words "$word" --json --help ;;
        esac
        return
    fi
    case $command in
        convert | info) _filmwright_cli_paths "$word" '*.mlv' ;;
    esac
}

complete -F _filmwright_cli filmwright-cli
