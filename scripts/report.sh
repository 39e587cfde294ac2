#!/usr/bin/env bash
# Writes a system report of this machine as Wine shows it: the program runs
# in headless mode and report.txt lands in the directory make was started
# from (or the one given as first argument). Then the checker reads it back.
set -euo pipefail
target_dir=${1:-$PWD}
cd "$(dirname "$0")/.."
source scripts/wine-env.sh

prefix=${DIAG_WINEPREFIX:-$HOME/.local/share/orvane-diagnostics/wineprefix}
trap wine_cleanup EXIT
display_start
if [[ ! -f "$prefix/system.reg" ]]; then
  echo "Preparing a Wine prefix in $prefix (once)..."
  mkdir -p "$prefix"
  wine_prefix_create "$prefix"
else
  export WINEPREFIX="$prefix"
  wineserver -p >/dev/null 2>&1 </dev/null
fi

report="$target_dir/report.txt"
status=0
wine build/bin/OrvaneDiagnostics.exe "$(winepath -w "$report")" </dev/null || status=$?
if ((status != 0)); then
  echo "The program could not write $report (exit status $status)." >&2
  exit "$status"
fi
echo "Report written: $report"
build-native/bin/reportcheck "$report"
