#!/usr/bin/env bash
# Installs, from Debian's archive, the packages the build and the tests need
# that are not installed yet, unpacks SQLite's amalgamation (below), then
# installs the page tests' npm packages (pinned by tests/page/package-lock.json,
# with their checksums; no browser download: they drive Debian's chromium).
# Does nothing when everything is there.
set -euo pipefail
cd "$(dirname "$0")/.."

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

# npm fetches SQLite below; any npm will do (Debian's when there is none).
command -v npm >/dev/null || missing+=(npm)

if ((${#missing[@]} > 0)); then
  echo "Installing: ${missing[*]}"
  sudo_cmd=()
  [[ $(id -u) -eq 0 ]] || sudo_cmd=(sudo)
  "${sudo_cmd[@]}" apt-get update -qq
  DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

# SQLite, embedded in reportcheck (both builds). Debian has no SQLite built
# for MinGW, so both builds compile the official amalgamation (sqlite3.c and
# sqlite3.h as sqlite.org publishes them), taken from the npm package
# better-sqlite3, which carries it unchanged under deps/sqlite3/. The
# package's version is pinned, and the tarball and both files are checked
# against their SHA-256 before anything is unpacked into deps/sqlite/
# (not committed).
sqlite_package=better-sqlite3@13.2.0   # carries SQLite 3.54.1
sqlite_tarball_sha256=40487589df3496f2ee0079d22b73c63fccebe7db0e8ee9a2c42421861e321e0b
sqlite_c_sha256=75a4760a7b9727a4c4c877aec92eacf39e52a8f2921ce00bd33be6d3a8e8e254
sqlite_h_sha256=d6c84557261893439b341d2e6c35187ae3ea24fbfd843ad94616f72d89242b8c
sqlite_dir=deps/sqlite

sqlite_in_place() {
  [[ -f $sqlite_dir/sqlite3.c && -f $sqlite_dir/sqlite3.h ]] &&
    echo "$sqlite_c_sha256  $sqlite_dir/sqlite3.c
$sqlite_h_sha256  $sqlite_dir/sqlite3.h" | sha256sum --check --status
}

if ! sqlite_in_place; then
  echo "Fetching SQLite's amalgamation ($sqlite_package)"
  work=$(mktemp -d)
  trap 'rm -rf "$work"' EXIT
  (cd "$work" && npm pack --silent "$sqlite_package" >/dev/null)
  tarball=$(echo "$work"/*.tgz)
  echo "$sqlite_tarball_sha256  $tarball" | sha256sum --check --quiet
  tar -xzf "$tarball" -C "$work" package/deps/sqlite3/sqlite3.c package/deps/sqlite3/sqlite3.h
  echo "$sqlite_c_sha256  $work/package/deps/sqlite3/sqlite3.c
$sqlite_h_sha256  $work/package/deps/sqlite3/sqlite3.h" | sha256sum --check --quiet
  mkdir -p "$sqlite_dir"
  # Into place only once checked, each file whole or not at all.
  for file in sqlite3.c sqlite3.h; do
    mv "$work/package/deps/sqlite3/$file" "$sqlite_dir/$file.new"
    mv "$sqlite_dir/$file.new" "$sqlite_dir/$file"
  done
fi

# npm ci again only when the lock file changed since the last install.
page_tests=tests/page
if ! cmp -s "$page_tests/package-lock.json" "$page_tests/node_modules/.installed-lock.json"; then
  echo "Installing the page tests' npm packages (tests/page)"
  (cd "$page_tests" && PLAYWRIGHT_SKIP_BROWSER_DOWNLOAD=1 PUPPETEER_SKIP_DOWNLOAD=1 \
     npm ci --no-audit --no-fund --loglevel=error && cp package-lock.json node_modules/.installed-lock.json)
fi
