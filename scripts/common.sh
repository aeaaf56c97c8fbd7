# shellcheck shell=bash
# What ./run and ./check share: the project's root, messages, packages, locks and builds.

root=$(dirname "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")")
logs=$root/build/logs

# Progress goes to standard error: standard output belongs to the console and to the tests.
say()
{
    printf '%s: %s\n' "${0##*/}" "$*" >&2
}

die()
{
    say "$*"
    exit 1
}

# quietly NAME COMMAND...: runs the command into build/logs/NAME.log and shows the end of that file if it fails.
quietly()
{
    local log=$logs/$1.log
    shift
    "$@" >"$log" 2>&1 </dev/null && return
    tail -n 60 "$log" >&2
    return 1
}

# take_lock NAME: one holder at a time for a part of build/, until the process ends or file descriptor 9 is closed.
take_lock()
{
    { mkdir -p "$logs" && exec 9>"$root/build/$1.lock"; } 2>/dev/null ||
        die "cannot write to $root/build; copy the whole folder to a place of your own, and start it there"
    flock -n 9 && return
    say "waiting for another $1 in $root/build"
    flock 9
}

# missing_packages PACKAGE...: prints those that are not installed.
missing_packages()
{
    local installed package
    installed=$'\n'$(dpkg-query -W -f='${db:Status-Status} ${Package}\n' "$@" 2>/dev/null)$'\n' || true
    for package in "$@"; do
        [[ $installed == *$'\n'"installed $package"$'\n'* ]] || printf '%s ' "$package"
    done
}

# The package manager, one process of ours at a time on the whole machine: not all of its own locks can wait.
apt_get()
{
    quietly packages env DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8 flock /var/lib/dpkg \
        apt-get -y -o DPkg::Lock::Timeout=600 -o Acquire::Retries=3 "$@" 9>&-
}

# ensure_packages PACKAGE...: installs what is missing, and touches the package manager only then.
ensure_packages()
{
    command -v dpkg-query >/dev/null || die "this script knows Debian's packages only; see README.md to build by hand"
    local missing
    read -ra missing <<<"$(missing_packages "$@")"
    ((${#missing[@]})) || return 0
    if ((EUID != 0)); then
        say "missing packages: ${missing[*]}"
        die "install them with: sudo apt-get install --no-install-recommends ${missing[*]}"
    fi
    say "installing ${missing[*]}"
    apt_get update --error-on=any || say "the package lists could not be refreshed, going on with those at hand"
    apt_get install --no-install-recommends "${missing[@]}" || die "the packages could not be installed"
}

# Whether the preset's build folder was configured for this very tree and since the presets last changed.
is_configured()
{
    local build=$root/build/$1
    [[ -f $build/build.ninja && ! $root/CMakePresets.json -nt $build/build.ninja ]] &&
        grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$root" "$build/CMakeCache.txt"
}

# build_preset PRESET [TARGET...]: leaves build/PRESET up to date, or these targets of it.
build_preset()
{
    if ! is_configured "$1"; then
        say "configuring build/$1"
        quietly "$1" cmake -S "$root" --fresh --preset "$1" || return
    fi
    say "building build/$1"
    quietly "$1" cmake --build "$root/build/$1" ${2:+--target "${@:2}"} -- --quiet
}

# product_commands BUILD: the compiler commands of the product's own targets, out of those of the configured folder BUILD;
# tests may compile a source of the product once more.
product_commands()
{
    awk '
        /^{/ { entry = ""; ours = 0 }
        / -o (src|vek)\// { ours = 1 }
        { entry = entry "\n" $0 }
        /^}/ && ours { sub(/,$/, "", entry); printf "%s%s", count++ ? "," : "[", entry }
        END { print "\n]" }' "$1/compile_commands.json"
}
