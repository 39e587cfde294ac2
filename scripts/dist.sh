#!/usr/bin/env bash
# Packs a release into build/dist/: a zip of the program, the report checker,
# the README and the licence; a second zip, "-tests", of every Windows test
# program with the helpers and fixtures it starts or reads and run-tests.cmd,
# which runs them all on a Windows machine without build tools; and
# SHA256SUMS listing both zips and each file in them. The zips' files are
# also left unpacked beside them, so that
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
# The tests find their helpers and fixtures beside their own exe, so the
# test zip is one flat folder, as build/bin is.
bin=$build/bin
# What each test program starts or reads beside itself (tests/CMakeLists.txt,
# the add_dependencies of each): the product's two programs, the report
# printers, the file locker, the version fixtures, and the planting tests'
# library and control program.
test_files=("$bin"/unit_tests.exe "$bin"/report_tests.exe "$bin"/reportcheck_tests.exe "$bin"/e2e_tests.exe
  "$bin"/report_printer.exe "$bin"/report_printer_unversioned.exe "$bin"/file_locker.exe
  "$bin"/fixture_version_{neutral,english,french,both,blanks}.dll "$bin"/planted_library.dll
  "$bin"/plant_control.exe "$bin"/OrvaneDiagnostics.exe "$bin"/reportcheck.exe)
for f in "${files[@]}" "${test_files[@]}"; do
  [[ -f "$f" ]] || { echo "Missing $f" >&2; exit 1; }
done
# A fixture added to the build but not to the list above would only show as
# a test failing on the other machine: every program and library in the
# build's bin folder is packed, or is one of the benchmarks, which no test
# starts.
for f in "$bin"/*.exe "$bin"/*.dll; do
  [[ -e "$f" ]] || continue
  case $(basename "$f") in bench_*) continue ;; esac
  packed=0
  for t in "${test_files[@]}"; do [[ "$t" == "$f" ]] && packed=1; done
  if ((!packed)); then
    echo "$f is in the build but not in the test zip: add it to test_files in $0 (or leave it out here, saying why)." >&2
    exit 1
  fi
done

# The promise is "copy one exe, nothing to install", and safe to run from any
# folder: no MinGW runtime DLL among the imports, and no static import that the
# loader could take from beside the program (scripts/check-imports.sh).
if ! scripts/check-imports.sh "${files[@]:0:2}"; then
  echo "Refusing to pack: see the imports above." >&2
  exit 1
fi
# The test programs keep the "nothing to install" promise too, for a machine
# without build tools.
for exe in "${test_files[@]}"; do
  if x86_64-w64-mingw32-objdump -p "$exe" | grep -iE 'DLL Name: *lib(stdc\+\+|gcc|winpthread)'; then
    echo "$exe needs a MinGW runtime DLL: it must be linked -static." >&2
    exit 1
  fi
done

name=OrvaneDiagnostics-$version-win64
tests_name=$name-tests
# DIAG_DIST_DIR packs elsewhere (the suite's own check of the test zip does),
# into a folder that must be new or empty: it is not cleared.
dist=${DIAG_DIST_DIR:-$build/dist}
if [[ -n "${DIAG_DIST_DIR:-}" ]]; then
  if [[ -e "$dist" && -n "$(ls -A "$dist")" ]]; then
    echo "DIAG_DIST_DIR=$dist is not empty" >&2
    exit 1
  fi
else
  rm -rf "$dist"
fi
mkdir -p "$dist/$name" "$dist/$tests_name"
cp "${files[@]}" "$dist/$name/"
cp "${test_files[@]}" "$dist/$tests_name/"
# cmd.exe wants its scripts with CR LF line ends.
sed 's/\r*$/\r/' tests/support/run-tests.cmd > "$dist/$tests_name/run-tests.cmd"

# Same inputs, same zip: entries sorted, dated from the last commit (or
# SOURCE_DATE_EPOCH), with no owner or local time in them.
epoch=${SOURCE_DATE_EPOCH:-$(git log -1 --format=%ct 2>/dev/null || date +%s)}
(
  cd "$dist"
  python3 - "$epoch" "$name" "$tests_name" <<'PY'
import os, sys, time, zipfile

epoch, folders = int(sys.argv[1]), sys.argv[2:]
stamp = time.gmtime(max(epoch, 315532800))[:6]  # zip dates start in 1980
for folder in folders:
    with zipfile.ZipFile(folder + ".zip", "w", zipfile.ZIP_DEFLATED, compresslevel=9) as archive:
        for entry in sorted(os.listdir(folder)):
            info = zipfile.ZipInfo(folder + "/" + entry, stamp)
            info.compress_type = zipfile.ZIP_DEFLATED
            info.external_attr = (0o755 if entry.endswith((".exe", ".cmd")) else 0o644) << 16
            with open(os.path.join(folder, entry), "rb") as source:
                archive.writestr(info, source.read())
PY
  sha256sum "$name.zip" "$name"/* "$tests_name.zip" "$tests_name"/* > SHA256SUMS
  sha256sum --quiet -c SHA256SUMS
)

echo "Release $version in $dist/:"
sed 's/^/  /' "$dist/SHA256SUMS"
