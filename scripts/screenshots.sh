#!/usr/bin/env bash
# Photographs the program's windows for the documentation, in English and in
# French, on a private Xvfb and in a throwaway Wine prefix.
#   scripts/screenshots.sh [OUTPUT_DIR]     (default: docs/screenshots)
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/wine-env.sh

out=${1:-docs/screenshots}
exe=build/bin/OrvaneDiagnostics.exe
mkdir -p "$out"
unset DISPLAY
prefix=$(mktemp -d /tmp/orvane-shots.XXXXXX)
cleanup() { wine_cleanup; rm -rf "$prefix"; }
trap cleanup EXIT
display_start
wine_prefix_create "$prefix"

# Waits for a window whose title matches, prints its X id.
wait_window() {
  local pattern=$1 deadline=$((SECONDS + 60)) id
  while ((SECONDS < deadline)); do
    id=$(xdotool search --onlyvisible --name "$pattern" 2>/dev/null | head -1 || true)
    if [[ -n "$id" ]]; then echo "$id"; return 0; fi
    sleep 0.2
  done
  echo "no window matching '$pattern'" >&2
  return 1
}

# Photographs one window once its contents stop changing.
shoot() {
  local id=$1 file=$2 previous="" current
  for _ in $(seq 1 50); do
    current=$(import -window "$id" rgb:- 2>/dev/null | md5sum)
    [[ "$current" == "$previous" ]] && break
    previous=$current
    sleep 0.2
  done
  import -window "$id" "$file"
  echo "wrote $file"
}

# The screen's scale as Windows keeps it: 96 DPI is 100 %.
set_dpi() {
  wine reg add 'HKCU\Control Panel\Desktop' /v LogPixels /t REG_DWORD /d "$1" /f >/dev/null 2>&1 </dev/null
}

# The main window, then the report after a click on its System report button
# (at x, y in the main window: its place grows with the screen's scale).
windows() {
  local locale=$1 name=$2 main_title=$3 report_title=$4 x=$5 y=$6
  LC_ALL=$locale wine "$exe" >/dev/null 2>&1 </dev/null &
  local id report
  id=$(wait_window "$main_title")
  shoot "$id" "$out/main-$name.png"
  xdotool mousemove --window "$id" "$x" "$y" click 1
  report=$(wait_window "^$report_title\$")
  shoot "$report" "$out/report-$name.png"
  wineserver -k >/dev/null 2>&1 || true
  wineserver -p >/dev/null 2>&1 </dev/null
}

windows en_US.UTF-8 en '^Orvane Diagnostics' 'System report' 135 45
windows fr_FR.UTF-8 fr '^Diagnostics Orvane' 'Rapport Syst.me' 135 45
# 150 %, the most common laptop setting.
set_dpi 144
windows en_US.UTF-8 en-144dpi '^Orvane Diagnostics' 'System report' 202 67

# The About box at 144 DPI: the system menu opens from the caption's icon,
# and its last entry, at this scale, is 315 pixels down.
LC_ALL=en_US.UTF-8 wine "$exe" >/dev/null 2>&1 </dev/null &
main=$(wait_window '^Orvane Diagnostics')
xdotool mousemove --window "$main" 10 10 click 1
sleep 1
xdotool mousemove 140 315 click 1
shoot "$(wait_window '^About Orvane Diagnostics$')" "$out/about-en-144dpi.png"
wineserver -k >/dev/null 2>&1 || true
