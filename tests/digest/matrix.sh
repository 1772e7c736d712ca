#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 Tolm
# SPDX-License-Identifier: AGPL-3.0-only

# Builds the music digest with every compiler, and for every processor and system that this machine can
# play, and holds each against tests/data/music-digest.txt. Exits with 1 when the music differs somewhere;
# where a tool is not installed, the cell says so and does not count.
#
# Usage: matrix.sh [--install | --packages]
#   --install   installs what is missing first (Debian, as root)
#   --packages  only prints the packages that the whole matrix takes
set -u -o pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.." || exit 2

readonly packages=(
    g++ clang libc++-dev libc++abi-dev locales g++-aarch64-linux-gnu g++-s390x-linux-gnu qemu-user
    g++-mingw-w64-x86-64-posix wine wine64)

install_all() {
    { apt-get update -q && DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends "${packages[@]}"; } > /dev/null
}

case "${1:-}" in
    "") ;;
    --packages) printf '%s\n' "${packages[@]}"; exit 0 ;;
    --install)  install_all || exit 2 ;;
    *)          sed -n '/^# Usage/,/^set/ s/^# //p' "${BASH_SOURCE[0]}" >&2; exit 2 ;;
esac

# What the build compiles with: the language, and the flag that the music hangs on.
readonly flags=(-std=c++20 -ffp-contract=off -Isource)
readonly sources=(tests/support/MusicDigest.cpp source/generation/*.cpp source/export/MidiFileWriter.cpp)
readonly expected=$PWD/tests/data/music-digest.txt

scratch=$(mktemp -d) || exit 2
readonly scratch
export WINEPREFIX=$scratch/wine WINEDEBUG=-all WINEDLLOVERRIDES='mscoree,mshtml='
trap 'wineserver -k 2> /dev/null; rm -rf "$scratch"' EXIT
unset DISPLAY

# A program this small builds and runs wherever a compiler, its library and the emulator are there.
printf '#include <random>\nint main() { return static_cast<int> (std::mt19937 (1) () & 0u); }\n' > "$scratch/probe.cpp"

#===============================================================================
wrong=0

row() { printf '%-34s %-20s %4s\n' "$@"; }

# ended CELL WANTED RESULT: one row, and under it what the program or the compiler had to say, if it is wrong.
ended() {
    local cell=$1 wanted=$2 result=$3

    if [ "$result" != "$wanted" ]; then
        wrong=1
        row "$cell" "${result^^}" "$SECONDS s"
        { grep -v -x -F -f "$expected" "$scratch/digest"; [ "$result" = differs ] || tail -n 5 "$scratch/log"; } | sed 's/^/    /'
    elif [ "$wanted" = differs ]; then
        row "$cell" "differs, as it must" "$SECONDS s"
    else
        row "$cell" "$result" "$SECONDS s"
    fi
}

# run CELL WANTED COMMAND...: in the scratch folder, for the program writes a file.
run() {
    local cell=$1 wanted=$2 status; shift 2
    (cd "$scratch" && "$@" "$expected") > "$scratch/output" 2> "$scratch/log"
    status=$?
    tr -d '\r' < "$scratch/output" > "$scratch/digest"

    if [ $status -gt 1 ]; then
        ended "$cell" "$wanted" "failed, $status"
    elif cmp -s "$scratch/digest" "$expected"; then
        ended "$cell" "$wanted" equal
    else
        ended "$cell" "$wanted" differs
    fi
}

# cell NAME WANTED RUNNER COMPILER FLAG...
cell() {
    local name=$1 wanted=$2 runner=$3; shift 3
    SECONDS=0
    rm -f "$scratch"/*.exe
    : > "$scratch/digest"

    if ! { "$@" "$scratch/probe.cpp" -o "$scratch/probe.exe" && (cd "$scratch" && $runner ./probe.exe); } > "$scratch/log" 2>&1; then
        row "$name" "not available" ""
    elif ! "$@" "${sources[@]}" -o "$scratch/program.exe" > "$scratch/log" 2>&1; then
        ended "$name" "$wanted" "not built"
    else
        run "$name" "$wanted" $runner ./program.exe
    fi
}

made_locale() { [ "$1" = C ] || localedef -i "${1%.*}" -f "${1#*.}" "$scratch/$1"; }

# locale_cell NAME: in a locale that is made here, so that it need not be installed.
locale_cell() {
    local name=$1
    SECONDS=0

    if [ ! -x "$scratch/program.exe" ] || ! made_locale "$name" > "$scratch/log" 2>&1; then
        row "locale $name" "not available" ""
        return
    fi

    run "locale $name" equal env LOCPATH="$scratch" LC_ALL="$name" ./program.exe --locale
    grep -q "^locale $name," "$scratch/log" || ended "" equal "not in the locale"
}

#===============================================================================
row "built for, with" result ""
printf '%.0s-' {1..60}; echo

for options in "-O0" "-O2" "-O3" "-O3 -march=native"; do
    cell "GCC $options"   equal "" g++ "${flags[@]}" $options
    cell "Clang $options" equal "" clang++ "${flags[@]}" $options
done

cell "Clang -O2, libc++" equal "" clang++ "${flags[@]}" -O2 -stdlib=libc++

for options in "-O2" "-O3"; do
    cell "64-bit Arm, GCC $options"        equal qemu-aarch64 aarch64-linux-gnu-g++ "${flags[@]}" $options -static
    cell "s390x, big-endian, GCC $options" equal qemu-s390x   s390x-linux-gnu-g++ "${flags[@]}" $options -static
    cell "Windows, MinGW $options"         equal wine         x86_64-w64-mingw32-g++-posix "${flags[@]}" $options -static
done

cell "64-bit Arm, Clang -O3"        equal qemu-aarch64 clang++ --target=aarch64-linux-gnu "${flags[@]}" -O3 -static
cell "s390x, big-endian, Clang -O3" equal qemu-s390x   clang++ --target=s390x-linux-gnu "${flags[@]}" -O3 -static

# The digest has to see a single rounding left out; otherwise the rows above say nothing.
cell "64-bit Arm, fused multiply-add" differs qemu-aarch64 aarch64-linux-gnu-g++ "${flags[@]}" -ffp-contract=fast -O3 -static

cell "GCC -O3, for the locales" equal "" g++ "${flags[@]}" -O3
for name in C de_DE.UTF-8 tr_TR.UTF-8; do
    locale_cell "$name"
done

exit $wrong
