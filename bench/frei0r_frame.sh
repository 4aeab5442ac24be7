#!/usr/bin/env bash
# Times one 1920 x 1080 8-bit frame through ffmpeg's frei0r filter (lumenveil.so)
# against `lumenveil render` of the same frame with the same values and engine,
# in one run, each timed ROUNDS times (default 5) and the medians taken, since
# a shared machine's speed drifts. The filter's own time is ffmpeg's run with
# it less ffmpeg's run of the same frame without it (reading the picture,
# converting it to R G B A, a null output); the tool's time is its whole run.
#
#   bench/frei0r_frame.sh [ROUNDS]
#
# TOOL and FILTER_DIR name the build's tool and frei0r folder (defaults under
# build/release); WORK the scratch directory (default build/frei0r-bench).
set -euo pipefail

rounds=${1:-5}
root=$(cd "$(dirname "$0")/.." && pwd)
tool=${TOOL:-$root/build/release/tools/lumenveil/lumenveil}
filters=${FILTER_DIR:-$root/build/release/frei0r-1}
work=${WORK:-$root/build/frei0r-bench}
mkdir -p "$work"
[ -x "$tool" ] && [ -f "$filters/lumenveil.so" ] || { echo "frei0r_frame: build first (make build)" >&2; exit 1; }

ffmpeg -v error -y -f lavfi -i testsrc2=s=1920x1080 -frames:v 1 -pix_fmt rgba "$work/frame.png"
# A hexagon of radius 0.02 (38 px) at bright emphasis 80, the fast engine
# (the filter's default), in both.
params="|polygon|y|0.02|0.02|0.17647058823529413|0.5|0.797979797979798"
options="--engine fast --shape polygon --radius-x 0.02 --sides 6 --bright-emphasis 80"

seconds() { local start end; start=$(date +%s.%N); "$@" >/dev/null 2>&1; end=$(date +%s.%N); awk "BEGIN { print $end - $start }"; }
median() { sort -g | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'; }

for ((i = 0; i < rounds; i++)); do
  FREI0R_PATH=$filters seconds ffmpeg -v error -y -i "$work/frame.png" \
    -vf "frei0r=filter_name=lumenveil:filter_params='$params'" -f null - >>"$work/with.txt"
  seconds ffmpeg -v error -y -i "$work/frame.png" -vf format=rgba -f null - >>"$work/without.txt"
  seconds "$tool" render -q "$work/frame.png" -o "$work/tool.tif" --compression none $options >>"$work/tool.txt"
done
with=$(median <"$work/with.txt"); without=$(median <"$work/without.txt"); toolTime=$(median <"$work/tool.txt")
rm -f "$work"/{with,without,tool}.txt
filter=$(awk "BEGIN { print $with - $without }")
printf 'ffmpeg with the filter   %.3f s\nffmpeg without it        %.3f s\nthe filter               %.3f s\n' \
  "$with" "$without" "$filter"
printf 'lumenveil render         %.3f s\nfilter / tool            %.1f%%\n' "$toolTime" \
  "$(awk "BEGIN { print 100 * $filter / $toolTime }")"
