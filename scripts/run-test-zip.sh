#!/usr/bin/env bash
# Runs the test zip of `make dist` as a Windows machine without build tools
# would: the zip alone, copied to a fresh temporary folder and unpacked into
# a fresh Wine prefix whose drive Z: shows an empty folder instead of the
# host's root, so that nothing of the source or build tree can be reached;
# then its run-tests.cmd, under Xvfb. Each call passes when the .cmd's last
# line is "N passed, 0 failed" with N above 0.
#   scripts/run-test-zip.sh [--pack] [RUN...]
#     --pack  packs the zip from the build first, into the temporary folder
#             (otherwise: build/dist/*-win64-tests.zip from `make dist`)
#     RUN     runs of run-tests.cmd to make, one call each (unit_tests,
#             unit_tests-paris, report_tests, reportcheck_tests, e2e_tests,
#             e2e_tests-french, e2e_tests-utf8). Default: every run in one
#             call, then unit_tests-paris and e2e_tests-french again.
# Wine takes a process's time zone and locale from its Unix environment, as
# Windows takes them from the machine's settings, and run-tests.cmd cannot
# set them: each call runs on a "machine" of its own, French in Paris for
# unit_tests-paris and e2e_tests-french (where every other run's tests skip
# and say why), and otherwise English with UTF-8 file names (where those two
# runs' tests skip and say why). DIAG_BUILD_DIR names the build (default build).
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/wine-env.sh

build=$(realpath "${DIAG_BUILD_DIR:-build}")
work=$(mktemp -d /tmp/orvane-test-zip.XXXXXX)
cleanup() {
  wine_cleanup
  rm -rf "$work"
}
trap cleanup EXIT

pack=0
if [[ "${1:-}" == --pack ]]; then
  pack=1
  shift
fi
runs=("$@")
((${#runs[@]})) || runs=(all unit_tests-paris e2e_tests-french)

if ((pack)); then
  DIAG_BUILD_DIR="$build" DIAG_DIST_DIR="$work/dist" scripts/dist.sh >/dev/null
  zips=("$work"/dist/*-win64-tests.zip)
else
  zips=("$build"/dist/*-win64-tests.zip)
fi
if [[ ${#zips[@]} -ne 1 || ! -f "${zips[0]}" ]]; then
  echo "No test zip in $(dirname "${zips[0]}"): run 'make dist' first." >&2
  exit 1
fi
zip_name=$(basename "${zips[0]}")
folder=${zip_name%.zip}
mkdir "$work/alone" "$work/empty"
cp "${zips[0]}" "$work/alone/"
rm -rf "$work/dist"

# A display of its own: the fresh prefix's first start puts up windows that
# would take the focus from the GUI tests running beside it on ctest's display.
unset DISPLAY
display_start
wine_prefix_create "$work/prefix"
# Z: is where Wine shows the host's root: an empty folder instead.
wineserver -k
wineserver -w
ln -sfn "$work/empty" "$WINEPREFIX/dosdevices/z:"
wineserver -p >/dev/null 2>&1 </dev/null
wine cmd /c exit >/dev/null 2>&1 </dev/null
python3 -c 'import sys, zipfile; zipfile.ZipFile(sys.argv[1]).extractall(sys.argv[2])' \
  "$work/alone/$zip_name" "$WINEPREFIX/drive_c"
echo "== $zip_name unpacked alone into C:\\$folder of a fresh prefix"

# The machine each call runs on: its locale and time zone.
machine_of() {
  case $1 in
    unit_tests-paris | e2e_tests-french) echo "LC_ALL=fr_FR.UTF-8 TZ=CET-1CEST,M3.5.0,M10.5.0/3" ;;
    *) echo "LC_ALL=C.UTF-8" ;;
  esac
}

# Started from C:\, since the host's folders are out of reach.
cd "$WINEPREFIX/drive_c"
status=0
for run in "${runs[@]}"; do
  arg=$run
  [[ $run == all ]] && arg=""
  machine=$(machine_of "$run")
  echo "== run-tests.cmd $arg   ($machine)"
  set +e
  env $machine wine cmd /c "C:\\$folder\\run-tests.cmd" $arg </dev/null 2>&1 | tr -d '\r' | tee "$work/output.txt"
  code=${PIPESTATUS[0]}
  set -e
  last=$(tail -n 1 "$work/output.txt")
  if [[ $code -ne 0 || ! "$last" =~ ^([0-9]+)\ passed,\ 0\ failed$ || ${BASH_REMATCH[1]} -eq 0 ]]; then
    echo "run-tests.cmd $arg failed (exit status $code, last line: $last)" >&2
    # What failed, from the logs the .cmd left in the prefix's temporary folder.
    grep -rh -B2 -A8 'Failure' "$WINEPREFIX"/drive_c/users/*/Temp/orvane-tests-*/ 2>/dev/null | head -n 80 >&2 || true
    status=1
  fi
done
exit $status
