#!/bin/bash
# An installation into any prefix works, serves others' builds, and goes away without a trace.
# shellcheck source=tests/packaging/support.sh
source "$(dirname "$0")/support.sh"
prefix=$scratch/a\ prefix
export LC_ALL=C

# The notes of an installation lie in the build folder. Those of one that somebody has made from it come back afterwards.
notes=("$BUILD"/install_{manifest,folders}.txt)
mkdir "$scratch/notes"
mv -t "$scratch/notes" "${notes[@]}" 2>/dev/null || true
trap 'rm -f "${notes[@]}"; mv -t "$BUILD" "$scratch/notes/"* 2>/dev/null || true; rm -rf "$scratch"' EXIT

uninstall()
{
    "$CMAKE" -D "BUILD_FOLDER=$BUILD" -P "$SOURCE/cmake/uninstall.cmake" >"$scratch/uninstall.log" 2>&1 ||
        fail "it does not uninstall"
}

# A folder that was there before stays.
mkdir -p "$prefix/share/man/man1"
find "$prefix" | sort >"$scratch/before"
"$CMAKE" --install "$BUILD" --prefix "$prefix" >"$scratch/install.log" || fail "it does not install"
[[ $("$prefix/bin/tovira_util_tool" --cmd "rrl 0") == *00000000:* ]] || fail "the installed program does not run"
"$prefix/bin/vek_describe" --check <("$prefix/bin/vek_describe") >/dev/null 2>&1 ||
    { "$prefix/bin/vek_describe" >"$scratch/cards.toml" && "$prefix/bin/vek_describe" --check "$scratch/cards.toml" >/dev/null; } ||
    fail "the installed library for descriptions is not found"
libdir=$(dirname "$(find "$prefix" -name libutil_vek.so)")

cat >"$scratch/consumer.cpp" <<'C'
#include <vek.h>

int main()
{
    return vekRwOpen(1) < 0 || get_device_id() != VEK_DEVICE_QZ202;
}
C
# An instrumented library takes the same flags.
if ((!INSTRUMENTED)); then
    if command -v pkg-config >/dev/null; then
        version=$(sed -n 's/^project(.* VERSION \([0-9.]*\) .*/\1/p' "$SOURCE/CMakeLists.txt")
        export PKG_CONFIG_PATH=$libdir/pkgconfig
        expect_equal "the version of the pkg-config file" "$version" "$(pkg-config --modversion libutil_vek)"
        # As build systems do, which know of blanks in names.
        eval "$CXX -O0 '$scratch/consumer.cpp' -o '$scratch/consumer' $(pkg-config --cflags --libs libutil_vek)" ||
            fail "a build with pkg-config fails"
        LD_LIBRARY_PATH=$libdir "$scratch/consumer" || fail "what pkg-config has built does not run"
    fi
    cat >"$scratch/CMakeLists.txt" <<'C'
cmake_minimum_required(VERSION 3.25)
project(consumer LANGUAGES CXX)
find_package(util_vek 0.1 REQUIRED)
add_executable(found consumer.cpp)
target_link_libraries(found PRIVATE util_vek::util_vek)
C
    { "$CMAKE" -S "$scratch" -B "$scratch/build" -DCMAKE_CXX_COMPILER="$CXX" -DCMAKE_PREFIX_PATH="$prefix" &&
        "$CMAKE" --build "$scratch/build"; } >"$scratch/cmake.log" || { cat "$scratch/cmake.log" && fail "a build with the CMake package fails"; }
    "$scratch/build/found" || fail "what the CMake package has built does not run"
fi

uninstall
find "$prefix" | sort >"$scratch/after"
diff "$scratch/before" "$scratch/after" || fail "the uninstallation has left or taken something"

# A second installation over a first one goes away whole, but for what others have put beside it.
for _ in first second; do
    "$CMAKE" --install "$BUILD" --prefix "$prefix" >"$scratch/install.log" || fail "it does not install again"
done
touch "$prefix/bin/.other"
uninstall
expect_equal "what is left with another's file" "$prefix/bin/.other" "$(find "$prefix" -type f)"

# A staged installation, into a folder that is not there yet. Nothing of the build's place is in what is installed.
cd "$scratch"
for staged in "$scratch/staged/deeper" relative/staged; do
    DESTDIR=$staged "$CMAKE" --install "$BUILD" --prefix /usr >"$scratch/install.log" || fail "it does not install to $staged"
    [[ -x $staged/usr/bin/tovira_util_tool ]] || fail "there is no program in $staged"
    expect_equal "files that tell where they were built" "" \
        "$( ((INSTRUMENTED)) || grep -rlF -e "$BUILD" -e "$SOURCE" "$staged" || true)"
    DESTDIR=$staged uninstall
    [[ ! -e ${staged%%/*} || $staged == /* ]] || fail "something is left in ${staged%%/*}"
    [[ ! -e $scratch/staged ]] || fail "something is left in $scratch/staged"
done
finish
