#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 Tolm
# SPDX-License-Identifier: AGPL-3.0-only

# Reads our own sources with clang-tidy and cppcheck; fails when one of them finds anything.
# Usage: run.sh <build folder, configured> [source file...]
set -euo pipefail
readonly folders=(source tools tests benchmarks fuzz)

build=$(realpath "${1:?usage: run.sh BUILD [FILE...]}"); shift
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd -P)

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# What GCC alone knows is an error to clang-tidy.
sed 's/ -fno-gnu-unique\b//g' "$build/compile_commands.json" > "$scratch/compile_commands.json"

# clang-tidy: what the build folder compiles of ours, or what of it was asked for.
cd "$root"
sed -n 's/^ *"file": "\(.*\)",\{0,1\}$/\1/p' "$scratch/compile_commands.json" | sort -u | sed -n "s|^$root/||p" |
    grep -E "^($(IFS='|'; echo "${folders[*]}"))/" > "$scratch/compiled" || { echo "run.sh: $build compiles nothing of ours" >&2; exit 2; }

if [ $# -gt 0 ]; then
    realpath --relative-to=. "$@" | sort -u > "$scratch/wanted"
    comm -23 "$scratch/wanted" "$scratch/compiled" | sed 's/^/run.sh: not compiled there: /' >&2
    comm -12 "$scratch/wanted" "$scratch/compiled" > "$scratch/files"
    [ "$(wc -l < "$scratch/files")" = "$(wc -l < "$scratch/wanted")" ] || exit 2
else
    cp "$scratch/compiled" "$scratch/files"
fi

tidy_one() {
    clang-tidy -p "$1" --quiet --extra-arg=-Wno-unknown-warning-option "$PWD/$2" > "$1/$$.found" 2> "$1/$$.errors" ||
        { [ -s "$1/$$.found" ] || cat "$1/$$.errors" > "$1/$$.found"; mv "$1/$$.found" "$1/$$.failed"; }
}
export -f tidy_one
xargs -P "$(nproc)" -I{} bash -c 'tidy_one "$@"' _ "$scratch" {} < "$scratch/files"

failed=0

if compgen -G "$scratch/*.failed" > /dev/null; then
    failed=1
    # A header's findings come with each file that includes it, and are told once.
    cat "$scratch"/*.failed | sed "s|^$root/||" | awk '/^[^ ]+:[0-9]+:[0-9]+: (warning|error): / { told = seen[$0]++ } ! told'
fi

# cppcheck: the same files as they stand, without the libraries' headers, of which it knows what it has to.
files=("${folders[@]}")
[ $# -eq 0 ] || mapfile -t files < "$scratch/files"
cppcheck --quiet --std=c++20 --language=c++ --library=googletest --enable=warning,performance,portability,style \
         --inline-suppr --suppressions-list=.cppcheck-suppressions --error-exitcode=1 "${folders[@]/#/-I}" "${files[@]}" || failed=1

[ "$failed" = 1 ] || echo "clang-tidy and cppcheck: $(wc -l < "$scratch/files") files, nothing found"
exit "$failed"
