#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 Tolm
# SPDX-License-Identifier: AGPL-3.0-only

# Cross-builds the command-line tool for Windows with MinGW and lets it play a song under Wine: the MIDI file has to be
# this system's, byte for byte, and no sample of the sound more than 1.2e-7 away. Usage: windows_tool.sh pulsewright-cli
set -euo pipefail
tool=$(realpath "$1")
cd "$(dirname "${BASH_SOURCE[0]}")/../.."

scratch=$(mktemp -d)
export WINEPREFIX=$scratch/wine WINEDEBUG=-all WINEDLLOVERRIDES='mscoree,mshtml='
trap 'wineserver -k 2> /dev/null || true; rm -rf "$scratch"' EXIT
unset DISPLAY

mkdir "$scratch/include" # headers alone: the rest of this system's are not for Windows
ln -s /usr/include/{CLI,nlohmann,xsimd} "$scratch/include"

for source in source/generation/*.cpp source/export/MidiFile{Reader,Writer}.cpp source/{preset,search,vectors}/*.cpp source/processor/{playback,kit,audition}/*.cpp tools/{Progress,WavFile}.cpp tools/cli/*.cpp; do
    vectors=()
    case $source in
        */OutputFile.cpp|*/Program.cpp) continue ;;
        *Avx2.cpp)   vectors=(-mavx2 -mfma) ;;
        *Avx512.cpp) vectors=(-mavx512f -mavx512bw -mavx512cd -mavx512dq -mfma) ;;
    esac
    x86_64-w64-mingw32-g++-posix -std=c++20 -O2 -ffp-contract=off -Isource -Itools -isystem "$scratch/include" -DPULSEWRIGHT_X86_KERNELS=1 \
        '-DPULSEWRIGHT_VERSION="Windows"' "${vectors[@]}" -c "$source" -o "$scratch/$(basename "$source").o"
done

x86_64-w64-mingw32-g++-posix -static "$scratch"/*.o -o "$scratch/tool.exe"
cd "$scratch"
options=(song --genre dub --take 3 --duration 2:00 --kit Dusty)
wine ./tool.exe "${options[@]}" --midi theirs.mid --wav theirs.wav
"$tool" "${options[@]}" --midi ours.mid --wav ours.wav
cmp theirs.mid ours.mid

python3 - theirs.wav ours.wav <<'PYTHON'
import array, sys
theirs, ours = (array.array("f", open(name, "rb").read()[58:]) for name in sys.argv[1:])
farthest = max(abs(a - b) for a, b in zip(theirs, ours, strict=True))
print(f"The tool for Windows, under Wine: the same MIDI file, and {len(ours)} samples at most {farthest:.1e} away")
sys.exit(farthest > 1.2e-7)
PYTHON
