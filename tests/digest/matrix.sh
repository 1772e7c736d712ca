#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 Tolm
# SPDX-License-Identifier: AGPL-3.0-only

# Builds the music digest with every compiler, and for every processor and system that this machine can
# play, and holds each against tests/data/music-digest.txt. Exits with 1 when the music differs somewhere;
# where a tool is not installed, the cell says so and does not count.
#
# Usage: matrix.sh [--packages]
#   --packages  only prints the packages of Debian's that the whole matrix takes
set -u -o pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.." || exit 2

readonly packages=(
    g++ clang clang-19 libc++-19-dev libc++abi-19-dev locales g++-aarch64-linux-gnu g++-s390x-linux-gnu qemu-user
    g++-mingw-w64-x86-64-posix wine wine64 emscripten)

case "${1:-}" in
    "") ;;
    --packages) printf '%s\n' "${packages[@]}"; exit 0 ;;
    *) echo "usage: matrix.sh [--packages]" >&2; exit 2 ;;
esac

# What the build compiles with: the language, and the flag that keeps the music the same everywhere.
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

row() { printf '%-34s %-20s %4s\n' "$1" "$2" "$SECONDS s"; }

# run CELL WANTED COMMAND...: one row, and under it what the program had to say, if it is wrong. In the scratch folder, for
# the program writes a file.
run() {
    local cell=$1 wanted=$2 result=equal; shift 2
    (cd "$scratch" && "$@") > "$scratch/output" 2> "$scratch/log" || result="failed, $?"
    tr -d '\r' < "$scratch/output" > "$scratch/digest"
    [ "$result" != equal ] || cmp -s "$scratch/digest" "$expected" || result=differs

    if [ "$result" != "$wanted" ]; then
        wrong=1
        row "$cell" "${result^^}"
        { grep -v -x -F -f "$expected" "$scratch/digest"; tail -n 5 "$scratch/log"; } | sed 's/^/    /'
    else
        row "$cell" "$result$([ "$wanted" = equal ] || echo ", as it must")"
    fi
}

# cell NAME WANTED RUNNER COMPILER FLAG...
cell() {
    local name=$1 wanted=$2 runner=$3; shift 3
    SECONDS=0
    rm -f "$scratch"/*.exe

    if ! { "$@" "$scratch/probe.cpp" -o "$scratch/probe.exe" && (cd "$scratch" && $runner ./probe.exe); } > "$scratch/log" 2>&1; then
        row "$name" "not available"
    else
        run "$name" "$wanted" sh -c 'runner=$1; shift; cd "$0" && "$@" && cd - > /dev/null && $runner ./program.exe' \
            "$PWD" "$runner" "$@" "${sources[@]}" -o "$scratch/program.exe"
    fi
}

# locale_cell NAME: in a locale that is made here, so that it need not be installed.
locale_cell() {
    SECONDS=0
    [ "$1" = C ] || localedef -i "${1%.*}" -f "${1#*.}" "$scratch/$1" > "$scratch/log" 2>&1 || { row "locale $1" "not available"; return; }
    run "locale $1" equal env LOCPATH="$scratch" LC_ALL="$1" ./program.exe --locale
    grep -q "^locale $1," "$scratch/log" || { wrong=1; row "locale $1" "NOT IN THE LOCALE"; }
}

#===============================================================================
printf '%-34s %s\n' "built for, with" result
printf '%.0s-' {1..60}; echo

for options in "-O0" "-O2" "-O3" "-O3 -march=native"; do
    cell "GCC $options"   equal "" g++ "${flags[@]}" $options
    cell "Clang $options" equal "" clang++ "${flags[@]}" $options
done

cell "Clang 19 -O2, libc++" equal "" clang++-19 "${flags[@]}" -O2 -stdlib=libc++

for options in "-O2" "-O3"; do
    cell "64-bit Arm, GCC $options"        equal qemu-aarch64 aarch64-linux-gnu-g++ "${flags[@]}" $options -static
    cell "s390x, big-endian, GCC $options" equal qemu-s390x   s390x-linux-gnu-g++ "${flags[@]}" $options -static
    cell "Windows, MinGW $options"         equal wine         x86_64-w64-mingw32-g++-posix "${flags[@]}" $options -static
done

cell "64-bit Arm, Clang -O3"        equal qemu-aarch64 clang++ --target=aarch64-linux-gnu "${flags[@]}" -O3 -static
cell "s390x, big-endian, Clang -O3" equal qemu-s390x   clang++ --target=s390x-linux-gnu "${flags[@]}" -O3 -static

# A browser's machine. Its compiler is in part JavaScript, with modules from Debian's folder.
export NODE_PATH=/usr/share/nodejs
for options in "-O2" "-O3 -msimd128 -msse2"; do
    cell "WebAssembly, Emscripten $options" equal "node --no-experimental-fetch" em++ "${flags[@]}" $options
done

# The digest has to see a single rounding left out; otherwise the rows above say nothing.
cell "64-bit Arm, fused multiply-add" differs qemu-aarch64 aarch64-linux-gnu-g++ "${flags[@]}" -ffp-contract=fast -O3 -static

cell "GCC -O3, for the locales" equal "" g++ "${flags[@]}" -O3
for name in C de_DE.UTF-8 tr_TR.UTF-8; do
    locale_cell "$name"
done

exit $wrong
