#!/bin/bash
# The man pages are sound.
# shellcheck source=tests/packaging/support.sh
source "$(dirname "$0")/support.sh"
pages=("$BUILD"/man/*.[1-9])
((${#pages[@]} >= 7)) || fail "there are only ${#pages[@]} pages"
needs man man-db

for page in "${pages[@]}"; do
    findings=$(LC_ALL=C.UTF-8 MANROFFSEQ='' MANWIDTH=80 man --warnings -E UTF-8 -l -Tutf8 -Z "$page" 2>&1 >/dev/null || true)
    expect_equal "${page##*/}" "" "$findings"
    if command -v mandoc >/dev/null; then
        expect_equal "${page##*/} in mandoc" "" "$(mandoc -Tlint -W warning "$page" || true)"
    fi
    grep -q '^\.SH NAME' "$page" || fail "${page##*/} has no name"
    if grep -n '@[a-z -]*@' "$page"; then
        fail "${page##*/} has a place that is not filled"
    fi
done
finish
