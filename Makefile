# SPDX-License-Identifier: Apache-2.0
# The commands that a person types. Each does its own set-up.

BUILD ?= build/default
PRESET ?= default
JOBS ?= $(shell nproc)

.PHONY: run test build setup lint clang clean help

help: ## show this list
	@grep -hE '^[a-z]+:.*##' $(MAKEFILE_LIST) | sed -E 's/^([a-z]+):.*## (.*)/make \1\t\2/' | expand -t 14

run: build ## boot the default simulated device and walk through what the library does
	@$(BUILD)/bin/camerasim tour simulator/devices/headset

test: build ## build and run all tests
	@ctest --test-dir $(BUILD) --output-on-failure -j $(JOBS)

build: setup ## build everything with g++
	@cmake --preset $(PRESET) >$(BUILD).configure.log 2>&1 || { cat $(BUILD).configure.log; exit 1; }
	@cmake --build $(BUILD) -j $(JOBS)

clang: setup ## build everything with clang
	@$(MAKE) --no-print-directory build PRESET=clang BUILD=build/clang

setup: ## install what is missing of packages.txt
	@mkdir -p $(dir $(BUILD))
	@tools/install-packages.sh packages.txt

lint: setup ## check layout, formatting and static analysis
	@cmake --preset clang >build/clang.configure.log 2>&1 || { cat build/clang.configure.log; exit 1; }
	@tools/lint.sh build/clang

clean: ## remove everything that was built
	@rm -rf build
