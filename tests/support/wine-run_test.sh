#!/usr/bin/env bash
# scripts/wine-run.sh with a stand-in for wine that fails to start the
# program as often as asked: a start that never ran is tried again, and
# nothing else is.
set -u
run=$(dirname "$0")/../../scripts/wine-run.sh
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0
check() {  # name, expected status, expected stdout, actual status, actual stdout
  if [[ $4 != "$2" || $5 != "$3" ]]; then
    echo "FAILED $1: status $4 (expected $2), output [$5] (expected [$3])"
    failures=$((failures + 1))
  else
    echo "passed $1"
  fi
}
# The stand-in: "silent N STATUS" ends silently with STATUS for its first N
# starts, then prints "ran" and ends with 0; "fails STATUS" prints and fails.
cat >"$work/wine" <<'STANDIN'
#!/usr/bin/env bash
count_file=$(dirname "$0")/starts
starts=$(( $(cat "$count_file" 2>/dev/null || echo 0) + 1 ))
echo "$starts" >"$count_file"
case $1 in
  silent) if (( starts <= $2 )); then exit "$3"; fi; echo ran; exit 0 ;;
  fails) echo "[  FAILED  ] a test"; exit "$2" ;;
esac
STANDIN
chmod +x "$work/wine"
attempt() { rm -f "$work/starts"; out=$(bash "$run" "$work/wine" "$@" 2>/dev/null); status=$?; }
attempt silent 1 5; check "one silent start is tried again" 0 ran $status "$out"
check "  ... and the program started twice" 2 "" "$(cat "$work/starts")" ""
attempt silent 2 5; check "two silent starts are tried again" 0 ran $status "$out"
attempt silent 3 5; check "three silent starts keep their status" 5 "" $status "$out"
attempt fails 1; check "a program that wrote something keeps its status" 1 "[  FAILED  ] a test" $status "$out"
check "  ... and is started once" 1 "" "$(cat "$work/starts")" ""
echo "$((6 - failures)) passed, $failures failed"
exit $((failures > 0))
