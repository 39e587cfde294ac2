#!/usr/bin/env bash
# reportcheck page in headless Chromium: time to interactive, sorting, size,
# and the command's own time against show --json (bench/page-bench.js,
# bench/PAGE-RESULTS.md). Native; the reportcheck measured is an optimised
# build without sanitizers, the one users run, in build-native/ (make native).
set -euo pipefail
cd "$(dirname "$0")/.."
build=build-native  # the reportcheck users run (make native)
cmake --preset native >/dev/null
cmake --build --preset native >/dev/null
node bench/page-bench.js "$build/bin/reportcheck" "${DIAG_PAGE_RESULTS:-bench/PAGE-RESULTS.md}"
