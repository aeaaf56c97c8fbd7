#!/bin/bash
# Man pages and completions tell everything that the programs and the library know: commands, options, functions.
# shellcheck source=tests/packaging/support.sh
source "$(dirname "$0")/support.sh"
man=$BUILD/man
completions=$BUILD/completions
export LC_ALL=C

# The commands that the console lists, with the aliases, and those that its list leaves out.
commands=$("$BUILD/tovira_util_tool" --cmd help | sed -n 's/^\([^\t]*\)\t- .*/\1/p' | tr / '\n'; printf '%s\n' query spi vlot clk)
((($(wc -l <<<"$commands")) >= 100)) || fail "the console lists too few commands"
# shellcheck disable=SC2154
bash_names=$(source "$completions/tovira_util_tool.bash" && grep . <<<"$_tovira_util_tool_commands")
zsh_names=$(sed -n "s/^'\([^:]*\):.*'\$/\1/p" "$completions/_tovira_util_tool")
page_names=$(sed -n 's/^\.SS //p' "$man/tovira_commands.7" | tr -d ' ' | tr , '\n')
expected=$(sort -u <<<"$commands")
expect_equal "commands in the completion for bash" "$expected" "$(sort -u <<<"$bash_names")"
expect_equal "commands in the completion for zsh" "$expected" "$(sort -u <<<"$zsh_names")"
expect_equal "commands in tovira_commands(7)" "$expected" "$(sort -u <<<"$page_names")"

# Every command's brief and usage text, as the console prints it, stands in the page.
rendered=$(sed -e 's/\\-/-/g; s/\\(aq/'"'"'/g; s/\\(rs/\\/g; s/\\(ti/~/g; s/^\\&//; s/\\\[uFF1A\]/：/g' "$man/tovira_commands.7")
{
    # As many at a time as a line holds.
    while mapfile -t -n 10 names && ((${#names[@]} > 0)); do
        printf -v line 'help %s;' "${names[@]}"
        # The aliased rows print their help indented.
        "$BUILD/tovira_util_tool" --cmd "${line%;}" | sed -e 1d -e "s/^[^\t ]*\t \{0,1\}//"
    done <<<"$commands"
} >"$scratch/help"
while IFS= read -r line; do
    line=${line#"${line%%[![:blank:]]*}"}
    [[ -z ${line// /} || $rendered == *"$line"* ]] || fail "tovira_commands(7) does not say: $line"
done <"$scratch/help"
(($(wc -l <"$scratch/help") > 300)) || fail "the console explains too little"

# options PROGRAM: the long options of its usage text.
options()
{
    "$BUILD/$1" --help | grep -o -e '--[a-z][a-z]*' | sort -u
}
for program in tovira_util_tool vek_board vek_describe; do
    for option in $(options "$program") --help; do
        word=${option#--}
        for file in "$man/$program.1" {"$completions","$SOURCE/completions"}/{"$program.bash","_$program"}; do
            [[ ! -f $file ]] || grep -q -e "\(--\|\\\\-\\\\-\)$word" "$file" || fail "${file##*/} has no $option"
        done
    done
done

# Every exported function, and every constant with its value.
while read -r name value; do
    if [[ $value ]]; then
        grep -Eq "^\.B $name = .*" "$man/libutil_vek.3" || fail "libutil_vek(3) does not tell the value of $name"
    else
        grep -q "^\.B .*\b$name(.*;\$" "$man/libutil_vek.3" || fail "libutil_vek(3) does not describe $name"
    fi
done < <(sed -n 's/^exported //p; s/^enum [^:]*: \([A-Z0-9_]*\) = /\1 /p' "$SOURCE/include/libutil_vek.abi")

# The documents have become pages, which name one another as such.
expect_equal "pages that name documents" "" "$(grep -l '\.md\b' "$man"/*.[1-9] || true)"
for page in "$man"/*.[1-9]; do
    while read -r name section; do
        [[ -f $man/$name.$section ]] || fail "${page##*/} names $name($section)"
    done < <(sed -n 's/^\.BR \([a-z_]*vek[a-z_]*\|tovira_[a-z]*\) (\([1-9]\)).*/\1 \2/p' "$page")
done
finish
