#!/usr/bin/env bash
# reportcheck collect over many reports, side by side with sha256sum over the
# same files in the same run: the floor any tool that reads every byte meets.
# Also the peak memory of collect over 1,000 and 10,000 reports, which must
# stay flat (reports are read one at a time and each line written at once).
#   DIAG_COLLECT_REPORTS  number of reports (10000)
#   DIAG_COLLECT_RUNS     timed runs of each tool, the best kept (5)
#   DIAG_COLLECT_RESULTS  the page to write (bench/COLLECT-RESULTS.md)
# And show --json and diff on a report of some 100 MB (time and peak memory,
# against the file's size: at most 4 x), intact and altered: its CR LF breaks
# made LF by a transfer (which show tells, searching what undoes it), and one
# character changed (which nothing undoes, after every search).
# The reportcheck measured is the one users run: the optimised build without
# sanitizers, in build-native/ (make native).
set -euo pipefail
cd "$(dirname "$0")/.."
source bench/native-bench.sh

count=${DIAG_COLLECT_REPORTS:-10000}
runs=${DIAG_COLLECT_RUNS:-5}
results=${DIAG_COLLECT_RESULTS:-bench/COLLECT-RESULTS.md}

user_reportcheck
bench_work collect
fleet_reports "$count"  # both tools start from a warm cache

best() { sort -n | head -1; }

files=$(find "$work/reports" -type f | wc -l)
bytes=$(du -sb "$work/reports" | cut -f1)

collect_times=() sha_times=()
for ((i = 0; i < runs; i++)); do
  collect_times+=("$(measure "$checker" collect "$work/reports")")
  sha_times+=("$(measure sh -c 'find "$1" -type f -print0 | xargs -0 sha256sum' sh "$work/reports")")
done
collect_s=$(printf '%s\n' "${collect_times[@]}" | cut -d' ' -f1 | best)
sha_s=$(printf '%s\n' "${sha_times[@]}" | cut -d' ' -f1 | best)
collect_peak=$(printf '%s\n' "${collect_times[@]}" | cut -d' ' -f2 | sort -n | tail -1)
small_peak=$(measure "$checker" collect "$work/reports/batch000" "$work/reports/batch001" | cut -d' ' -f2)
ratio=$(awk -v a="$collect_s" -v b="$sha_s" 'BEGIN { printf "%.2f", (b > 0 ? a / b : 0) }')
lines=$("$checker" collect "$work/reports" | wc -l)

verdict="within"
awk -v r="$ratio" 'BEGIN { exit !(r > 1.2) }' && verdict="OVER"

# A large report and the same a week later (every 1000th entry changed).
large_mb=${DIAG_LARGE_REPORT_MB:-100}
/usr/bin/python3 bench/make-large-report.py "$bench_source" "$work/large.txt" "$large_mb"
/usr/bin/python3 bench/make-large-report.py "$bench_source" "$work/large-later.txt" "$large_mb" later
/usr/bin/python3 bench/make-large-report.py "$bench_source" "$work/large-every.txt" "$large_mb" every-entry
/usr/bin/python3 bench/make-large-report.py "$bench_source" "$work/large-lf.txt" "$large_mb" lf-breaks
/usr/bin/python3 bench/make-large-report.py "$bench_source" "$work/large-edited.txt" "$large_mb" one-character
large_bytes=$(stat -c %s "$work/large.txt")
memory_verdict="within"
memory_rows=""
# One row: COMMAND NAME FILE... ; x the file is against the largest FILE.
memory_row() {
  local label=$1 largest=0 size seconds kb x
  shift
  for file in "$@"; do
    [[ $file == "$work"/* && -f $file ]] || continue
    size=$(stat -c %s "$file")
    ((size > largest)) && largest=$size
  done
  read -r seconds kb < <(measure "$checker" "$@")
  x=$(awk -v k="$kb" -v b="$largest" 'BEGIN { printf "%.2f", k * 1024 / b }')
  awk -v r="$x" 'BEGIN { exit !(r > 4) }' && memory_verdict="OVER"
  memory_rows+="| $label | $seconds | ${kb} kB | $x |"$'\n'
}
memory_row '`show --json`' show --json "$work/large.txt"
memory_row '`diff`' diff "$work/large.txt" "$work/large-later.txt"
memory_row '`diff --json`' diff --json "$work/large.txt" "$work/large-later.txt"
memory_row '`diff`, every entry changed' diff "$work/large.txt" "$work/large-every.txt"
memory_row '`diff --json`, every entry changed' diff --json "$work/large.txt" "$work/large-every.txt"
memory_row '`show --json`, CR LF made LF' show --json "$work/large-lf.txt"
memory_row '`show --json`, one character changed' show --json "$work/large-edited.txt"
memory_row '`check`, CR LF made LF' check "$work/large-lf.txt"
memory_row '`repair`, CR LF made LF' repair "$work/large-lf.txt" "$work/repaired.txt"
memory_row '`diff`, CR LF made LF' diff "$work/large-lf.txt" "$work/large-later.txt"
memory_row '`diff`, one character changed' diff "$work/large-edited.txt" "$work/large-later.txt"
memory_row '`diff --json`, one character changed' diff --json "$work/large-edited.txt" "$work/large-later.txt"
# Sections written by hand below the figures ("## ...": what the time went
# to, measured under callgrind) stay when the figures are written again.
notes=$(sed -n '/^## /,$p' "$results" 2>/dev/null || true)
{
  echo "# reportcheck collect: figures of the last run"
  echo
  echo "Written by \`scripts/bench.sh collect\` on $(date -u +%Y-%m-%d), load $(cut -d' ' -f1-3 /proc/loadavg)."
  echo "$files reports ($bytes bytes), copies of a real report with variations;"
  echo "best of $runs runs each, warm file cache."
  echo
  echo "| Measure | Value |"
  echo "|---|---|"
  echo "| \`reportcheck collect\` (Release), seconds | $collect_s |"
  echo "| \`sha256sum\` over the same files, seconds | $sha_s |"
  echo "| Ratio (target at most 1.2) | $ratio ($verdict the target) |"
  echo "| Lines written | $lines |"
  echo "| Peak memory, 1,000 reports | ${small_peak} kB |"
  echo "| Peak memory, $files reports | ${collect_peak} kB |"
  echo
  echo "A report of $large_bytes bytes (one file; diff against the same a week later,"
  echo "every 1000th entry changed, and against a copy in which every entry changed:"
  echo "version, size and both times), and two altered copies: its CR LF line breaks"
  echo "made LF by a transfer, and one character changed. Peak memory against the"
  echo "size of the largest file read, target at most 4 x ($memory_verdict the target)."
  echo
  echo "| Command | Seconds | Peak memory | x the file |"
  echo "|---|---|---|---|"
  printf '%s' "$memory_rows"
  if [[ -n $notes ]]; then
    echo
    echo "$notes"
  fi
} >"$results"
cat "$results"
