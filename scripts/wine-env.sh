# Sourced by the scripts that run the program under Wine. Provides:
#   wine_prefix_create DIR   a fresh prefix prepared for the program and its tests
#   wine_prefix_keep         the prefix kept for make run and make report
#   display_start            a private Xvfb when there is no display
#   wine_cleanup             stops what was started
# Each run gets its own throwaway prefix; nothing depends on the machine's own.

export WINEDEBUG=${WINEDEBUG:--all}
export WINEDLLOVERRIDES=${WINEDLLOVERRIDES:-"mscoree,mshtml="}

_xvfb_pid=""

display_start() {
  if [[ -n "${DISPLAY:-}" ]] && xdpyinfo >/dev/null 2>&1; then
    return 0
  fi
  # Xvfb picks a free display itself and tells us its number: two runs
  # starting side by side can never end up on the same display.
  local numberFile number
  numberFile=$(mktemp)
  Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp 3>"$numberFile" >/dev/null 2>&1 &
  _xvfb_pid=$!
  local deadline=$((SECONDS + 30))
  while ((SECONDS < deadline)); do
    # The number arrives as one line; read succeeds once it is whole.
    if read -r number <"$numberFile" && [[ "$number" =~ ^[0-9]+$ ]]; then
      export DISPLAY=":$number"
      rm -f "$numberFile"
      if xdpyinfo >/dev/null 2>&1; then return 0; fi
      break
    fi
    kill -0 "$_xvfb_pid" 2>/dev/null || break
    sleep 0.1
  done
  rm -f "$numberFile"
  echo "Could not start Xvfb" >&2
  return 1
}

wine_prefix_create() {
  export WINEPREFIX="$1"
  wineboot -i >/dev/null 2>&1 </dev/null
  # Without a window manager every hide waits for one unless Wine manages nothing.
  wine reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f >/dev/null 2>&1 </dev/null
  # A fresh prefix has no fonts: Wine's own, plus a fixed-pitch face for "Courier New".
  local fonts="$WINEPREFIX/drive_c/windows/Fonts"
  mkdir -p "$fonts"
  cp -n /usr/share/wine/fonts/* "$fonts"/ 2>/dev/null || true
  cp -n /usr/share/fonts/truetype/liberation/Liberation*.ttf "$fonts"/ 2>/dev/null || true
  wine reg add 'HKCU\Software\Wine\Fonts\Replacements' /v 'Courier New' /d 'Liberation Mono' /f >/dev/null 2>&1 </dev/null
  wine reg add 'HKCU\Software\Wine\Fonts\Replacements' /v 'Arial' /d 'Liberation Sans' /f >/dev/null 2>&1 </dev/null
  wine reg add 'HKCU\Software\Wine\Fonts\Replacements' /v 'Times New Roman' /d 'Liberation Serif' /f >/dev/null 2>&1 </dev/null
  wineserver -w
  # Keep one wineserver for the run, detached from our stdio.
  wineserver -p >/dev/null 2>&1 </dev/null
  wine cmd /c exit >/dev/null 2>&1 </dev/null
}

# The prefix that `make run` and `make report` keep between runs
# (DIAG_WINEPREFIX overrides it), prepared the first time.
wine_prefix_keep() {
  local prefix=${DIAG_WINEPREFIX:-$HOME/.local/share/orvane-diagnostics/wineprefix}
  # The stamp names what the preparation does: a prefix kept from before a
  # change to it (fonts, say) is prepared again, which is safe to repeat.
  local stamp="$prefix/.orvane-prepared-fonts-managed"
  if [[ ! -f "$stamp" ]]; then
    echo "Preparing a Wine prefix in $prefix (once)..."
    mkdir -p "$prefix"
    wine_prefix_create "$prefix"
    touch "$stamp"
  else
    export WINEPREFIX="$prefix"
    wineserver -p >/dev/null 2>&1 </dev/null
  fi
}

wine_cleanup() {
  if [[ -n "${WINEPREFIX:-}" ]]; then
    wineserver -k >/dev/null 2>&1 || true
  fi
  if [[ -n "$_xvfb_pid" ]]; then
    kill "$_xvfb_pid" 2>/dev/null || true
    wait "$_xvfb_pid" 2>/dev/null || true
  fi
}
