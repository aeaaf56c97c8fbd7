# shellcheck shell=bash
# What the tests of this folder share. They run with SOURCE, BUILD, CMAKE, CXX and INSTRUMENTED in the environment.
set -euo pipefail

# shellcheck disable=SC2034
here=$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")
failures=0
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
trap 'printf "STOPPED at line %s: %s\n" "$LINENO" "$BASH_COMMAND" >&2' ERR

fail()
{
    printf 'FAILED: %s\n' "$*" >&2
    failures=$((failures + 1))
}

# needs PROGRAM PACKAGE: skips the test without the program.
needs()
{
    command -v "$1" >/dev/null && return
    printf 'SKIPPED: there is no %s on this machine; it comes with the package %s\n' "$1" "$2" >&2
    exit 77
}

# expect_equal WHAT EXPECTED ACTUAL
expect_equal()
{
    [[ $2 == "$3" ]] || fail "$1: expected '$2', found '$3'"
}

finish()
{
    ((failures == 0)) || exit 1
}
