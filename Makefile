# SPDX-License-Identifier: Apache-2.0
# The commands that a person types. Each does its own set-up: it installs the packages of its purposes
# (packages.txt), and builds what it needs and no more.

PRESET ?= default
BUILD = build/$(PRESET)
JOBS ?= $(shell nproc)
export JOBS

# Directories have some of the names, too.
.PHONY: $(shell sed -nE 's/^([a-z0-9-]+):.*/\1/p' Makefile)

help: ## show this list
	@awk -F ':.*## ' '/^## /{ printf "\n%s\n", substr($$0, 4) } \
		/^[a-z0-9-]+:.*## /{ printf "  make %-13s%s\n", $$1, $$2 }' Makefile

packages = @tools/install-packages.sh
# Tests, once asked for, stay part of the default build: nothing is built again for it.
with_tests = $(PRESET) -DORVO_TESTS=ON

## To look at it

run: ## boot the default simulated device and walk through what the library does
	$(packages) run
	@tools/build.sh $(PRESET) camerasim
	@$(BUILD)/bin/camerasim tour simulator/devices/headset

up: ## boot the default simulated device and stay until Ctrl-C
	$(packages) run
	@tools/build.sh $(PRESET) camerasim
	@$(BUILD)/bin/camerasim up simulator/devices/headset

## To work on it

# The maintainer's loop: one file of provider/ or mapper/ edited, and this.
check: ## build and run the library's own tests
	$(packages) run test
	@tools/build.sh $(with_tests) library_tests
	@ctest --test-dir $(BUILD) --output-on-failure -j $(JOBS) -L '^library$$'

test: build ## build and run all tests
	@ctest --test-dir $(BUILD) --output-on-failure -j $(JOBS) $(CTEST_OPTIONS)

build: ## build everything with g++
	$(packages) run test
	@tools/build.sh $(with_tests) all

storm: ## kill providers and the service at random for minutes (ORVO_STORM_KILLS, ORVO_STORM_SEED)
	$(packages) run test
	@tools/build.sh $(with_tests) simulator_device_tests
	@ORVO_STORM_KILLS=$${ORVO_STORM_KILLS:-200} \
		ctest --test-dir $(BUILD) --output-on-failure --verbose -R '/StormTest\.'

lint: ## check layout, formatting and static analysis
	$(packages) run test clang lint
	@tools/build.sh clang generated_headers
	@tools/lint.sh build/clang

clang: ## build everything with clang
	$(packages) run test clang
	@tools/build.sh clang $(TARGETS)

## To look deeper

# Fuzzers run for so long each.
FUZZ_SECONDS ?= 60

# Narrow them with, for example, TARGETS=host_tests CTEST_OPTIONS='-L host'.
TARGETS ?= all

asan: ## build with the address, leak and undefined behaviour sanitizers and run all tests
	$(packages) run test clang
	@tools/build.sh asan $(TARGETS)
	@ctest --test-dir build/asan --output-on-failure -j $(JOBS) $(CTEST_OPTIONS)

tsan: ## build with the thread sanitizer and run all tests
	$(packages) run test clang
	@tools/build.sh tsan $(TARGETS)
	@ctest --test-dir build/tsan --output-on-failure -j $(JOBS) $(CTEST_OPTIONS)

fuzz: ## run every fuzzer for FUZZ_SECONDS; what they find stays in build/fuzz/findings
	$(packages) run test clang
	@tools/build.sh asan fuzzers
	@fuzz/run.sh build/asan $(FUZZ_SECONDS)

bench: ## measure what every call costs, and write docs/performance.md
	$(packages) run test bench
	@tools/build.sh $(with_tests) all
	@python3 -B benchmarks/bench.py $(BUILD)

# The unit tests of provider/ and mapper/, those of host/ that talk to no other process, and two that
# do, for what a message carries.
UNIT_TESTS = mapper_tests provider_tests provider_device_map_tests provider_entry_point_tests \
	provider_library_tests
HOST_UNIT_TESTS = host_unit_tests passthrough_test malformed_message_test

coverage: ## say which lines of provider/ and mapper/ the tests run; fail on one they do not
	$(packages) run test coverage
	@tools/build.sh coverage library_tests
	@python3 -B tools/coverage.py build/coverage $(UNIT_TESTS)

valgrind: ## run the unit tests under valgrind
	$(packages) run test
	@tools/build.sh $(with_tests) library_tests host_tests
	@tools/valgrind.sh $(BUILD) $(UNIT_TESTS) $(HOST_UNIT_TESTS)

interleavings: ## try every order of two and of three things that happen at once
	$(packages) run test
	@tools/build.sh $(with_tests) interleavings
	@$(BUILD)/bin/interleavings explore 2 0 1
	@$(BUILD)/bin/interleavings explore 3 0 2 & half=$$!; \
		$(BUILD)/bin/interleavings explore 3 1 2; ended=$$?; wait $$half && exit $$ended

reliability: ## write docs/reliability.md, the table of faults, from the tests' output
	$(packages) run test
	@tools/build.sh $(with_tests) library_tests interleavings
	@ctest --test-dir $(BUILD) --output-on-failure -j $(JOBS) -L '^library$$' -E '^reliability/'
	@python3 -B tools/reliability.py $(BUILD)

# The library, the host platform and their tests; a simulated device starts its programs from inside
# a namespace, where the kernel would have to know the emulator. Left out is what qemu's user mode
# cannot do: tell waiters of a mutex that its owner was killed, take a call stack, open a terminal.
ARM64_LEFT_OUT = \
	AKilledWriter|CommittedBeforeItWasKilled|ErrorIfUncheckedLogsAnErrorWithTheStack|ATerminalThat
arm64: ## cross-compile for 64-bit Arm and run the tests under qemu
	$(packages) run test arm64
	@tools/arm64-sysroot.sh build/arm64-sysroot
	@tools/build.sh arm64 library_tests host_tests
	@ctest --test-dir build/arm64 --output-on-failure -j $(JOBS) -L 'library|host' \
		-E '$(ARM64_LEFT_OUT)'

## To give it to others

PREFIX ?= /usr/local
install: ## install the tools under PREFIX (default: /usr/local)
	$(packages) run
	@tools/build.sh $(PRESET) installed_files
	@cmake --install $(BUILD) --prefix $(PREFIX)

deb: ## pack the tools as build/orvo-camera-tools_<version>_<architecture>.deb
	$(packages) run test
	@tools/build.sh $(PRESET) installed_files
	@cpack --config $(BUILD)/CPackConfig.cmake -B build

docs: ## make the reference of the headers, build/docs/html/index.html
	$(packages) docs
	@mkdir -p build/docs
	@ORVO_DOCS_DIR=build/docs \
		ORVO_VERSION=$$(sed -n 's/^project(.* VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt) \
		doxygen docs/Doxyfile

setup: ## install all packages that any of these needs
	$(packages)

clean: ## remove everything that was built
	@rm -rf build
