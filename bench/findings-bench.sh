#!/usr/bin/env bash
# The findings commands over many reports, side by side in one run, each
# against the command its target names:
#   collect --db over N reports            against collect to JSON Lines (at most 2 x)
#   findings over that database            against that collect --db (at most 0.5 x)
#   collect --db again, 10 reports added   against the first collect --db (at most 0.1 x)
#   findings on one report                 against show --json of it (at most 3 x)
# and the peak memory of collect --db over 1,000 and N reports (flat).
#   DIAG_COLLECT_REPORTS  number of reports (10000)
#   DIAG_COLLECT_RUNS     timed runs of each, the best kept (3)
#   DIAG_FINDINGS_RESULTS the page to write (bench/FINDINGS-RESULTS.md)
# The reportcheck measured is the one users run: the optimised build without
# sanitizers, in build-native/ (make native).
set -euo pipefail
cd "$(dirname "$0")/.."
source bench/native-bench.sh

count=${DIAG_COLLECT_REPORTS:-10000}
runs=${DIAG_COLLECT_RUNS:-3}
results=${DIAG_FINDINGS_RESULTS:-bench/FINDINGS-RESULTS.md}

user_reportcheck
bench_work findings
fleet_reports "$count"  # a warm cache for every command
cp tests/findings/fixtures/mixed-versions.txt "$work/one.txt"

# The same for 50 runs of a command in a row: one report takes too little
# time to be measured once.
measure50() { measure sh -c 'for i in 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20 21 22 23 24 25 26 27 28 29 30 31 32 33 34 35 36 37 38 39 40 41 42 43 44 45 46 47 48 49 50; do "$@" >/dev/null 2>&1; done' sh "$@"; }
seconds() { printf '%s\n' "$@" | cut -d' ' -f1 | sort -n | head -1; }
peak() { printf '%s\n' "$@" | cut -d' ' -f2 | sort -n | tail -1; }
ratio() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.2f", (b > 0 ? a / b : 0) }'; }
verdict() { awk -v r="$1" -v t="$2" 'BEGIN { print (r <= t ? "within" : "OVER") }'; }

jsonl=() db=() findings=() again=() one=() show=()
for ((i = 0; i < runs; i++)); do
  rm -f "$work/fleet.db"
  # JSON Lines written to a file, as the database is.
  jsonl+=("$(measure sh -c '"$1" collect "$2" >"$3"' sh "$checker" "$work/reports" "$work/reports.jsonl")")
  db+=("$(measure "$checker" collect --db "$work/fleet.db" "$work/reports")")
  findings+=("$(measure "$checker" findings "$work/fleet.db")")
  # A second run with 10 reports more, on a copy of the first run's database.
  cp "$work/fleet.db" "$work/again.db"
  /usr/bin/python3 bench/make-reports.py 10 "$work/reports" "$bench_source" "$((count + 100 * i))"
  again+=("$(measure "$checker" collect --db "$work/again.db" "$work/reports")")
  find "$work/reports" -name 'pc*' -newer "$work/fleet.db" -delete
  one+=("$(measure50 "$checker" findings "$work/one.txt")")
  show+=("$(measure50 "$checker" show --json "$work/one.txt")")
done
rm -f "$work/small.db"
small_peak=$(measure "$checker" collect --db "$work/small.db" "$work/reports/batch000" "$work/reports/batch001" | cut -d' ' -f2)

jsonl_s=$(seconds "${jsonl[@]}") db_s=$(seconds "${db[@]}") findings_s=$(seconds "${findings[@]}")
again_s=$(seconds "${again[@]}") one_s=$(seconds "${one[@]}") show_s=$(seconds "${show[@]}")
r1=$(ratio "$db_s" "$jsonl_s") r2=$(ratio "$findings_s" "$db_s") r3=$(ratio "$again_s" "$db_s") r4=$(ratio "$one_s" "$show_s")
{
  echo "# reportcheck findings and collect --db: figures of the last run"
  echo
  echo "Written by \`bench/findings-bench.sh\` (\`make bench\`, \`make bench-collect\`) on $(date -u +%Y-%m-%d),"
  echo "load $(cut -d' ' -f1-3 /proc/loadavg). $count reports, copies of a real report with variations;"
  echo "best of $runs runs each (for one report, of $runs runs of 50 in a row), warm file cache, Release build."
  echo
  echo "| Measure | Seconds | Against | Ratio | Target |"
  echo "|---|---|---|---|---|"
  echo "| \`collect --db\`, $count reports | $db_s | \`collect\` to JSON Lines: $jsonl_s | $r1 | at most 2 ($(verdict "$r1" 2)) |"
  echo "| \`findings\` on that database, every built-in rule | $findings_s | \`collect --db\`: $db_s | $r2 | at most 0.5 ($(verdict "$r2" 0.5)) |"
  echo "| \`collect --db\` again, 10 reports added | $again_s | the first \`collect --db\`: $db_s | $r3 | at most 0.1 ($(verdict "$r3" 0.1)) |"
  echo "| \`findings\` on one report (whole process), 50 runs | $one_s | \`show --json\` of it: $show_s | $r4 | at most 3 ($(verdict "$r4" 3)) |"
  echo
  echo "Peak memory of \`collect --db\`: ${small_peak} kB over 1,000 reports, $(peak "${db[@]}") kB over $count."
} >"$results"
cat "$results"
