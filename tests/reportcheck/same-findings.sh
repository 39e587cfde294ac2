#!/usr/bin/env bash
# same-findings.sh WINDOWS_EXE LINUX_BINARY SOURCE_DIR: reportcheck.exe under
# Wine and the Linux build give the same findings, byte for byte, on the
# same fixture reports: findings on the files, findings --json, and findings
# on a database that each collected itself (and on the other's database).
set -euo pipefail
exe=$1 native=$2 source=$3
[[ -x $native ]] || { echo "no Linux build of reportcheck at $native (cmake --preset native)" >&2; exit 1; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp "$source"/tests/findings/fixtures/*.txt "$work"/
cd "$work"
files=(*.txt)
status=0
compare() {  # compare NAME ARGS...: the same output and status both ways
  local name=$1
  shift
  local s1=0 s2=0
  wine "$exe" "$@" >"windows-$name.out" 2>/dev/null </dev/null || s1=$?
  "$native" "$@" >"linux-$name.out" 2>/dev/null </dev/null || s2=$?
  if ! cmp -s "windows-$name.out" "linux-$name.out" || ((s1 != s2)); then
    echo "findings differ for: $* (status $s1 under Wine, $s2 on Linux)" >&2
    diff "windows-$name.out" "linux-$name.out" >&2 || true
    status=1
  fi
}
compare text findings "${files[@]}"
compare json findings --json "${files[@]}"
wine "$exe" collect --db windows.db "${files[@]}" >/dev/null 2>&1 </dev/null || true
"$native" collect --db linux.db "${files[@]}" >/dev/null 2>&1 </dev/null || true
compare windows-db findings windows.db
compare linux-db findings linux.db
cmp -s windows-windows-db.out windows-linux-db.out || { echo "the two databases give different findings" >&2; status=1; }
# What each collect wrote as findings, in the database itself.
query='SELECT path, rule, line, detail FROM findings JOIN reports USING (report) ORDER BY path, rule, line'
if command -v sqlite3 >/dev/null; then
  [[ "$(sqlite3 windows.db "$query")" == "$(sqlite3 linux.db "$query")" ]] ||
    { echo "collect --db wrote different findings" >&2; status=1; }
fi
((status == 0)) && echo "same findings from reportcheck.exe under Wine and on Linux (${#files[@]} reports)"
exit $status
