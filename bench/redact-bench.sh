#!/usr/bin/env bash
# reportcheck redact side by side with reportcheck show --json on the same
# report of 100,000 entries (each with an access list naming the user), in
# one run: redact must take at most twice the processor time show --json
# takes. Then the same redaction with a map of 100,000 mappings (a fleet's,
# none of them this machine's values), which redact reads, extends and
# writes again: its cost is measured and written down, with no target.
# Both the wall-clock seconds and the processor seconds (user + system) are
# given: on a machine shared with other work the wall clock also counts the
# waits for a processor, the processor seconds only the command's own work.
#   DIAG_REDACT_ENTRIES  entries in the report (100000: long enough to time)
#   DIAG_REDACT_MAP      mappings in the large map (100000)
#   DIAG_REDACT_RUNS     timed runs of each, the best kept (5)
#   DIAG_REDACT_RESULTS  the page to write (bench/REDACT-RESULTS.md)
# The reportcheck measured is the one users run: the optimised build without
# sanitizers, in build-native/ (make native).
set -euo pipefail
cd "$(dirname "$0")/.."
source bench/native-bench.sh

entries=${DIAG_REDACT_ENTRIES:-100000}
mappings=${DIAG_REDACT_MAP:-100000}
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

# The fleet's map: computer names, users, adapters' names, hardware addresses
# and DNS suffixes of other machines, in equal parts.
/usr/bin/python3 - "$mappings" "$work/fleet.tsv" <<'PY'
import sys
count, target = int(sys.argv[1]), sys.argv[2]
forms = [('computer name', 'PC-%06d', 'HOST-%04d'), ('user', 'user.%06d', 'USER-%04d'),
         ('adapter name', '{%08d-0000-0000-0000-000000000000}', 'ADAPTER-%04d'),
         ('hardware address', 'AA-00-00-%02X-%02X-%02X', '02-00-00-%02X-%02X-%02X'),
         ('DNS suffix', 'site%06d.example', 'DNS-%04d')]
lines = []
for i in range(count):
    kind, original, pseudonym = forms[i % len(forms)]
    n = i // len(forms) + 1
    if kind == 'hardware address':
        lines.append('%s\t%s\t%s\n' % (kind, original % (n >> 16, n >> 8 & 255, n & 255),
                                       pseudonym % (n >> 16, n >> 8 & 255, n & 255)))
    else:
        lines.append('%s\t%s\t%s\n' % (kind, original % n, pseudonym % n))
open(target, 'w').write(''.join(lines))
PY

# "<wall> <processor>" seconds of one run, to the millisecond (time(1) gives
# hundredths only, too coarse for runs of a few hundredths).
seconds() {
  /usr/bin/python3 -c '
import resource, subprocess, sys, time
before, start = resource.getrusage(resource.RUSAGE_CHILDREN), time.perf_counter()
subprocess.run(sys.argv[1:], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
wall, after = time.perf_counter() - start, resource.getrusage(resource.RUSAGE_CHILDREN)
cpu = after.ru_utime - before.ru_utime + after.ru_stime - before.ru_stime
print(f"{wall:.3f} {cpu:.3f}")' "$@"
}
best() { sort -n | head -1; }
show_times=() redact_times=() map_times=()
for ((i = 0; i < runs; i++)); do  # alternately, so that all meet the same load
  show_times+=("$(seconds "$checker" show --json "$work/big.txt")")
  rm -f "$work/out.txt"
  redact_times+=("$(seconds "$checker" redact --keyword orvane "$work/big.txt" "$work/out.txt")")
  cp "$work/fleet.tsv" "$work/map.tsv"
  rm -f "$work/out.txt"
  map_times+=("$(seconds "$checker" redact --map "$work/map.tsv" --keyword orvane "$work/big.txt" "$work/out.txt")")
done
"$checker" check "$work/out.txt" >/dev/null
column() { printf '%s\n' "${@:2}" | cut -d' ' -f"$1" | best; }
show=$(column 1 "${show_times[@]}") show_cpu=$(column 2 "${show_times[@]}")
redact=$(column 1 "${redact_times[@]}") redact_cpu=$(column 2 "${redact_times[@]}")
map=$(column 1 "${map_times[@]}") map_cpu=$(column 2 "${map_times[@]}")
ratio() { /usr/bin/python3 -c "print(f'{$1 / max($2, 0.001):.2f}')"; }
# Judged on the processor seconds: the wall clock of a shared machine also
# counts the other work's turns, which fall on either command by chance.
verdict=$(/usr/bin/python3 -c "print('within' if $redact_cpu <= 2 * max($show_cpu, 0.001) else 'OVER')")

cat >"$results" <<MD
# reportcheck redact: figures

\`bench/redact-bench.sh\` (\`make bench\`), $(date -u +%Y-%m-%d), $(nproc) cores, load $(cut -d' ' -f1-3 /proc/loadavg).
A report of $entries entries, each with an access list naming the user,
redacted with one keyword; the best of $runs runs of each, taken alternately.
Wall-clock seconds, and processor seconds (user + system: the command's own
work, whatever else the machine runs meanwhile).

| Command | Seconds | Processor seconds |
|---|---|---|
| \`show --json\` | $show | $show_cpu |
| \`redact --keyword orvane\` | $redact | $redact_cpu |
| \`redact --map FLEET --keyword orvane\` ($mappings mappings) | $map | $map_cpu |

redact / show --json in processor seconds: **$(ratio "$redact_cpu" "$show_cpu")** ($verdict the target of 2);
by the wall clock $(ratio "$redact" "$show").

A map of $mappings mappings (a fleet's computer names, users, adapters' names,
hardware addresses and DNS suffixes, none of them this report's) costs
$(ratio "$map" "$redact") x the redaction without it ($(ratio "$map_cpu" "$redact_cpu") x in processor seconds): redact reads
it whole, keeps every one of its pseudonyms whole in the text, adds this
report's values and writes it again. Each place of the text is asked once
per length the pseudonyms have, not once per pseudonym, so the map's size
costs the reading and writing of it, not a search per mapping.
MD
echo "redact: $redact_cpu s, show --json: $show_cpu s of processor, ratio $(ratio "$redact_cpu" "$show_cpu") ($verdict the target of 2); with a map of $mappings: $map_cpu s"
[[ $verdict == within ]]
