# Orvane Diagnostics: build, run and test on Debian 12.
#   make report builds and writes report.txt (this machine, as Wine shows it)
#   make run    builds and starts the program under Wine
#   make native builds the Linux reportcheck users run (optimised)
#   make test   builds and runs every test
#   make fuzz   runs every fuzz target for a minute (DIAG_FUZZ_SECONDS)
#   make dist   builds and packs the release zip into build/dist/
#   make bench  builds and runs the benchmarks under Wine, writes bench/RESULTS.md
#   make bench-collect  only reportcheck collect against sha256sum (native)
#   make bench-page     only the report page in headless Chromium (native)
.PHONY: all deps build native native-test fuzz-build fuzz report run test dist bench bench-collect bench-page clean

all: build

deps:
	@scripts/deps.sh

build: deps
	@cmake --preset mingw >/dev/null
	@cmake --build --preset mingw

# reportcheck for Linux users (build-native/bin/reportcheck): optimised, no
# sanitizers; the build refuses a binary that is instrumented.
native: deps
	@cmake --preset native >/dev/null
	@cmake --build --preset native

# The host tests and the reportcheck they run, with AddressSanitizer and UBSan.
native-test: deps
	@cmake --preset native-test >/dev/null
	@cmake --build --preset native-test

fuzz-build: deps
	@cmake --preset fuzz >/dev/null
	@cmake --build --preset fuzz

fuzz: fuzz-build
	@scripts/fuzz.sh

report: build native
	@scripts/report.sh "$(CURDIR)"

run: build
	@scripts/run.sh

test: build native native-test fuzz-build
	@scripts/test.sh

dist: build
	@scripts/dist.sh

bench: build
	@scripts/bench.sh

bench-collect: deps
	@scripts/bench.sh collect

bench-page: deps
	@scripts/bench.sh page

clean:
	rm -rf build build-native build-native-test build-fuzz
