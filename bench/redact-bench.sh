#!/usr/bin/env bash
# reportcheck redact side by side with reportcheck show --json on the same
# report of 10,000 entries (each with an access list naming the user), in
# one run: redact must take at most twice what show --json takes.
#   DIAG_REDACT_ENTRIES  entries in the report (10000)
#   DIAG_REDACT_RUNS     timed runs of each, the best kept (5)
#   DIAG_REDACT_RESULTS  the page to write (bench/REDACT-RESULTS.md)
# The reportcheck measured is the one users run: the optimised build without
# sanitizers, in build-native/ (make native).
set -euo pipefail
cd "$(dirname "$0")/.."
source bench/native-bench.sh

entries=${DIAG_REDACT_ENTRIES:-10000}
runs=${DIAG_REDACT_RUNS:-5}
results=${DIAG_REDACT_RESULTS:-bench/REDACT-RESULTS.md}

user_reportcheck
bench_work redact

# A real report (made by the program under Wine) with the entries added to
# its current directory, and its checksum made again.
/usr/bin/python3 - "$entries" "$bench_source" "$work/big.txt" <<'PY'
import sys
sys.path.insert(0, 'bench')
from reportfile import read_body, write_report
count, source, target = int(sys.argv[1]), sys.argv[2], sys.argv[3]
body = read_body(source)
lines = body.split('\r\n')
user = next(l for l in lines if l.startswith('\tuser: '))[len('\tuser: '):]
at = next(i for i, l in enumerate(lines) if l.startswith('* Current directory')) + 1
added = ['\t00000020 %10d\t07/03/2021  14:05:09\t08/03/2021  09:00:00\tfile%05d.dll\t9.3.1.%d ACL: Allow '
         'BUILTIN\\Administrators [RWX]; Allow VM\\%s [RWX];' % ((i * 7919) % 100000, i, i % 50, user)
         for i in range(count)]
write_report(target, '\r\n'.join(lines[:at] + added + lines[at:]))
PY
"$checker" check "$work/big.txt" >/dev/null

seconds() { /usr/bin/time -f "%e" -o "$work/time" "$@" >/dev/null 2>&1; cat "$work/time"; }
best() { sort -n | head -1; }
show_times=() redact_times=()
for ((i = 0; i < runs; i++)); do  # alternately, so that both meet the same load
  show_times+=("$(seconds "$checker" show --json "$work/big.txt")")
  rm -f "$work/out.txt"
  redact_times+=("$(seconds "$checker" redact --keyword orvane "$work/big.txt" "$work/out.txt")")
done
"$checker" check "$work/out.txt" >/dev/null
show=$(printf '%s\n' "${show_times[@]}" | best)
redact=$(printf '%s\n' "${redact_times[@]}" | best)
ratio=$(/usr/bin/python3 -c "print(f'{$redact / max($show, 0.01):.2f}')")
verdict=$(/usr/bin/python3 -c "print('within' if $redact <= 2 * max($show, 0.01) else 'OVER')")

cat >"$results" <<MD
# reportcheck redact: figures

\`bench/redact-bench.sh\` (\`make bench\`), $(date -u +%Y-%m-%d), $(nproc) cores, load $(cut -d' ' -f1-3 /proc/loadavg).
A report of $entries entries, each with an access list naming the user,
redacted with one keyword; the best of $runs runs of each, taken alternately.

| Command | Seconds |
|---|---|
| \`show --json\` | $show |
| \`redact --keyword orvane\` | $redact |

redact / show --json: **$ratio** ($verdict the target of 2).
MD
echo "redact: $redact s, show --json: $show s, ratio $ratio ($verdict the target of 2)"
[[ $verdict == within ]]
