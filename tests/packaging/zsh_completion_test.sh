#!/bin/bash
# Completion for zsh, in a shell on a pseudo-terminal.
# shellcheck source=tests/packaging/support.sh
source "$(dirname "$0")/support.sh"
needs zsh zsh
for file in "$BUILD/completions/_tovira_util_tool" "$SOURCE"/completions/_vek_{board,describe}; do
    zsh -f -n "$file" || fail "${file##*/} is not for zsh"
done
export TOVIRA_DEVICE_FOLDER=$scratch/dev COMPLETIONS=$BUILD/completions:$SOURCE/completions ZDOTDIR=$scratch TERM=dumb
mkdir -p "$TOVIRA_DEVICE_FOLDER/pts"
touch "$TOVIRA_DEVICE_FOLDER"/{ttyUSB0,pts/3}

# expect_line EXPECTED TYPED: what is typed and then completed makes this line. One shell completes all of them at the end.
expect_line()
{
    expected+=("$1")
    typed+=("$2")
}

expected=()
typed=()

tool=tovira_util_tool
expect_line "$tool --cmd" "$tool --cm"
expect_line "$tool --card" "$tool --ca"
expect_line "$tool --card 1 --gpu" "$tool --card 1 --g"
expect_line "$tool --gpu QZ20" "$tool --gpu Q"
expect_line "$tool --gpu QZ201 --ca" "$tool --gpu QZ201 --ca"
expect_line "$tool --tty ttyUSB0," "$tool --tty ttyU"
expect_line "$tool --tty pts/3,115200" "$tool --tty pts/3,11"
expect_line "$tool --cmd \"thermal" "$tool --cmd \"therm"
expect_line "$tool --cmd \"rrl 0; thermal" "$tool --cmd \"rrl 0; therm"
expect_line "$tool --cmd \"help thermal" "$tool --cmd \"help therm"
expect_line "$tool --cmd=rrl\\ 0\\;\\ thermal" "$tool --cmd='rrl 0; therm"
expect_line "$tool --cmd=\\?\\ thermal" "$tool --cmd=\"? therm"
expect_line "$tool --cmd \"thermal" "$tool --cmd \"THERM"
expect_line "$tool -cthermal" "$tool -ctherm"
expect_line "$tool --cmd \"rrl therm" "$tool --cmd \"rrl therm"
expect_line "vek_board --once" "vek_board --on"
expect_line "vek_describe --check" "vek_describe --ch"

mapfile -t completed < <(printf '%s\n' "${typed[@]}" | timeout 60 zsh -f "$here/complete_lines.zsh")
for index in "${!typed[@]}"; do
    expect_equal "${typed[index]}" "${expected[index]}" "${completed[index]-}"
done
finish
