#!/usr/bin/env bash
# Starts the program under Wine. With no display, it runs on a private Xvfb,
# a screenshot is saved under build/screenshots/ and the program is closed.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/wine-env.sh

exe=build/bin/OrvaneDiagnostics.exe
had_display=0
[[ -n "${DISPLAY:-}" ]] && xdpyinfo >/dev/null 2>&1 && had_display=1

trap wine_cleanup EXIT
display_start
wine_prefix_keep

if ((had_display)); then
  wine "$exe" "$@"
  exit 0
fi

mkdir -p build/screenshots
wine "$exe" "$@" >/dev/null 2>&1 </dev/null &
pid=$!
# Wait for the program's window to appear, then photograph the screen.
deadline=$((SECONDS + 60))
while ((SECONDS < deadline)); do
  if xdotool search --name 'Orvane' >/dev/null 2>&1; then break; fi
  sleep 0.2
done
# The window exists before it has painted its bitmaps; give it a moment.
sleep 1
shot=build/screenshots/main-$(date +%Y%m%d-%H%M%S).png
import -window root "$shot"
echo "No display: the program ran on a private Xvfb. Screenshot: $shot"
wineserver -k >/dev/null 2>&1 || true
wait "$pid" 2>/dev/null || true
