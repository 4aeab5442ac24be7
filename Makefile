# Top-level commands. `make test` installs what is missing, then builds and runs
# the suite twice: optimised, and under AddressSanitizer + UBSan.
JOBS ?= 2
CMAKE_FLAGS ?=

.PHONY: all deps build test test-release test-sanitize tsan bench demo install uninstall clean

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

test: test-release test-sanitize

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
