# Orvane Diagnostics: build, run and test on Debian 12.
#   make report builds and writes report.txt (this machine, as Wine shows it)
#   make run    builds and starts the program under Wine
#   make test   builds and runs every test
#   make dist   builds and packs the release zip into build/dist/
.PHONY: all deps build native report run test dist clean

all: build

deps:
	@scripts/deps.sh

build: deps
	@cmake --preset mingw >/dev/null
	@cmake --build --preset mingw

native: deps
	@cmake --preset native >/dev/null
	@cmake --build --preset native

report: build native
	@scripts/report.sh "$(CURDIR)"

run: build
	@scripts/run.sh

test: build native
	@scripts/test.sh

dist: build
	@scripts/dist.sh

clean:
	rm -rf build build-native
