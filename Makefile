# Build, run, test and benchmark Orvane on Debian 12.
#
# Every target first installs whatever packages are missing
# (scripts/install-deps.sh, through sudo when not root), configures build/
# once with CMake and Ninja, then builds. Nothing reads standard input.
#
#   make run     build and start the program
#   make test    build and run every test
#   make bench   build and run every benchmark
#   make build   only build;  make clean   remove build/

BUILD_DIR  ?= build
BUILD_TYPE ?= RelWithDebInfo
# What `make run` starts. The desktop application takes the place of --help
# once it exists; until then, `make run RUN_ARGS=--version` and the like work.
RUN_PROGRAM ?= $(BUILD_DIR)/cli/orvane
RUN_ARGS    ?= --help

.PHONY: all deps configure build run test bench clean
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
