# SPDX-License-Identifier: Apache-2.0
# The commands that a person types. Each does its own set-up.

BUILD ?= build/default
PRESET ?= default
JOBS ?= $(shell nproc)

.PHONY: run up test asan tsan fuzz bench build arm64 setup coverage reliability valgrind lint clang install deb docs clean help

help: ## show this list
	@grep -hE '^[a-z0-9]+:.*##' $(MAKEFILE_LIST) | sed -E 's/^([a-z0-9]+):.*## (.*)/make \1\t\2/' | expand -t 14

run: build ## boot the default simulated device and walk through what the library does
	@$(BUILD)/bin/camerasim tour simulator/devices/headset

up: build ## boot the default simulated device and stay until Ctrl-C
	@$(BUILD)/bin/camerasim up simulator/devices/headset

test: build ## build and run all tests
	@ctest --test-dir $(BUILD) --output-on-failure -j $(JOBS)

build: setup ## build everything with g++
	@cmake --preset $(PRESET) >$(BUILD).configure.log 2>&1 || { cat $(BUILD).configure.log; exit 1; }
	@cmake --build $(BUILD) -j $(JOBS)

clang: setup ## build everything with clang
	@$(MAKE) --no-print-directory build PRESET=clang BUILD=build/clang

# The library, the host platform and their tests; a simulated device starts its programs from inside
# a namespace, where the kernel would have to know the emulator.
ARM64_PARTS = mapper provider host tests/mapper tests/provider tests/host
# Left out is what qemu's user mode cannot do: tell waiters of a mutex that its owner was killed, and
# take a call stack.
ARM64_LEFT_OUT = AKilledWriter|CommittedBeforeItWasKilled|ErrorIfUncheckedLogsAnErrorWithTheStack
arm64: setup ## cross-compile for 64-bit Arm and run the tests under qemu
	@tools/arm64-sysroot.sh build/arm64-sysroot
	@cmake --preset arm64 >build/arm64.configure.log 2>&1 || { cat build/arm64.configure.log; exit 1; }
	@cmake --build build/arm64 --target $(ARM64_PARTS:=/all) -j $(JOBS)
	@for part in mapper provider host; do \
		ctest --test-dir build/arm64/tests/$$part --output-on-failure -j $(JOBS) \
			-E '$(ARM64_LEFT_OUT)' || exit 1; \
	done

bench: build ## measure what every call costs, and write docs/performance.md
	@python3 -B benchmarks/bench.py $(BUILD)

# Fuzzers run for so long each.
FUZZ_SECONDS ?= 60

asan: ## build with the address, leak and undefined behaviour sanitizers and run all tests
	@$(MAKE) --no-print-directory build PRESET=asan BUILD=build/asan
	@ctest --test-dir build/asan --output-on-failure -j $(JOBS) $(CTEST_OPTIONS)

tsan: ## build with the thread sanitizer and run all tests
	@$(MAKE) --no-print-directory build PRESET=tsan BUILD=build/tsan
	@ctest --test-dir build/tsan --output-on-failure -j $(JOBS)

fuzz: setup ## run every fuzzer for FUZZ_SECONDS; what they find stays in build/fuzz/findings
	@cmake --preset asan >build/asan.configure.log 2>&1 || { cat build/asan.configure.log; exit 1; }
	@cmake --build build/asan --target fuzzers -j $(JOBS)
	@fuzz/run.sh build/asan $(FUZZ_SECONDS)

setup: ## install what is missing of packages.txt
	@mkdir -p $(dir $(BUILD))
	@tools/install-packages.sh packages.txt

lint: setup ## check layout, formatting and static analysis
	@cmake --preset clang >build/clang.configure.log 2>&1 || { cat build/clang.configure.log; exit 1; }
	@tools/lint.sh build/clang

# The unit tests of provider/ and mapper/, those of host/ that talk to no other process, and two that
# do, for what a message carries.
UNIT_TESTS = mapper_tests provider_tests provider_device_map_tests provider_entry_point_tests \
	provider_library_tests
HOST_UNIT_TESTS = property_test vintf_manifest_test service_registry_test hidl_base_test \
	hidl_transport_test hidl_interfaces_test parcel_test provider_shim_test passthrough_test \
	malformed_message_test

coverage: setup ## say which lines of provider/ and mapper/ the tests run; fail on one they do not
	@cmake --preset coverage >build/coverage.configure.log 2>&1 || \
		{ cat build/coverage.configure.log; exit 1; }
	@cmake --build build/coverage --target $(UNIT_TESTS) -j $(JOBS)
	@python3 -B tools/coverage.py build/coverage $(UNIT_TESTS)

reliability: build ## write docs/reliability.md, the table of faults, from the tests' output
	@python3 -B tools/reliability.py $(BUILD)

valgrind: build ## run the unit tests under valgrind
	@tools/valgrind.sh $(BUILD) $(UNIT_TESTS) $(HOST_UNIT_TESTS)

PREFIX ?= /usr/local
install: build ## install the tools under PREFIX (default: /usr/local)
	@cmake --install $(BUILD) --prefix $(PREFIX)

deb: build ## pack the tools as build/orvo-camera-tools_<version>_<architecture>.deb
	@cpack --config $(BUILD)/CPackConfig.cmake -B build

docs: setup ## make the reference of the headers, build/docs/html/index.html
	@mkdir -p build/docs
	@ORVO_DOCS_DIR=build/docs \
		ORVO_VERSION=$$(sed -n 's/^project(.* VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt) \
		doxygen docs/Doxyfile

clean: ## remove everything that was built
	@rm -rf build
