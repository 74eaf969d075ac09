# SPDX-License-Identifier: Apache-2.0
#
# Shortcuts for common tasks. CMake does the build; see CMakePresets.json.

SHELL := /bin/bash
.SHELLFLAGS := -euo pipefail -c
.DEFAULT_GOAL := help
.NOTPARALLEL:

JOBS ?= $(shell nproc)
# Extra options for ctest, e.g. CTEST_OPTIONS="-R topology"
CTEST_OPTIONS ?=

# Without a writable home folder, ccache stores its files in the build folder.
ifneq ($(shell test -n "$$HOME" -a -d "$$HOME" -a -w "$$HOME" && echo yes),yes)
ifndef CCACHE_DIR
export CCACHE_DIR := $(CURDIR)/build/ccache
endif
endif

.PHONY: help
help: ## Show this list
	@echo "Usage: make TARGET, with one of these targets:"
	@sed -nE 's/^([a-z-]+):.*## (.*)$$/  \1\t\2/p' $(MAKEFILE_LIST) | expand -t 18

.PHONY: packages
packages: ## Install the Debian packages that the build needs (requires root or sudo)
	@scripts/install-packages.sh

# The demo builds only the products, without tests and benchmarks.
.PHONY: demo
demo: packages ## Build the release and sculpt the example; results in demo-output/
	@echo "== Configuring (preset release)"
	@cmake --preset release -DTROVIK_BUILD_TESTS=OFF -DTROVIK_BUILD_BENCH=OFF
	@echo "== Building"
	@cmake --build --preset release --parallel $(JOBS)
	@echo "== Running the demo"
	@scripts/demo.sh build/release demo-output

.PHONY: test
test: packages ## Build with warnings as errors and run all tests
	@echo "== Configuring (preset ci)"
	@cmake --preset ci
	@echo "== Building"
	@cmake --build --preset ci --parallel $(JOBS)
	@echo "== Testing"
	@ctest --preset ci --parallel $(JOBS) --output-on-failure $(CTEST_OPTIONS)

# The branch to compare changes with.
BASE ?= main

.PHONY: check
check: ## Check format, layers, spelling, phrases and links; run clang-tidy on changes since BASE=main
	@scripts/install-packages.sh --lint
	@scripts/check.sh $(BASE)

.PHONY: studio
studio: packages ## Build the desktop application and start it, FILE=mesh or scene to open
	@cmake --preset release -DTROVIK_BUILD_TESTS=OFF -DTROVIK_BUILD_BENCH=OFF
	@cmake --build --preset release --parallel $(JOBS) --target trovik-studio
	@build/release/bin/trovik-studio $(FILE)

.PHONY: studio-pictures
studio-pictures: packages ## Regenerate the sessions and pictures of docs/studio.md
	@tools/studio/make_examples.py examples/studio
	@cmake --preset release -DTROVIK_BUILD_TESTS=OFF -DTROVIK_BUILD_BENCH=OFF
	@cmake --build --preset release --parallel $(JOBS) --target trovik-studio trovik
	@xvfb-run -a -s "-screen 0 1600x1000x24" tools/studio/play_examples.py . build/release/bin/trovik-studio \
	    build/release/bin/trovik build/studio-pictures --pictures

.PHONY: clang
clang: ## Build the plug-in and the command with Clang and check that results are bit-identical
	@scripts/install-packages.sh --clang
	@echo "== Configuring (preset clang)"
	@cmake --preset clang
	@echo "== Building with Clang"
	@cmake --build --preset clang --parallel $(JOBS)
	@echo "== Testing the Clang build"
	@ctest --preset clang --output-on-failure

.PHONY: mutation
mutation: ## Run the command on damaged files, COUNT=2000 per reader
	@cmake --preset release
	@cmake --build --preset release --parallel $(JOBS) --target trovik SwiftStroke
	@tools/mutation_run.py build/release/bin/trovik --count $(COUNT) --jobs $(JOBS)

.PHONY: asan
asan: packages ## Build with address and undefined-behaviour sanitizers and run all tests
	@cmake --preset asan-ubsan
	@cmake --build --preset asan-ubsan --parallel $(JOBS)
	@ctest --preset asan-ubsan --parallel $(JOBS) --output-on-failure $(CTEST_OPTIONS)

.PHONY: asan-host
asan-host: packages ## Run the tests with sanitizers on everything except the kernels, which halves the build time
	@cmake --preset asan-ubsan-host
	@cmake --build --preset asan-ubsan-host --parallel $(JOBS)
	@ctest --preset asan-ubsan-host --parallel $(JOBS) --output-on-failure $(CTEST_OPTIONS)

.PHONY: bench
bench: packages ## Build the release and run the benchmarks; results in build/release/bench-results/
	@cmake --preset release -DTROVIK_BUILD_TESTS=ON -DTROVIK_BUILD_BENCH=ON
	@cmake --build --preset release --parallel $(JOBS) --target stroke-bench document-bench \
	    display-bench trovik SwiftStroke
	@tools/bench.py run build/release build/release/bench-results

# Mesh sizes in millions of vertices; 64 needs about 8 GB and several minutes.
STEPS ?= 1 4 16 64

.PHONY: bench-ladder
bench-ladder: packages ## Measure the same dab on increasingly large meshes, STEPS="1 4 16 64" million vertices
	@cmake --preset release -DTROVIK_BUILD_TESTS=ON -DTROVIK_BUILD_BENCH=ON
	@cmake --build --preset release --parallel $(JOBS) --target trovik-ladder
	@mkdir -p build/release/bench-results
	@build/release/bin/trovik-ladder build/release/bench-results/ladder.json $(STEPS)

.PHONY: bench-check
bench-check: packages ## List the benchmark ratios that are worse than the recorded ones
	@cmake --preset release -DTROVIK_BUILD_TESTS=ON -DTROVIK_BUILD_BENCH=ON
	@cmake --build --preset release --parallel $(JOBS) --target stroke-bench document-bench \
	    display-bench trovik-ladder
	@tools/bench.py check build/release bench/recorded.json

COUNT ?= 2000

# Fuzzing time per reader; one reader runs per core.
SECONDS ?= 60
READERS ?= obj ply stl gltf scene script journal

.PHONY: fuzz
fuzz: ## Run the fuzzers for the file readers, SECONDS=60 each (needs Clang); findings in build/fuzz/
	@scripts/install-packages.sh --fuzz
	@cmake --preset fuzz
	@cmake --build --preset fuzz --parallel $(JOBS)
	@for reader in $(READERS); do mkdir -p build/fuzz/found/$$reader; done
	@printf '%s\n' $(READERS) | xargs -P $(JOBS) -I NAME bash -c \
	    'log=build/fuzz/NAME.log; \
	    if build/fuzz/bin/NAME-fuzzer -max_total_time=$(SECONDS) -max_len=65536 -timeout=20 \
	        -rss_limit_mb=2048 -artifact_prefix=build/fuzz/NAME- \
	        build/fuzz/found/NAME fuzz/corpus/NAME >$$log 2>&1; \
	    then echo "== NAME: $$(tail -n 1 $$log)"; \
	    else echo "== NAME: found a fault, see $$log"; tail -n 30 $$log; exit 1; fi'

# The build folder of the packages. Its last part is the preset, e.g. BUILD=build/ci.
BUILD ?= build/package

.PHONY: package
package: packages ## Make the Debian packages and the archive of BUILD=build/package, in BUILD/packages/
	@scripts/install-packages.sh --package
	@echo "== Configuring (preset $(notdir $(BUILD)))"
	@cmake --preset $(notdir $(BUILD))
	@echo "== Building and packing"
	@JOBS=$(JOBS) scripts/make-packages.sh $(BUILD)

# Extra options for the check, e.g. CHECK_OPTIONS=--optional.
CHECK_OPTIONS ?=

.PHONY: package-check
package-check: package ## Also install, try and remove them in a new Debian system (needs root and a network)
	@scripts/check-packages.sh $(CHECK_OPTIONS) $(BUILD)/packages

.PHONY: stamps
stamps: packages ## Regenerate the installed stamps in stamps/
	@cmake --preset release
	@cmake --build --preset release --parallel $(JOBS) --target trovik-stamps
	@build/release/bin/trovik-stamps stamps

.PHONY: coverage
coverage: packages ## Run all tests and summarise the coverage (needs gcovr)
	@cmake --workflow --preset coverage
	@scripts/coverage.sh build/coverage

.PHONY: format
format: ## Format the C++ sources in place
	@scripts/format.sh

.PHONY: format-check
format-check: ## List the C++ sources that are not formatted
	@scripts/format.sh --check

.PHONY: tidy
tidy: ## Run clang-tidy over all sources
	@cmake --preset dev
	@scripts/tidy.sh build/dev

.PHONY: clean
clean: ## Remove the build folder and the demo output
	@rm -rf build demo-output
