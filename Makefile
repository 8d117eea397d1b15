# Build, run, test and benchmark Orvane on Debian 12.
#
# Every target first installs whatever packages are missing
# (scripts/install-deps.sh, through sudo when not root), configures build/
# once with CMake and Ninja, then builds. Nothing reads standard input.
#
#   make run     build and start the program
#   make test    build and run every test
#   make bench   build and run every benchmark
#   make install install the program and register it with the desktop
#   make build   only build;  make clean   remove build/

BUILD_DIR  ?= build
BUILD_TYPE ?= RelWithDebInfo
# What `make run` starts: the desktop application (`make run RUN_ARGS=--help`
# and the like run the command line instead).
RUN_PROGRAM ?= $(BUILD_DIR)/cli/orvane
RUN_ARGS    ?=
# Where `make install` puts the program, its desktop entry, file type and
# icons: the user's own folders unless PREFIX says otherwise.
PREFIX      ?= $(HOME)/.local

.PHONY: all deps configure build run install test bench clean
.DEFAULT_GOAL := build
all: build

deps:
	bash scripts/install-deps.sh </dev/null

# Configure only when there is no build yet; afterwards Ninja re-runs CMake
# by itself when a CMakeLists.txt changes.
$(BUILD_DIR)/build.ninja: | deps
	cmake -S . -B $(BUILD_DIR) -G Ninja -DCMAKE_BUILD_TYPE=$(BUILD_TYPE) </dev/null

configure: deps $(BUILD_DIR)/build.ninja

build: configure
	ninja -C $(BUILD_DIR) </dev/null

run: build
	$(RUN_PROGRAM) $(RUN_ARGS) </dev/null

install: build
	cmake --install $(BUILD_DIR) --prefix $(PREFIX) </dev/null

test: build
	ctest --test-dir $(BUILD_DIR) --output-on-failure -j2 </dev/null

bench: build
	@ran=0; missed=""; \
	for program in $(BUILD_DIR)/bench/orvane_*_bench; do \
	  [ -x "$$program" ] || continue; \
	  echo "== $$program"; \
	  "$$program" </dev/null || missed="$$missed $${program##*/}"; \
	  ran=$$((ran + 1)); \
	done; \
	if [ "$$ran" -eq 0 ]; then echo "No benchmarks built in $(BUILD_DIR)/bench."; fi; \
	if [ -n "$$missed" ]; then echo "Missed a target or failed:$$missed"; exit 1; fi

clean:
	rm -rf $(BUILD_DIR)
