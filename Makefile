# Entry points. `make check` is what CI runs: a Release build with its tests, the tests again
# under AddressSanitizer + UndefinedBehaviorSanitizer (a Debug build), the concurrency tests
# under ThreadSanitizer (a RelWithDebInfo build), a short run of every fuzzer, and the
# configuration a packager uses. So every build type is compiled once per check, and nothing
# twice. Every build here treats warnings as errors (APPMGR_WERROR); a packager's own cmake run
# does not.
JOBS      ?= $(shell nproc)
FUZZ_SECS ?= 20

# A compiler cache, when the machine has one, speeds rebuilds in development; CI has none.
LAUNCHER := $(if $(shell command -v ccache 2>/dev/null),-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
CMAKE = cmake -G Ninja -Wno-dev $(LAUNCHER) -DAPPMGR_WERROR=ON
# A build that found no tests (GoogleTest missing) must not pass for a green run.
CTEST = ctest --output-on-failure --no-tests=error -j $(JOBS) --timeout 300

.PHONY: all build test check-release asan tsan fuzz release release-config check bench demo protocol-doc clean format

all: build

build:
	$(CMAKE) -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
	cmake --build build -j $(JOBS)

test: build
	cd build && $(CTEST)

# CI's main build: Release (-O3, where a newer compiler finds the most to warn about), with the
# tests and the benchmarks, in a folder of its own so that a developer's build/ is left alone.
check-release:
	$(CMAKE) -S . -B build-check -DCMAKE_BUILD_TYPE=Release >/dev/null
	cmake --build build-check -j $(JOBS)
	cd build-check && $(CTEST)

# appmgrctl's tests start the program hundreds of times; instrumented, that takes minutes of
# CI's time while the library they drive is checked here by its own tests. They run in the
# Release build; `make asan ASAN_EXCLUDE=` runs them here too.
ASAN_EXCLUDE ?= -E '^(Appmgrctl|DemoScript)'

# use_tls=0: GCC 12's leak checker sometimes takes a bogus address range for the thread-local
# block of a library opened with dlopen (spdlog's, pulled in with libappmgrnet.so) and aborts at
# exit; nothing of ours is reachable only through thread-local storage when the check runs. The
# thread-local blocks themselves are then among the runtime's own suppressions, which
# print_suppressions=0 keeps off stderr (tests compare it).
asan:
	$(CMAKE) -S . -B build-asan -DCMAKE_BUILD_TYPE=Debug -DAPPMGR_SANITIZE=address,undefined \
	  -DAPPMGR_BUILD_BENCH=OFF >/dev/null
	cmake --build build-asan -j $(JOBS)
	cd build-asan && ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 LSAN_OPTIONS=use_tls=0:print_suppressions=0 \
	  UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 $(CTEST) $(ASAN_EXCLUDE)

# Only the tests labelled "concurrency" are built and run here.
tsan:
	$(CMAKE) -S . -B build-tsan -DCMAKE_BUILD_TYPE=RelWithDebInfo -DAPPMGR_SANITIZE=thread \
	  -DAPPMGR_BUILD_BENCH=OFF -DAPPMGR_TSAN_ONLY=ON >/dev/null
	cmake --build build-tsan -j $(JOBS) --target concurrency_tests
	cd build-tsan && TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1 $(CTEST) -L concurrency

fuzz:
	CC=clang CXX=clang++ $(CMAKE) -S . -B build-fuzz -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	  -DAPPMGR_BUILD_FUZZ=ON -DAPPMGR_BUILD_BENCH=OFF -DAPPMGR_FUZZ_ONLY=ON >/dev/null
	cmake --build build-fuzz -j $(JOBS)
	FUZZ_SECS=$(FUZZ_SECS) scripts/run-fuzzers.sh build-fuzz

# What a packager builds: Release, the library and the programs only (no tests, no benchmarks).
release:
	$(CMAKE) -S . -B build-release -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=OFF \
	  -DAPPMGR_BUILD_BENCH=OFF >/dev/null
	cmake --build build-release -j $(JOBS)

# The packager's configuration (no tests, no benchmarks) is configured only: check-release has
# compiled the same sources with the same flags.
release-config:
	$(CMAKE) -S . -B build-release -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=OFF \
	  -DAPPMGR_BUILD_BENCH=OFF >/dev/null

check: check-release asan tsan fuzz release-config

bench: build
	scripts/run-benchmarks.sh build

demo: build
	scripts/demo.sh

# Regenerates the generated part of docs/protocol.md from the message catalogue.
protocol-doc:
	$(CMAKE) -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
	cmake --build build -j $(JOBS) --target protocol-doc

format:
	git ls-files '*.h' '*.cc' | xargs clang-format -i

clean:
	rm -rf build build-check build-asan build-tsan build-fuzz build-rel build-release
