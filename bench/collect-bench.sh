#!/usr/bin/env bash
# reportcheck collect over many reports, side by side with sha256sum over the
# same files in the same run: the floor any tool that reads every byte meets.
# Also the peak memory of collect over 1,000 and 10,000 reports, which must
# stay flat (reports are read one at a time and each line written at once).
#   DIAG_COLLECT_REPORTS  number of reports (10000)
#   DIAG_COLLECT_RUNS     timed runs of each tool, the best kept (5)
#   DIAG_COLLECT_RESULTS  the page to write (bench/COLLECT-RESULTS.md)
# And show --json and diff on a report of some 100 MB (time and peak memory,
# against the file's size: at most 4 x).
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
large_bytes=$(stat -c %s "$work/large.txt")
read -r show_s show_kb < <(measure "$checker" show --json "$work/large.txt")
read -r diff_s diff_kb < <(measure "$checker" diff "$work/large.txt" "$work/large-later.txt")
read -r diffj_s diffj_kb < <(measure "$checker" diff --json "$work/large.txt" "$work/large-later.txt")
times_size() { awk -v k="$1" -v b="$large_bytes" 'BEGIN { printf "%.2f", k * 1024 / b }'; }
show_x=$(times_size "$show_kb") diff_x=$(times_size "$diff_kb") diffj_x=$(times_size "$diffj_kb")
memory_verdict="within"
for x in "$show_x" "$diff_x" "$diffj_x"; do
  awk -v r="$x" 'BEGIN { exit !(r > 4) }' && memory_verdict="OVER"
done
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
  echo "every 1000th entry changed): peak memory against the file's size, target at most"
  echo "4 x ($memory_verdict the target)."
  echo
  echo "| Command | Seconds | Peak memory | x the file |"
  echo "|---|---|---|---|"
  echo "| \`show --json\` | $show_s | ${show_kb} kB | $show_x |"
  echo "| \`diff\` | $diff_s | ${diff_kb} kB | $diff_x |"
  echo "| \`diff --json\` | $diffj_s | ${diffj_kb} kB | $diffj_x |"
  if [[ -n $notes ]]; then
    echo
    echo "$notes"
  fi
} >"$results"
cat "$results"
