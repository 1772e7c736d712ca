#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 Tolm
# SPDX-License-Identifier: AGPL-3.0-only

# Runs every test of a coverage build and prints how many lines of the sources they have run, file by file.
# Fails when a folder falls short of the least share.
# Usage: report.sh <build folder of the preset "coverage"> [least per cent, 90 unless told]
set -euo pipefail
build=$(cd "$1" && pwd)
least=${2:-90}
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)

find "$build" -name '*.gcda' -delete
"$build/tests/pulsewright_core_tests" --gtest_brief=1
"$build/tests/pulsewright_plugin_tests" --gtest_brief=1
"$build/tests/pulsewright_cli_tests" --gtest_brief=1
"$root/tests/window/run.sh" "$build/tests/pulsewright_window_tests" --gtest_brief=1

# The kernels are compiled once for every kind of vectors, and a machine runs one of them: the lines of their
# template count as run when any of them has run them.
#
# GCC now and then works out a negative count for a branch, which gcovr takes for an error: lines are what is counted.
gcovr --root "$root" --filter "$root/source/(generation|export|processor)/" --gcov-ignore-parse-errors \
      --csv "$build/coverage.csv" --txt "$build/coverage.txt" "$build" 2> "$build/coverage.log" ||
    { tail -n 5 "$build/coverage.log" >&2; exit 2; }

awk -F, -v least="$least" '
    NR == 1 { next }
    {
        folder = $1
        sub ("/[^/]*$", "", folder)
        lines[folder] += $2
        run[folder] += $3
        files[folder] = files[folder] sprintf ("  %-52s %5d of %5d  %5.1f %%\n", $1, $3, $2, $2 ? 100 * $3 / $2 : 100)
    }
    END {
        for (i = split ("source/generation source/export source/processor", folders, " "); i > 0; --i) {
            folder = folders[i]
            share = lines[folder] ? 100 * run[folder] / lines[folder] : 0
            printf "%s%-54s %5d of %5d  %5.1f %%%s\n\n", files[folder], folder, run[folder], lines[folder], share, share < least ? "  TOO FEW" : ""
            failed += share < least
        }
        exit failed > 0
    }' "$build/coverage.csv"
