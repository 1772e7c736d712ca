#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 Tolm
# SPDX-License-Identifier: AGPL-3.0-only

# Runs every test of a coverage build and prints how many lines of the sources they have run, file by file.
# Fails when a folder falls short of the least share.
# Usage: report.sh <build folder of the preset "coverage"> [least per cent, by default 90]
set -euo pipefail
build=$(cd "$1" && pwd)
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
failed=0

find "$build" -name '*.gcda' -delete
for tests in core state plugin cli; do
    "$build/tests/pulsewright_${tests}_tests" --gtest_brief=1
done
"$root/tests/window/run.sh" "$build/tests/pulsewright_window_tests" --gtest_brief=1

# GCC now and then works out a negative count for a branch, which gcovr takes for an error: lines are what is counted.
gcovr --root "$root" --filter "$root/source/" --gcov-ignore-parse-errors --json "$build/coverage.json" "$build" 2> "$build/coverage.log" ||
    { tail -n 5 "$build/coverage.log" >&2; exit 2; }

for folder in generation preset export processor editor; do
    gcovr --root "$root" --filter "$root/source/$folder/" --add-tracefile "$build/coverage.json" --fail-under-line "${2:-90}" || failed=1
done
exit "$failed"
