#!/bin/bash
# The library exports, and vek.h declares, what the kept list says. CONTRIBUTING.md tells how and when to update it.
# shellcheck source=tests/packaging/support.sh
source "$(dirname "$0")/support.sh"
needs readelf binutils

"$SOURCE/scripts/list-abi" "$BUILD" >"$scratch/now"
diff -u "$SOURCE/include/libutil_vek.abi" "$scratch/now" || fail "the binary interface is not the kept one"
grep -q '^exported vekRwOpen$' "$scratch/now" || fail "the list has no functions"
grep -q '^struct VekDisplayMode: 40 bytes' "$scratch/now" || fail "the list has no records"
finish
