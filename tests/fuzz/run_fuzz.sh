#!/bin/sh
# Runs one fuzz target of BUILD_DIR: first over every input of its corpus in
# tests/fuzz/corpus/NAME (the kept regressions among them), then for SECONDS
# of fuzzing from that corpus. New inputs go to BUILD_DIR/fuzz-work/NAME,
# never into the source tree; a finding is left there as crash-*, leak-*,
# timeout-* or oom-*, and the run fails. Prints the executions it made.
#   run_fuzz.sh BUILD_DIR NAME SECONDS
set -eu
build=$1 name=$2 seconds=$3
here=$(cd "$(dirname "$0")" && pwd)
program=$build/tests/fuzz/fuzz_$name
corpus=$here/corpus/$name
work=$build/fuzz-work/$name
# A hang is an input that takes this long; memory above this is a finding too.
unit_timeout=10
# A --frames list of ten million frames, the most a run takes, is built and
# sorted in some 15 s under the instrumentation: not a hang.
if [ "$name" = frame_pattern ]; then
  unit_timeout=60
fi
rss_limit_mb=2048
mkdir -p "$work/found"
# Sanitizer reports go to files of their own: the tool's reading sends
# stderr to /dev/null while a reader runs, where a report would be lost.
rm -f "$work"/sanitizer.*
export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1}:log_path=$work/sanitizer
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-halt_on_error=1:print_stacktrace=1}:log_path=$work/sanitizer
log=$work/log.txt

# The end of the log and any sanitizer report, after a failure.
show() {
  tail -n 40 "$log"
  cat "$work"/sanitizer.* 2>/dev/null | head -n 80
}

# Every kept input once.
if ! "$program" -timeout=$unit_timeout -rss_limit_mb=$rss_limit_mb "$corpus"/* >"$log" 2>&1; then
  show
  echo "fuzz_$name: an input of $corpus fails (log: $log)" >&2
  exit 1
fi
# Fuzzing for the set time.
if ! "$program" -max_total_time="$seconds" -timeout=$unit_timeout -rss_limit_mb=$rss_limit_mb \
     -print_final_stats=1 -artifact_prefix="$work/" "$work/found" "$corpus" >"$log" 2>&1; then
  show
  echo "fuzz_$name: finding after fuzzing; the input is in $work (log: $log)" >&2
  exit 1
fi
runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
echo "fuzz_$name: $seconds s clean, $runs executions"
