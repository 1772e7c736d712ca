#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 Tolm
# SPDX-License-Identifier: AGPL-3.0-only

# Runs the window tests on a display of their own, with a window manager.
# Usage: run.sh <pulsewright_window_tests> [its arguments]
set -eu
tests=$1; shift

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
export HOME=$scratch TMPDIR=$scratch LC_ALL=C.UTF-8

# Stands in for the program that shows the platform's save dialog; each test says what it does.
mkdir "$scratch/bin"
printf '#!/bin/sh\n. "%s/zenity-answer"\n' "$scratch" > "$scratch/bin/zenity"
chmod +x "$scratch/bin/zenity"
export PATH=$scratch/bin:$PATH

# The window manager has to be there first: it moves what it finds when it comes.
export READY=$scratch/ready
xvfb-run -a -s '-screen 0 1600x1200x24' sh -c '
    openbox --startup "touch $READY" &
    for _ in $(seq 600); do [ -e "$READY" ] && break; sleep 0.1; done
    "$@"' sh "$tests" "$@"
