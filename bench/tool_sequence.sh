#!/usr/bin/env bash
# Times `lumenveil render` on a full-HD 16-bit TIFF sequence and sets its frame rate
# beside the engine's steady-state Run benchmark (four channels) and the
# effect's Execute on float frames, both timed before and after the tool and
# averaged, since a shared machine's speed drifts. The tool reads the next
# frame and writes the last one while the current one renders, so file work
# should keep it at 80% of the engine's rate or above.
#
#   bench/tool_sequence.sh [FRAMES [TOOL OPTIONS...]]   (default 100 frames)
#
# Frames are written as uncompressed 16-bit TIFF unless the options say
# otherwise: `bench/tool_sequence.sh 100 --compression zip` times the TIFF
# writer's default compression, which competes with the engine for the cores.
#
# TOOL and BENCH name the programs (defaults: build/release/...); WORK the
# scratch directory (default build/tool-bench). Without the benchmark program
# only the tool's rate is reported.
set -euo pipefail

frames=${1:-100}
shift $(( $# > 0 ? 1 : 0 ))
root=$(cd "$(dirname "$0")/.." && pwd)
tool=${TOOL:-$root/build/release/tools/lumenveil/lumenveil}
bench=${BENCH:-$root/build/release/bench/lumenveil_bench}
work=${WORK:-$root/build/tool-bench}

[ -x "$tool" ] || { echo "tool_sequence: no tool at $tool (make build)" >&2; exit 1; }
mkdir -p "$work/in" "$work/out"

# One 1920 x 1080 16-bit frame (an uncompressed RGB TIFF), linked as every
# frame of the sequence.
if [ ! -f "$work/frame.tif" ]; then
  python3 - "$work/frame.tif" <<'PY'
import struct, sys
w, h = 1920, 1080
row = bytearray()
for x in range(w):
    v = (x * 65535) // (w - 1)
    row += struct.pack("<HHH", v, 65535 - v, (v * 7) % 65536)
bright = bytes([255]) * len(row)  # a bright line now and then
data = b"".join(bright if y % 97 == 0 else bytes(row) for y in range(h))
# Header, then the pixels, then the three bits-per-sample values and the IFD.
bits_at = 8 + len(data)
ifd_at = bits_at + 6
tags = [(256, 3, 1, w), (257, 3, 1, h), (258, 3, 3, bits_at), (259, 3, 1, 1), (262, 3, 1, 2),
        (273, 4, 1, 8), (277, 3, 1, 3), (278, 3, 1, h), (279, 4, 1, len(data)), (284, 3, 1, 1)]
with open(sys.argv[1], "wb") as f:
    f.write(b"II*\0" + struct.pack("<I", ifd_at) + data + struct.pack("<HHH", 16, 16, 16))
    f.write(struct.pack("<H", len(tags)))
    for tag, kind, count, value in tags:
        f.write(struct.pack("<HHI", tag, kind, count) + struct.pack("<I" if kind == 4 or count > 1 else "<HH", *((value,) if kind == 4 or count > 1 else (value, 0))))
    f.write(struct.pack("<I", 0))
PY
fi
for ((i = 0; i < frames; i++)); do
  ln -f "$work/frame.tif" "$(printf '%s/in/f.%04d.tif' "$work" "$i")"
done
rm -f "$work"/out/*

# The engine's Run alone, and the effect's Execute on float host frames
# (what the tool hands a 16-bit file over in): the second adds the effect's
# own conversions, which the tool cannot avoid, and leaves the file work.
engine_timings() {
  "$bench" --benchmark_filter='BM_EngineRun/mask:15/threads:1/|BM_Execute/rgba_float' \
           --benchmark_format=csv 2>/dev/null |
    awk -F, '/BM_EngineRun/ && !run { run = $3 } /BM_Execute/ && !ex { ex = $3 } END { print run, ex }'
}
[ -x "$bench" ] && before=$(engine_timings)

options=("$@")
[[ " $* " == *" --compression "* ]] || options+=(--compression none)
start=$(date +%s.%N)
"$tool" render "$work/in/f.%04d.tif" -o "$work/out/f.%04d.tif" --frames "0-$((frames - 1))" --depth 16 --quiet \
  "${options[@]}"
end=$(date +%s.%N)
tool_fps=$(python3 -c "print(f'{$frames / ($end - $start):.3f}')")
echo "tool:   $frames frames in $(python3 -c "print(f'{$end - $start:.1f}')") s, $tool_fps frames/s"

if [ -x "$bench" ]; then
  after=$(engine_timings)
  python3 - "$tool_fps" $before $after <<'PY'
import sys
tool = float(sys.argv[1])
run_before, execute_before, run_after, execute_after = map(float, sys.argv[2:6])
for name, a, b in (("engine Run", run_before, run_after), ("effect Execute", execute_before, execute_after)):
    ms = (a + b) / 2
    print(f"{name + ':':16s}{ms:.1f} ms ({a:.1f} before, {b:.1f} after), {1000 / ms:.3f} frames/s; "
          f"tool / it: {tool * ms / 1000:.0%}")
print("target: the tool at 80% of the engine's rate or more")
PY
else
  echo "engine: no benchmark program at $bench (make bench builds it)"
fi
