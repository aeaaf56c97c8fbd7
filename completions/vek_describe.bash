# bash completion for vek_describe(1)                                       -*- shell-script -*-

_vek_describe()
{
    local cur=${COMP_WORDS[COMP_CWORD]}
    if [[ ${COMP_WORDS[COMP_CWORD - 1]} == --check ]]; then
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$cur")
    else
        mapfile -t COMPREPLY < <(compgen -W '--check --help --version' -- "$cur")
    fi
}

complete -F _vek_describe vek_describe
