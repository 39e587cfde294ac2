#!/usr/bin/env bash
# Runs one Windows test program under Wine for ctest: wine-run.sh WINE PROGRAM ARGS...
#
# Now and then (twice in some 6,000 test runs) Wine ends a process before the
# program's own code starts: a non-zero status within a fraction of a second
# and nothing on standard output, where every test program prints its
# heading first. That is the platform failing to start the program, not a
# test failing, so such a start is tried again (twice at most) and said on
# standard error. A program that did write anything, or ran for a second or
# more, keeps its status, whatever it is.
set -u
wine=$1
shift
output=$(mktemp)
status_file=$(mktemp)
trap 'rm -f "$output" "$status_file"' EXIT

for attempt in 1 2 3; do
  started=$(date +%s%N)
  { "$wine" "$@"; echo $? >"$status_file"; } | tee "$output"
  status=$(cat "$status_file")
  elapsed_ms=$((($(date +%s%N) - started) / 1000000))
  if [[ $status != 0 && ! -s $output && $elapsed_ms -lt 1000 && $attempt -lt 3 ]]; then
    echo "wine-run: Wine ended the program with status $status after $elapsed_ms ms, before it wrote anything; starting it again" >&2
    continue
  fi
  exit "$status"
done
