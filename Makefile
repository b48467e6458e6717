# The two commands of the README: `make run` and `make test`.
.PHONY: all run test bench format deps build-release build-ci build-fuzz install clean

JOBS ?= $(shell nproc)

all: build-release

deps:
	@scripts/install-deps

build-release: deps
	@cmake --preset release >/dev/null
	@cmake --build --preset release -j $(JOBS)

build-ci: deps
	@cmake --preset ci >/dev/null
	@cmake --build --preset ci -j $(JOBS)

build-fuzz: deps
	@cmake --preset fuzz >/dev/null
	@cmake --build --preset fuzz -j $(JOBS)

run: build-release
	@./build/release/src/tevra

# Tests run inside the private services of scripts/test-env (session bus, keyring, X display
# with a window manager, the accessibility bus); then each fuzz target runs for a bounded time.
test: build-ci build-fuzz
	@scripts/test-env ctest --preset ci -j $(JOBS)
	@scripts/run-fuzz build/fuzz

# Both programs and the menu entry, for the current user unless PREFIX says otherwise.
PREFIX ?= $(HOME)/.local
install: build-release
	@cmake --install build/release --prefix $(PREFIX)

bench: build-release
	@scripts/test-env scripts/run-bench build/release/bench
	@scripts/test-env scripts/measure-idle build/release/src/tevra
	@scripts/test-env scripts/measure-notes build/release/src/tevra

format:
	@find src tests bench -name '*.cpp' -o -name '*.h' | xargs clang-format -i

clean:
	rm -rf build
