# zar: `make demo` builds and shows the library at work, `make check` builds
# and runs every test, `make bench` measures against the peer libraries.
# BUILD selects the build directory, PRESET the configuration (release, asan).
# `make install PREFIX=<dir>` installs the libraries, the headers, zar.pc and
# the CMake package.
PRESET ?= release
PREFIX ?= /usr/local
BUILD ?= build
JOBS ?= $(shell nproc)

.PHONY: all setup build demo check install bench clean asan

all: build

setup:
	@bash tools/setup-deps.sh

$(BUILD)/build.ninja:
	cmake --preset $(PRESET) -B $(BUILD)

build: setup $(BUILD)/build.ninja
	cmake --build $(BUILD) -j $(JOBS)

check: build
	cd $(BUILD) && ctest --output-on-failure -j $(JOBS) --timeout 1500

install: build
	cmake --install $(BUILD) --prefix $(PREFIX)

demo: build
	$(BUILD)/bin/zar info
	$(BUILD)/bin/fft-demo
	@echo "A program built for Debian's FFTW, run on zar's libfftw3:"
	LD_LIBRARY_PATH=$(BUILD)/lib $(BUILD)/bin/fftw_dropin
	$(BUILD)/bin/zar-bench --quick

bench: build
	$(BUILD)/bin/zar-bench

asan:
	$(MAKE) check PRESET=asan BUILD=build-asan

clean:
	rm -rf $(BUILD)
