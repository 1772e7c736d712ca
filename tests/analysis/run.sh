#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 Tolm
# SPDX-License-Identifier: AGPL-3.0-only

# Reads our own sources with clang-tidy and cppcheck; fails when one of them finds anything.
# Usage: run.sh <build folder, configured> [regular expression of files]
set -euo pipefail
readonly folders=(source tools tests benchmarks fuzz)

build=$(realpath "${1:?usage: run.sh BUILD [FILES]}")
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd -P)
files=${2:-"^$root/($(IFS='|'; echo "${folders[*]}"))/"}
failed=0
cd "$root"

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# What GCC alone knows is an error to clang-tidy.
sed 's/ -fno-gnu-unique\b//g' "$build/compile_commands.json" > "$scratch/compile_commands.json"

# A header's findings come with each file that includes it, and are told once.
run-clang-tidy -p "$scratch" -quiet -extra-arg=-Wno-unknown-warning-option "$files" > "$scratch/log" 2>&1 || failed=1
sed "s/\x1b\[[0-9;]*m//g; s|^$root/||" "$scratch/log" |
    awk '/^[^ ]+:[0-9]+:[0-9]+: (warning|error): / { shows = ! seen[$0]++ } /^clang-tidy|warnings? (generated|treated)/ { shows = 0 } shows'

# cppcheck: the sources as they stand, without the libraries' headers, of which it knows what it has to.
cppcheck --quiet --std=c++20 --language=c++ --library=googletest --enable=warning,performance,portability,style \
         --inline-suppr --suppressions-list=.cppcheck-suppressions --error-exitcode=1 "${folders[@]/#/-I}" "${folders[@]}" || failed=1

[ "$failed" = 1 ] || echo "clang-tidy and cppcheck: $(grep -c '^clang-tidy' "$scratch/log") files, nothing found"
exit "$failed"
