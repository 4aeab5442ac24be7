# Top-level commands. `make test` installs what is missing, then builds and runs
# the suite twice: optimised, and under AddressSanitizer + UBSan; the
# sanitizer leg ends with each fuzz target over its corpus and for
# FUZZ_CHECK_SECONDS. `make fuzz` fuzzes each target for FUZZ_SECONDS.
JOBS ?= 2
CMAKE_FLAGS ?=

.PHONY: all deps build test test-release test-sanitize tsan fuzz-build fuzz fuzz-check bench demo install uninstall clean

all: build

deps:
	./scripts/install-deps

build: deps
	cmake -S . -B build/release -DCMAKE_BUILD_TYPE=Release $(CMAKE_FLAGS)
	cmake --build build/release -j$(JOBS)

test-release: build
	cd build/release && ctest --output-on-failure -j$(JOBS)

test-sanitize: deps
	cmake -S . -B build/sanitize -DCMAKE_BUILD_TYPE=RelWithDebInfo -DLV_SANITIZE=ON -DLV_BUILD_BENCH=OFF $(CMAKE_FLAGS)
	cmake --build build/sanitize -j$(JOBS)
	cd build/sanitize && \
	  ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 \
	  UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1 \
	  ctest --output-on-failure -j$(JOBS)
	$(MAKE) fuzz-check

test: test-release test-sanitize

# libFuzzer targets, built by clang in a tree of their own; run JOBS at a time.
FUZZ_TARGETS = preset_loader host_pixel_format frame_pattern image_file
FUZZ_SECONDS ?= 600
FUZZ_CHECK_SECONDS ?= 30

fuzz-build: deps
	cmake -S . -B build/fuzz -DCMAKE_BUILD_TYPE=RelWithDebInfo -DLV_FUZZ=ON \
	  -DCMAKE_C_COMPILER=clang-14 -DCMAKE_CXX_COMPILER=clang++-14 $(CMAKE_FLAGS)
	cmake --build build/fuzz --target fuzz_targets -j$(JOBS)

fuzz: fuzz-build
	printf '%s\n' $(FUZZ_TARGETS) | xargs -P$(JOBS) -I{} ./tests/fuzz/run_fuzz.sh build/fuzz {} $(FUZZ_SECONDS)

fuzz-check: fuzz-build
	printf '%s\n' $(FUZZ_TARGETS) | xargs -P$(JOBS) -I{} ./tests/fuzz/run_fuzz.sh build/fuzz {} $(FUZZ_CHECK_SECONDS)

# Effects rendering at once (several effects on threads, an effect and its
# clone) under ThreadSanitizer. Not part of `make test`: it builds a third tree.
TSAN_TESTS ?= AtOnce|OneAtATime
tsan: deps
	cmake -S . -B build/tsan -DCMAKE_BUILD_TYPE=RelWithDebInfo -DLV_TSAN=ON -DLV_BUILD_BENCH=OFF -DLV_BUILD_PYTHON=OFF $(CMAKE_FLAGS)
	cmake --build build/tsan -j$(JOBS) --target test_embed test_host lumenveil LumenveilVZ
	cd build/tsan && TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1 ctest --output-on-failure -R '$(TSAN_TESTS)'

bench: build
	./build/release/bench/lumenveil_bench

# Installs what the build made under PREFIX (DESTDIR=... stages it
# elsewhere): the tool in PREFIX/bin, its documents in
# PREFIX/share/doc/lumenveil, the frei0r filter in PREFIX/lib/frei0r-1, its
# description for editors in PREFIX/share/kdenlive/effects, the module and the
# host stand-in in PREFIX/lib/lumenveil, the Python module in
# PREFIX/lib/python3.X/dist-packages. `make uninstall` removes what the last
# install wrote.
PREFIX ?= /usr/local

install: build
	cmake --install build/release --prefix $(PREFIX)

uninstall:
	cmake -DMANIFEST=build/release/install_manifest.txt -P cmake/uninstall.cmake

DEMO_DIR ?= build/demo

# The demo needs the tool and the module alone.
demo: deps
	cmake -S . -B build/release -DCMAKE_BUILD_TYPE=Release $(CMAKE_FLAGS)
	cmake --build build/release -j$(JOBS) --target lumenveil LumenveilVZ
	./build/release/tools/lumenveil/lumenveil demo --out $(DEMO_DIR)

clean:
	rm -rf build
