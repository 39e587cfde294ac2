#!/usr/bin/env bash
# Runs every libFuzzer target of the fuzz build (cmake --preset fuzz) for a
# set time, one after the other, and prints one line of figures per target.
#   scripts/fuzz.sh            each target DIAG_FUZZ_SECONDS seconds (60)
#   scripts/fuzz.sh --smoke    each target DIAG_FUZZ_SMOKE_SECONDS seconds (15)
# DIAG_FUZZ_TARGETS limits the run to some targets ("command_line entry_text").
# Seeds come from tests/fuzz/corpus/<target>/ (crash inputs found earlier are
# kept there, so every run replays them first); what a run learns goes to
# <build>/fuzz/corpus/<target>/, findings to <build>/fuzz/artifacts/<target>/.
# The figures of the run are also written to <build>/fuzz/figures.md
# (figures-smoke.md for a smoke run), as a table for docs/reliability.md.
# Exit status: 0 when no target found anything, 1 otherwise.
set -euo pipefail
cd "$(dirname "$0")/.."

build=${DIAG_FUZZ_BUILD_DIR:-build-fuzz}
seconds=${DIAG_FUZZ_SECONDS:-60}
label="fuzz"
figures_name="figures.md"
if [[ "${1:-}" == "--smoke" ]]; then
  seconds=${DIAG_FUZZ_SMOKE_SECONDS:-15}
  label="fuzz smoke"
  figures_name="figures-smoke.md"
fi
targets=${DIAG_FUZZ_TARGETS:-"command_line registry_value entry_text adapter_text report_roundtrip report_model system_sections report_writer_reader findings repair report_redact"}

# Longest input per target: a token past 1,022 characters, a registry value
# past 4,096 bytes, a listing past 64 KiB need room.
max_len() {
  case "$1" in
    command_line) echo 3072 ;;
    registry_value) echo 8400 ;;
    entry_text) echo 1024 ;;
    report_model) echo 16384 ;;
    findings) echo 8192 ;;
    *) echo 4096 ;;
  esac
}

# The last value of "<key>: N" in a libFuzzer log.
last_figure() { grep -oE "$1: +[0-9]+" "$2" | tail -1 | grep -oE '[0-9]+$' || echo 0; }

out="$build/fuzz"
figures="$out/$figures_name"
mkdir -p "$out"
{
  echo "| Target | Seconds | Executions | Executions/s | Coverage (edges) | Features | Corpus | Crashes |"
  echo "|---|---|---|---|---|---|---|---|"
} >"$figures"

failed=0
count=0
for target in $targets; do
  count=$((count + 1))
  binary="$build/bin/fuzz_$target"
  if [[ ! -x "$binary" ]]; then
    echo "$label: $target: FAILED, $binary is missing (cmake --preset fuzz && cmake --build --preset fuzz)"
    failed=$((failed + 1))
    continue
  fi
  work="$out/corpus/$target"
  artifacts="$out/artifacts/$target"
  log="$out/$target.log"
  mkdir -p "$work" "$artifacts"
  result=0
  "$binary" "$work" "tests/fuzz/corpus/$target" \
    -max_total_time="$seconds" -max_len="$(max_len "$target")" -timeout=10 -rss_limit_mb=2048 \
    -print_final_stats=1 -artifact_prefix="$artifacts/" >"$log" 2>&1 </dev/null || result=$?

  runs=$(last_figure "stat::number_of_executed_units" "$log")
  speed=$(last_figure "stat::average_exec_per_sec" "$log")
  cov=$(last_figure "cov" "$log")
  ft=$(last_figure "ft" "$log")
  corpus=$(find "$work" -type f | wc -l)
  if ((result == 0)); then
    crashes=0
    echo "$label: $target passed: $runs runs in $seconds s ($speed/s), coverage $cov edges, $ft features, corpus $corpus"
  else
    crashes=1
    failed=$((failed + 1))
    echo "$label: $target FAILED (status $result) after $runs runs; the input is kept in $artifacts/"
    grep -E "ERROR: |property broken|runtime error|SUMMARY|Test unit written" "$log" | head -20 | sed 's/^/    /'
    echo "    full log: $log"
  fi
  echo "| $target | $seconds | $runs | $speed | $cov | $ft | $corpus | $crashes |" >>"$figures"
done

if ((failed == 0)); then
  echo "== $label: all $count targets passed ($seconds s each, no crash)"
else
  echo "== $label: $failed of $count targets FAILED"
  exit 1
fi
