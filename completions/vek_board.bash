# bash completion for vek_board(1)                                          -*- shell-script -*-

_vek_board()
{
    local cur=${COMP_WORDS[COMP_CWORD]}
    local words
    case ${COMP_WORDS[COMP_CWORD - 1]} in
    --card) words='0 1 2 3' ;;
    --baud) words='9600 19200 38400 115200 460800' ;;
    --tty) words=$(compgen -G '/dev/ttyUSB[0-9]*'; compgen -G '/dev/ttyACM[0-9]*'; compgen -G '/dev/ttyS[0-9]*') ;;
    *) words='--baud --card --help --once --pty --tty' ;;
    esac
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$cur")
}

complete -F _vek_board vek_board
