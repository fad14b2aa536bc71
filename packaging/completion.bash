# bash completion for vantor, vantor-practice, vantor-relay and vantor-server. The programs' own --help says which
# options there are.

_vantor_options() {
    "$1" --help 2>/dev/null | grep -oE '^  --[a-z][a-z-]*' || true
}

_vantor() {
    local program=${1/#\~\//$HOME/} word=$2 previous=$3 words=
    [ "$word" != = ] || word=                                      # --option=
    [ "$previous" != = ] || previous=${COMP_WORDS[COMP_CWORD - 2]} # --option=word
    case $previous in
        --log | --record | --replay)
            compopt -o filenames 2>/dev/null
            mapfile -t COMPREPLY < <(compgen -f -- "$word")
            return ;;
        --difficulty) words='easy normal hard' ;;
        --spawn) words='fixed random grid' ;;
        --network) words='good dsl mobile awful' ;;
        --bind) words='127.0.0.1 0.0.0.0' ;;
        --host) mapfile -t COMPREPLY < <(compgen -A hostname -- "$word"); return ;;
        --friendly-fire | --help | --version) ;;
        --*) return ;;  # a number, or for --to a server and its port
    esac
    if [ -z "$words" ]; then
        words=$(_vantor_options "$program")
        # What it does not know itself it hands to the server.
        [[ $program != *vantor-practice ]] || words+=" $(_vantor_options "${program%practice}server")"
    fi
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word" | sort -u)
}

complete -F _vantor vantor vantor-practice vantor-relay vantor-server
