#!/usr/bin/env bash
# Runs every test: the host build's tests (sanitizers), then the Windows
# build's unit and end-to-end tests under Wine, in a throwaway prefix and,
# when there is no display, a private Xvfb.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/wine-env.sh

jobs=${DIAG_TEST_JOBS:-2}
status=0

echo "== Host tests (AddressSanitizer, UBSan)"
ctest --test-dir "${DIAG_NATIVE_BUILD_DIR:-build-native}" --output-on-failure -j "$jobs" || status=1

echo "== Report page in headless Chromium (tests/page)"
page_reportcheck="$(realpath "${DIAG_NATIVE_BUILD_DIR:-build-native}")/bin/reportcheck"
(cd tests/page && DIAG_REPORTCHECK="$page_reportcheck" npx --no-install playwright test) || status=1

echo "== Fuzz smoke (libFuzzer, AddressSanitizer, UBSan: ${DIAG_FUZZ_SMOKE_SECONDS:-15} s per target)"
DIAG_FUZZ_BUILD_DIR="${DIAG_FUZZ_BUILD_DIR:-build-fuzz}" scripts/fuzz.sh --smoke || status=1

prefix=$(mktemp -d /tmp/orvane-diag-wine.XXXXXX)
cleanup() {
  wine_cleanup
  rm -rf "$prefix"
}
trap cleanup EXIT

echo "== Preparing a Wine prefix in $prefix"
display_start
wine_prefix_create "$prefix"

echo "== Windows tests under Wine"
ctest --test-dir "${DIAG_BUILD_DIR:-build}" --output-on-failure -j "$jobs" --timeout 600 || status=1
exit $status
