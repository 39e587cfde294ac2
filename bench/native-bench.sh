# Sourced by the bench scripts that measure reportcheck natively. Provides:
#   user_reportcheck     builds the reportcheck users run (the optimised build
#                        without sanitizers, build-native/, as make native
#                        does) and sets `checker` to it
#   bench_work NAME      a folder of the run's own in `work`, removed at exit
#   fleet_reports N      N copies of a real report with variations under
#                        $work/reports (bench/make-reports.py), read once so
#                        that every command starts from a warm file cache
#   measure COMMAND...   "<seconds> <peak kB>" of one run, its output thrown
#                        away (a command that exits non-zero, as diff and
#                        findings do when they find something, makes time say
#                        so on a line before: the last line is the figures)

user_reportcheck() {
  cmake --preset native >/dev/null
  cmake --build --preset native >/dev/null
  checker=build-native/bin/reportcheck
}

bench_work() {
  work=$(mktemp -d "/tmp/orvane-$1-bench.XXXXXX")
  trap 'rm -rf "$work"' EXIT
}

# The report the program made under Wine, which the copies vary.
bench_source=tests/reportcheck/data/wine-report.txt

fleet_reports() {
  /usr/bin/python3 bench/make-reports.py "$1" "$work/reports" "$bench_source"
  cat "$work/reports"/*/* >/dev/null
}

measure() { /usr/bin/time -f "%e %M" -o "$work/time" "$@" >/dev/null 2>"$work/stderr" || true; tail -1 "$work/time"; }
