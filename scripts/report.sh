#!/usr/bin/env bash
# Writes a system report of this machine as Wine shows it: the program runs
# in headless mode and report.txt lands in the directory make was started
# from (or the one given as first argument). Then the checker reads it back.
set -euo pipefail
target_dir=${1:-$PWD}
cd "$(dirname "$0")/.."
source scripts/wine-env.sh

trap wine_cleanup EXIT
display_start
wine_prefix_keep

report="$target_dir/report.txt"
status=0
wine build/bin/OrvaneDiagnostics.exe "$(winepath -w "$report")" </dev/null || status=$?
if ((status != 0)); then
  echo "The program could not write $report (exit status $status)." >&2
  exit "$status"
fi
echo "Report written: $report"
build-native/bin/reportcheck "$report"
