#!/usr/bin/env bash
# Runs the benchmarks under Wine and writes bench/RESULTS.md, which says what
# each one measures. Not part of `make test`: timings do not belong in tests.
#   DIAG_BUILD_DIR      the Windows build to measure (build)
#   DIAG_BENCH_QUICK=1  fewer runs, for trying the script itself
#   DIAG_BENCH_RESULTS  the page to write (bench/RESULTS.md)
#   DIAG_BENCH_KEEP_RAW where the raw figures go (results.tsv beside the page)
#   DIAG_BENCH_PARTS    the parts to run, by number ("6", "3 6"; all by default);
#                       with only some parts the page shows only their figures
# `scripts/bench.sh collect` runs only the report checker's part, natively
# (bench/collect-bench.sh, bench/COLLECT-RESULTS.md); `scripts/bench.sh page`
# only the report page's (bench/page-bench.sh, bench/PAGE-RESULTS.md);
# `scripts/bench.sh redact` only redact's (bench/redact-bench.sh,
# bench/REDACT-RESULTS.md); a full run (no DIAG_BENCH_PARTS) ends with the
# report checker's parts.
set -euo pipefail
cd "$(dirname "$0")/.."
if [[ "${1:-}" == "collect" ]]; then
  bench/collect-bench.sh
  exec bench/findings-bench.sh
fi
if [[ "${1:-}" == "page" ]]; then
  exec bench/page-bench.sh
bench/redact-bench.sh
fi
if [[ "${1:-}" == "redact" ]]; then
  exec bench/redact-bench.sh
fi
source scripts/wine-env.sh

build=${DIAG_BUILD_DIR:-build}
bin="$build/bin"
results=${DIAG_BENCH_RESULTS:-bench/RESULTS.md}
quick=${DIAG_BENCH_QUICK:-0}
parts=${DIAG_BENCH_PARTS:-1 2 3 4 5 6 7}
part() { [[ " $parts " == *" $1 "* ]]; }
for exe in OrvaneDiagnostics bench_floor bench_probe bench_runner fixture_version_neutral; do
  ext=exe; [[ $exe == fixture_* ]] && ext=dll
  [[ -f "$bin/$exe.$ext" ]] || { echo "bench: $bin/$exe.$ext is missing (make build)" >&2; exit 1; }
done

# Runs per benchmark (after the warm-ups).
if [[ $quick == 1 ]]; then
  process_rounds=3 section_passes=4 listing_runs=1 parts_runs=1 save_runs=2 window_rounds=1 fill_runs=1
else
  process_rounds=10 section_passes=11 listing_runs=3 parts_runs=3 save_runs=7 window_rounds=3 fill_runs=3
fi

work=$(mktemp -d /tmp/orvane-diag-bench.XXXXXX)
prefix="$work/prefix"
raw="$work/raw.tsv"
cleanup() {
  wine_cleanup
  rm -rf "$work"
}
trap cleanup EXIT

# Each step is announced, and the load of the machine when it starts is kept
# with the results (the raw file exists from the first benchmark on).
step() {
  echo "== $*" >&2
  [[ -f "${raw:-}" ]] && echo -e "M\tload ${1%%.*}\t$(cut -d' ' -f1-3 /proc/loadavg)" >>"$raw"
  return 0
}

# --- The machine under test --------------------------------------------------

step "Preparing a Wine prefix in $prefix"
mkdir -p "$prefix"
display_start
wine_prefix_create "$prefix"
drive_c="$prefix/drive_c"

# The suite installed as on a customer's machine: the program in its standard
# directory with its libraries and data, the installer's registry data naming
# that directory, and the two shared directories. Library files are copies of
# a small versioned DLL of our tests, so their product versions are read.
suite="$drive_c/Program Files/Orvane Software V9"
shared="$drive_c/ProgramData/Orvane Software"
install_suite() {
  mkdir -p "$suite/Plugins" "$shared/Runner"
  cp "$bin/OrvaneDiagnostics.exe" "$suite/"
  local name
  for name in OVSystemW OVCore OVRunner OVNetwork OVReports OVPrint OVImport OVExport OVLicence OVHelp; do
    cp "$bin/fixture_version_neutral.dll" "$suite/$name.dll"
  done
  for name in $(seq -w 1 20); do
    head -c $((1000 * 10#$name)) /dev/zero | tr '\0' 'x' >"$suite/data$name.dat"
  done
  printf 'Orvane Software V9\r\n' >"$suite/readme.txt"
  printf '[General]\r\nLanguage=EN\r\n' >"$shared/settings.ini"
  for name in $(seq -w 1 5); do printf 'profile %s\r\n' "$name" >"$shared/profile$name.xml"; done
  printf '@echo off\r\n' >"$shared/Runner/nightly.cmd"
  printf 'runner log\r\n' >"$shared/Runner/runner.log"
  local key='HKLM\Software\Orvane Software'
  wine reg add "$key" /v InstallLocation /d 'C:\Program Files\Orvane Software V9' /f >/dev/null 2>&1 </dev/null
  wine reg add "$key" /v VersionMajor /t REG_DWORD /d 9 /f >/dev/null 2>&1 </dev/null
  wine reg add "$key" /v VersionMinor /t REG_DWORD /d 3 /f >/dev/null 2>&1 </dev/null
  wine reg add "$key" /v VersionRevision /t REG_DWORD /d 1 /f >/dev/null 2>&1 </dev/null
  wine reg add "$key" /v VersionBuild /t REG_DWORD /d 1042 /f >/dev/null 2>&1 </dev/null
  wine reg add "$key" /v InstalledComponents /d 'Core;Runner' /f >/dev/null 2>&1 </dev/null
}

# Fills a directory with files numbered 1 to count, one in ten a versioned
# library (hard links where the file system allows), the others small data files.
fill_entries() {
  local dir=$1 count=$2 i
  mkdir -p "$dir"
  for ((i = 1; i <= count; ++i)); do
    if ((i % 10 == 0)); then
      ln "$bin/fixture_version_neutral.dll" "$dir/library$i.dll" 2>/dev/null ||
        cp "$bin/fixture_version_neutral.dll" "$dir/library$i.dll"
    else
      echo "entry $i" >"$dir/file$i.dat"
    fi
  done
}

# Installation directories of 100, 1,000 and 10,000 files.
make_listing_directories() {
  local n
  for n in 100 1000 10000; do fill_entries "$drive_c/bench/entries/$n" "$n"; done
}

# The program alone in a directory of 100, 1,000 and 10,000 entries, with
# the probe that writes the same report into a string (both list their own
# directory): the other entries are files as above.
make_window_directories() {
  local n dir
  for n in 100 1000 10000; do
    dir="$drive_c/bench/window/$n"
    fill_entries "$dir" $((n - 2))
    cp "$bin/OrvaneDiagnostics.exe" "$bin/bench_probe.exe" "$dir/"
  done
}

# Folders among the entries: 18,000 files and 2,000 folders against 20,000
# files. And the program alone in a directory of 100 and of 100,000 entries,
# for the memory of its headless report.
make_fault_directories() {
  local root="$drive_c/bench/faults" n
  fill_entries "$root/files" 20000
  fill_entries "$root/mixed" 18000
  (cd "$root/mixed" && seq 1 2000 | sed 's/.*/folder&/' | xargs mkdir)
  for n in 100 100000; do
    mkdir -p "$root/headless/$n"
    cp "$bin/OrvaneDiagnostics.exe" "$root/headless/$n/"
    (cd "$root/headless/$n" && seq 1 $((n - 1)) | sed 's/.*/file&.dat/' | xargs touch)
  done
}

step "Installing the suite and the test directories"
install_suite
if part 2 || part 3 || part 5 || part 6; then make_listing_directories; fi
if part 6; then make_window_directories; fi
if part 7; then make_fault_directories; fi
mkdir -p "$drive_c/bench/bin" "$drive_c/bench/out"
cp "$bin/bench_floor.exe" "$bin/bench_probe.exe" "$bin/bench_runner.exe" "$drive_c/bench/bin/"
cp bench/collect-facts.cmd "$drive_c/bench/bin/"

# --- The benchmarks ------------------------------------------------------------

win_suite='C:\Program Files\Orvane Software V9'
win_bin='C:\bench\bin'
win_out='C:\bench\out'
# Each program gets ten minutes at most; one that hangs leaves a note.
run_logged() {
  local started=$SECONDS status=0
  timeout 600 wine "$@" </dev/null 2>/dev/null || status=$?
  echo "   $(basename "${1//\\//}") ${2:-} ${3:-}: $((SECONDS - started)) s" >&2
  ((status == 0)) || echo -e "N\t${1##*\\} $2 ${3:-} ended with status $status"
}
probe() { run_logged "$win_bin\\bench_probe.exe" "$@"; }
runner() { run_logged "$win_bin\\bench_runner.exe" "$@"; }
: >"$raw"

{
  echo -e "M\tdate\t$(date -u '+%Y-%m-%d %H:%M UTC')"
  echo -e "M\tcpu\t$(grep -m1 'model name' /proc/cpuinfo | cut -d: -f2- | sed 's/^ *//')"
  echo -e "M\tcores\t$(nproc)"
  echo -e "M\tmemory\t$(awk '/MemTotal/ {printf "%.1f GiB", $2 / 1048576}' /proc/meminfo)"
  echo -e "M\tsystem\t$(. /etc/os-release && echo "$PRETTY_NAME"), Linux $(uname -r)"
  echo -e "M\twine\t$(wine --version 2>/dev/null)"
  echo -e "M\tload_start\t$(cut -d' ' -f1-3 /proc/loadavg)"
  echo -e "M\tcommit\t$(git rev-parse --short HEAD 2>/dev/null || echo unknown)$(git diff --quiet HEAD -- src 2>/dev/null || echo ' (with uncommitted changes under src/)')"
  echo -e "M\trounds\t$process_rounds"
  echo -e "M\tparts\t$parts"
  # The floor must import what the program imports.
  imports() { x86_64-w64-mingw32-objdump -p "$1" | awk '/DLL Name:/ {print tolower($3)}' | sort | tr '\n' ' '; }
  if command -v x86_64-w64-mingw32-objdump >/dev/null; then
    program_imports=$(imports "$bin/OrvaneDiagnostics.exe")
    floor_imports=$(imports "$bin/bench_floor.exe")
    echo -e "M\tprogram_imports\t$program_imports"
    [[ "$program_imports" == "$floor_imports" ]] && echo -e "M\timports_match\tyes" ||
      echo -e "M\timports_match\tno (floor: $floor_imports)"
  fi
} >>"$raw"

report_cmd="\"$win_suite\\OrvaneDiagnostics.exe\" $win_out\\report.txt"
floor_cmd="$win_bin\\bench_floor.exe"

if part 1; then
  step "1. Time to report: report, floor and script, interleaved ($process_rounds rounds)"
  script_cmd="C:\\windows\\system32\\cmd.exe /c $win_bin\\collect-facts.cmd $win_out\\facts.txt"
  runner time-to-report 2 "$process_rounds" report "$report_cmd" floor "$floor_cmd" script "$script_cmd" >>"$raw"
  # The last report must be whole and intact, or the times mean nothing.
  check=$(wine "$bin/reportcheck.exe" "$drive_c/bench/out/report.txt" </dev/null 2>/dev/null | tr -d '\r' || true)
  echo -e "M\treportcheck\t${check##*: }" >>"$raw"
  echo -e "M\treport_bytes\t$(stat -c %s "$drive_c/bench/out/report.txt")" >>"$raw"
  echo -e "M\tfacts_bytes\t$(stat -c %s "$drive_c/bench/out/facts.txt")" >>"$raw"
fi

if part 2; then
  step "2. Inside the process: each section of one report"
  for _ in 1 2 3; do probe sections "$section_passes" "$win_suite" >>"$raw"; done
  probe platform 'C:\bench\entries\100\file1.dat' 'C:\bench\entries\100\library10.dll' 10 >>"$raw"
fi

if part 3; then
  step "3. Cost per directory entry: 100, 1,000 and 10,000 files, into a string and into the view"
  probe listing both 1 "$listing_runs" 'C:\bench\entries\100' 'C:\bench\entries\1000' 'C:\bench\entries\10000' >>"$raw"
  probe listing-parts "$win_suite" 5 >>"$raw"
  probe listing-parts 'C:\bench\entries\1000' "$parts_runs" >>"$raw"
  probe listing-parts 'C:\bench\entries\10000' 1 >>"$raw"

  # What a listing asks of Wine: system calls per entry, told apart by
  # counting listings of 100 and 1,000 entries. Notepad holds the desktop
  # meanwhile, so that Wine's desktop process is not started (and counted)
  # inside the traced run.
  if command -v strace >/dev/null; then
    wine notepad </dev/null >/dev/null 2>&1 &
    desktop_holder=$!
    for ((tries = 0; tries < 300; ++tries)); do
      pgrep -f 'explorer.exe /desktop' >/dev/null && break
      sleep 0.1
    done
    for n in 100 1000; do
      timeout 300 strace -f -c -o "$work/strace-$n.txt" wine "$win_bin\\bench_probe.exe" listing string 0 1 "C:\\bench\\entries\\$n" \
        </dev/null >/dev/null 2>&1 || true
      awk -v n="$n" '$NF ~ /^[a-z_0-9]+$/ && $4 ~ /^[0-9]+$/ && $NF != "total" {print "R\tsyscalls\t" n "\t1\t" $NF "\t" $4}' \
        "$work/strace-$n.txt" >>"$raw"
    done
    kill "$desktop_holder" 2>/dev/null || true
    wait "$desktop_holder" 2>/dev/null || true
  else
    echo -e "N\tstrace is not installed: the system calls per entry were not counted" >>"$raw"
  fi
fi

if part 4; then
  step "4. Saving a 10 MB report"
  probe save 10 "$win_out" 1 "$save_runs" >>"$raw"
fi

if part 5; then
  step "5. Memory: peak working sets"
  runner memory 1 3 report "$report_cmd" floor "$floor_cmd" >>"$raw"
  probe peak idle >>"$raw"
  probe peak report "$win_out\\peak-report.txt" >>"$raw"
  probe peak listing 'C:\bench\entries\10000' string >>"$raw"
  probe peak listing 'C:\bench\entries\10000' view >>"$raw"
fi

if part 6; then
  step "6. The whole window: first report and refresh, shown and hidden, against the string ($window_rounds rounds)"
  echo -e "M\twindow_date\t$(date -u '+%Y-%m-%d %H:%M UTC')" >>"$raw"
  echo -e "M\twindow_commit\t$(git rev-parse --short HEAD 2>/dev/null || echo unknown)" >>"$raw"
  for n in 100 1000 10000; do
    run_logged "C:\\bench\\window\\$n\\bench_probe.exe" window 1 "$window_rounds" >>"$raw"
  done
  probe view-fill report "$fill_runs" >>"$raw"
  probe view-fill 'C:\bench\entries\1000' "$fill_runs" >>"$raw"
  probe view-fill 'C:\bench\entries\10000' "$fill_runs" >>"$raw"
  for n in 1000 3000; do probe clear-ways "$n" >>"$raw"; done
fi

if part 7; then
  step "7. Faults: a listing with folders, and the headless report's memory at 100 and 100,000 entries"
  echo -e "M\tfaults_date\t$(date -u '+%Y-%m-%d %H:%M UTC')" >>"$raw"
  echo -e "M\tfaults_commit\t$(git rev-parse --short HEAD 2>/dev/null || echo unknown)" >>"$raw"
  # Both directories in every round, side by side.
  probe listing string 1 "$listing_runs" 'C:\bench\faults\files' 'C:\bench\faults\mixed' >>"$raw"
  headless() { echo "\"C:\\bench\\faults\\headless\\$1\\OrvaneDiagnostics.exe\" $win_out\\headless-$1.txt"; }
  runner memory-headless 1 "$listing_runs" 100 "$(headless 100)" 100000 "$(headless 100000)" >>"$raw"
  # The report streamed to its file must still be whole and intact.
  for n in 100 100000; do
    check=$(wine "$bin/reportcheck.exe" "$drive_c/bench/out/headless-$n.txt" </dev/null 2>/dev/null | tr -d '\r' || true)
    echo -e "M\theadless_${n}_check\t${check##*: }" >>"$raw"
    echo -e "M\theadless_${n}_bytes\t$(stat -c %s "$drive_c/bench/out/headless-$n.txt")" >>"$raw"
  done
fi

echo -e "M\tload_end\t$(cut -d' ' -f1-3 /proc/loadavg)" >>"$raw"
# The raw figures stay beside the page, so that it can be written again
# (python3 bench/results.py bench/results.tsv) without measuring again.
cp "$raw" "${DIAG_BENCH_KEEP_RAW:-$(dirname "$results")/results.tsv}"
python3 bench/results.py "$raw" >"$results.tmp"
mv "$results.tmp" "$results"
step "Results written to $results"

# The report checker's parts (native, no Wine), in a full run only.
if [[ -z "${DIAG_BENCH_PARTS:-}" ]]; then
  bench/collect-bench.sh
  bench/findings-bench.sh
  bench/page-bench.sh
  bench/redact-bench.sh
fi
