#!/usr/bin/env bash
# reportcheck page in headless Chromium: time to interactive, sorting, size,
# and the command's own time against show --json (bench/page-bench.js,
# bench/PAGE-RESULTS.md). Native; the reportcheck measured is an optimised
# build without sanitizers, the one users run, in build-native/ (make native).
set -euo pipefail
cd "$(dirname "$0")/.."
source bench/native-bench.sh
user_reportcheck
node bench/page-bench.js "$checker" "${DIAG_PAGE_RESULTS:-bench/PAGE-RESULTS.md}"
