#!/usr/bin/env bash
# Packs a release into build/dist/: a zip of the program, the report checker,
# the README and the licence, and SHA256SUMS listing the zip and each file in
# it. The zip's files are also left unpacked beside it, so that
#   cd build/dist && sha256sum -c SHA256SUMS
# checks everything. Expects the Windows build to be done (make dist does it).
set -euo pipefail
cd "$(dirname "$0")/.."

build=${DIAG_BUILD_DIR:-build}
# The version of the build being packed, as CMake took it from project().
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt" 2>/dev/null || true)
if [[ -z "$version" ]]; then
  echo "No configured build in $build: run 'make build' first." >&2
  exit 1
fi

files=("$build/bin/OrvaneDiagnostics.exe" "$build/bin/reportcheck.exe" README.md LICENSE)
for f in "${files[@]}"; do
  [[ -f "$f" ]] || { echo "Missing $f" >&2; exit 1; }
done

# The promise is "copy one exe, nothing to install", and safe to run from any
# folder: no MinGW runtime DLL among the imports, and no static import that the
# loader could take from beside the program (scripts/check-imports.sh).
if ! scripts/check-imports.sh "${files[@]:0:2}"; then
  echo "Refusing to pack: see the imports above." >&2
  exit 1
fi

name=OrvaneDiagnostics-$version-win64
dist=$build/dist
rm -rf "$dist"
mkdir -p "$dist/$name"
cp "${files[@]}" "$dist/$name/"

# Same inputs, same zip: entries sorted, dated from the last commit (or
# SOURCE_DATE_EPOCH), with no owner or local time in them.
epoch=${SOURCE_DATE_EPOCH:-$(git log -1 --format=%ct 2>/dev/null || date +%s)}
(
  cd "$dist"
  python3 - "$name" "$epoch" <<'PY'
import os, sys, time, zipfile

folder, epoch = sys.argv[1], int(sys.argv[2])
stamp = time.gmtime(max(epoch, 315532800))[:6]  # zip dates start in 1980
with zipfile.ZipFile(folder + ".zip", "w", zipfile.ZIP_DEFLATED, compresslevel=9) as archive:
    for entry in sorted(os.listdir(folder)):
        info = zipfile.ZipInfo(folder + "/" + entry, stamp)
        info.compress_type = zipfile.ZIP_DEFLATED
        info.external_attr = (0o755 if entry.endswith(".exe") else 0o644) << 16
        with open(os.path.join(folder, entry), "rb") as source:
            archive.writestr(info, source.read())
PY
  sha256sum "$name.zip" "$name"/* > SHA256SUMS
  sha256sum --quiet -c SHA256SUMS
)

echo "Release $version in $dist/:"
sed 's/^/  /' "$dist/SHA256SUMS"
