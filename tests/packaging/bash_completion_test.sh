#!/bin/bash
# Completion for bash, asked as readline asks it.
# shellcheck source=tests/packaging/support.sh
source "$(dirname "$0")/support.sh"
source "$BUILD/completions/tovira_util_tool.bash"
source "$SOURCE/completions/vek_board.bash"
source "$SOURCE/completions/vek_describe.bash"

# expect_words EXPECTED WORD...: the completions of the last word, with a blank between.
expect_words()
{
    local expected=$1 function
    shift
    COMP_WORDS=("$@")
    COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
    COMPREPLY=()
    function=$(complete -p "$1" | sed 's/.* -F \([^ ]*\) .*/\1/')
    # Its status tells readline nothing, and compopt fails outside of a completion.
    "$function" 2>/dev/null || true
    expect_equal "$*" "$expected" "${COMPREPLY[*]}"
}

export TOVIRA_DEVICE_FOLDER=$scratch/dev
mkdir -p "$TOVIRA_DEVICE_FOLDER/pts"
touch "$TOVIRA_DEVICE_FOLDER"/{ttyUSB0,ttyUSB1,ttyS0,null,pts/3,pts/ptmx}

tool=tovira_util_tool
expect_words "--card --cmd --gpu --help --mem --tty" $tool ""
expect_words "--card --cmd" $tool --c
expect_words "--cmd" $tool --card 1 --c
expect_words "0 1 2 3" $tool --card ""
expect_words "QZ201 QZ202" $tool --gpu Q
expect_words "" $tool --mem ""
expect_words "ttyUSB0 ttyUSB1 ttyS0 pts/3" $tool --tty ""
expect_words "ttyUSB0 ttyUSB1" $tool --tty = ttyU
expect_words "ttyUSB0,9600" $tool --tty ttyUSB0,9
expect_words "pts/3,19200 pts/3,115200" $tool --tty pts/3,1
expect_words "rrb rrbs rrl rrls rrq rrqs rrw rrws" $tool --cmd '"rr'
expect_words "rrl rrls" $tool --cmd "'rrl"
expect_words "pci" $tool --cmd = pc
expect_words "" $tool --cmd '"rrl '
expect_words "" $tool --cmd '"rrl 0'
expect_words "rrl 0; vwl rrl 0; vwls" $tool --cmd '"rrl 0; vwl'
expect_words "rrl 0;pci" $tool --cmd '"rrl 0;pc'
expect_words "help edid help edp" $tool --cmd '"help ed'
expect_words "temp; ? q temp; ? query temp; ? quit" $tool --cmd '"temp; ? q'
expect_words "rrb rrbs rrl rrls rrq rrqs rrw rrws" $tool --cmd '"RR'
expect_words "HELP edid HELP edp" $tool --cmd '"HELP Ed'
expect_words "0 1 2 3" vek_board --card ""
expect_words "19200 115200" vek_board --baud 1
expect_words "--once" vek_board --o
expect_words "--check" vek_describe --c
touch "$scratch/cards.toml"
expect_words "$scratch/cards.toml" vek_describe --check "$scratch/car"
finish
