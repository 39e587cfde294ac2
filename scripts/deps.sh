#!/usr/bin/env bash
# Installs, from Debian's archive, the packages the build and the tests need
# that are not installed yet, then the page tests' npm packages (pinned by
# tests/page/package-lock.json, with their checksums; no browser download:
# they drive Debian's chromium). Does nothing when everything is there.
set -euo pipefail

packages=(
  cmake ninja-build make g++ clang libclang-rt-14-dev python3
  g++-mingw-w64-x86-64-posix binutils-mingw-w64-x86-64
  googletest nlohmann-json3-dev python3-jsonschema sqlite3
  wine wine64
  xvfb xauth x11-utils xdotool imagemagick
  fonts-wine fonts-liberation
  chromium nodejs
)

missing=()
for p in "${packages[@]}"; do
  status=$(dpkg-query -W -f='${Status}' "$p" 2>/dev/null || true)
  [[ "$status" == "install ok installed" ]] || missing+=("$p")
done

if ((${#missing[@]} > 0)); then
  echo "Installing: ${missing[*]}"
  sudo_cmd=()
  [[ $(id -u) -eq 0 ]] || sudo_cmd=(sudo)
  "${sudo_cmd[@]}" apt-get update -qq
  DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

# npm ci again only when the lock file changed since the last install.
page_tests="$(dirname "$0")/../tests/page"
if ! cmp -s "$page_tests/package-lock.json" "$page_tests/node_modules/.installed-lock.json"; then
  echo "Installing the page tests' npm packages (tests/page)"
  (cd "$page_tests" && PLAYWRIGHT_SKIP_BROWSER_DOWNLOAD=1 PUPPETEER_SKIP_DOWNLOAD=1 \
     npm ci --no-audit --no-fund --loglevel=error && cp package-lock.json node_modules/.installed-lock.json)
fi
