#!/usr/bin/env bash
# reportcheck page in headless Chromium: time to interactive, sorting, size,
# and the command's own time against show --json (bench/page-bench.js,
# bench/PAGE-RESULTS.md). Native; the reportcheck measured is an optimised
# build without sanitizers, in build-bench-native/.
set -euo pipefail
cd "$(dirname "$0")/.."
build=build-bench-native
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DDIAG_SANITIZE=OFF >/dev/null
cmake --build "$build" --target reportcheck >/dev/null
node bench/page-bench.js "$build/bin/reportcheck" "${DIAG_PAGE_RESULTS:-bench/PAGE-RESULTS.md}"
