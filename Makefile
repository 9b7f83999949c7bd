# Front door over the CMake presets (CMakePresets.json).
#   make test    Debug build with caller-contract checks, all tests through ctest
#   make demo    release build, runs the demo into out/demo
#   make bench   release build, runs the benchmarks
#   make asan    the test suite under AddressSanitizer + UndefinedBehaviorSanitizer
#   make tsan    the test suite under ThreadSanitizer
#   make python-example  the Python package installed from the release build,
#                the warp figure drawn from the install (out/python/warps.png)

SHELL := /bin/bash

DEMO_OUT ?= out/demo
BENCH_ARGS ?=

.PHONY: all deps test demo bench asan tsan fuzz format clean python-example

all: test

deps:
	@cmake/install-deps.sh

test: deps
	cmake --preset test
	cmake --build --preset test
	ctest --preset test

# The demo's own packages (ray tracer, PNG writer, OBJ reader) come on top of
# the build's; `make test` never needs them.
DEMO_PACKAGES = libembree-dev libpng-dev libtinyobjloader-dev

demo:
	@cmake/install-deps.sh $(DEMO_PACKAGES)
	cmake --preset release
	cmake --build --preset release --target sampling_demo
	build/release/examples/sampling_demo --out $(DEMO_OUT)

bench: deps
	cmake --preset release
	cmake --build --preset release --target sampling_bench
	build/release/bench/sampling_bench $(BENCH_ARGS)

# The Python example runs from a clean install of the release build, with the
# interpreter the build found (the one that sees Debian's NumPy); matplotlib
# (python3-matplotlib) only for the example.
PYTHON_PREFIX ?= out/python/install
python-example:
	@cmake/install-deps.sh python3-matplotlib
	cmake --preset release -DSAMPLING_BUILD_PYTHON=ON
	cmake --build --preset release --target sampling_python
	rm -rf $(PYTHON_PREFIX) && cmake --install build/release --prefix $(PYTHON_PREFIX)
	PYTHONPATH=$(PYTHON_PREFIX)/lib/python3/dist-packages \
	  $$(sed -n 's/^SAMPLING_PYTHON_EXECUTABLE:INTERNAL=//p' build/release/CMakeCache.txt) \
	  examples/python/plot_warps.py out/python/warps.png

asan: deps
	cmake --preset asan
	cmake --build --preset asan
	ctest --preset asan

tsan: deps
	cmake --preset tsan
	cmake --build --preset tsan
	ctest --preset tsan

format:
	git ls-files '*.h' '*.cc' | xargs clang-format -i

clean:
	rm -rf build out

# Every fuzz harness for FUZZ_SECONDS seconds, starting from its seed corpus
# (new inputs go to a scratch folder, the checked-in corpus is only read).
# FUZZ_FLAGS adds libFuzzer flags: CI passes a fixed -seed, so that a run
# explores the same inputs every time and a red run can be repeated.
FUZZ_SECONDS ?= 60
FUZZ_FLAGS ?=
fuzz: deps
	cmake --preset fuzz
	cmake --build --preset fuzz
	@set -eo pipefail; for harness in build/fuzz/tests/fuzz/fuzz_*; do \
	  name=$$(basename $$harness); scratch=$$(mktemp -d); \
	  echo "== $$name for $(FUZZ_SECONDS) s"; \
	  $$harness -max_total_time=$(FUZZ_SECONDS) $(FUZZ_FLAGS) -print_final_stats=1 $$scratch tests/fuzz/corpus/$$name 2>&1 | \
	    grep -E 'stat::number_of_executed_units|ERROR|invariant|SUMMARY|Test unit written'; \
	  rm -rf $$scratch; \
	done
