#!/bin/bash
# Where only the compiler and CMake are installed, the tree can be configured and the console be built. A dry run of the
# build has to do here: packaging/check does it in earnest. It goes to folders that do not lie below one prefix.
# shellcheck source=tests/packaging/support.sh
source "$(dirname "$0")/support.sh"
needs ninja ninja-build

"$CMAKE" -S "$SOURCE" -B "$scratch/build" -G Ninja -DCMAKE_CXX_COMPILER="$CXX" -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_INSTALL_PREFIX=/opt/console -DCMAKE_INSTALL_LIBDIR=/opt/vek/lib \
    "-DCMAKE_IGNORE_PATH=/usr/include;/usr/local/include" >"$scratch/log" 2>&1 ||
    { cat "$scratch/log" && fail "the tree cannot be configured without toml++"; }
grep -q 'toml++ is missing' "$scratch/log" || fail "nothing tells that toml++ is missing"
"$CMAKE" --build "$scratch/build" -- -n >"$scratch/log" 2>&1 || { tail "$scratch/log" && fail "the build is not complete"; }
for output in tovira_util_tool libutil_vek.so vek_board tovira_commands.7; do
    grep -q "$output" "$scratch/log" || fail "$output is not built"
done
for output in libvek_description vek_describe.dir; do
    ! grep -q "$output" "$scratch/log" || fail "$output is built without toml++"
done
# shellcheck disable=SC2016
expect_equal "the pkg-config file's folders" '${pcfiledir}/../../../console /opt/vek/lib ${prefix}/include' \
    "$(sed -n 's/^[a-z]*=//p' "$scratch/build/libutil_vek.pc" | paste -sd ' ')"
grep -qF "ORIGIN/../../vek/lib" "$scratch/build/src/cmake_install.cmake" || fail "the programs look for the library in another folder"
finish
