# Thin over CMake's presets: each command installs what it needs, builds what it needs, and says what it left where.

HOST_PACKAGES := cmake ninja-build g++ googletest python3-jsonschema
WINDOWS_PACKAGES := cmake ninja-build g++-mingw-w64-x86-64-posix googletest
WINE_PACKAGES := wine wine64 xvfb openbox fonts-liberation imagemagick x11-utils xdotool trayer osslsigncode openssl python3
LINT_PACKAGES := $(HOST_PACKAGES) $(WINDOWS_PACKAGES) clang clang-format clang-tidy cppcheck git python3
FUZZ_PACKAGES := cmake ninja-build clang libclang-rt-14-dev
JOBS := $(shell nproc 2>/dev/null || echo 2)

.PHONY: help run test test-host test-windows exe console console-windows deb installer package release bench fuzz screenshots golden mutants lint format clean

help:
	@echo "make run | test | test-host | test-windows | exe | console | console-windows | deb | installer | package | release | bench | fuzz | screenshots | golden | mutants | lint | format | clean"

run: exe
	@scripts/need $(WINE_PACKAGES)
	@scripts/run-demo

test:
	@scripts/need $(HOST_PACKAGES) $(WINDOWS_PACKAGES) $(WINE_PACKAGES) $(FUZZ_PACKAGES) nsis zip
	@scripts/test host tsan fuzz windows

test-host:
	@scripts/need $(HOST_PACKAGES)
	@scripts/test host tsan

test-windows:
	@scripts/need $(WINDOWS_PACKAGES) $(WINE_PACKAGES) nsis zip
	@scripts/test windows

exe:
	@scripts/need $(WINDOWS_PACKAGES)
	@cmake --preset windows >/dev/null && cmake --build --preset windows --target vantora -- -j$(JOBS)
	@echo "build/windows/vantora.exe"

console:
	@scripts/need $(HOST_PACKAGES)
	@cmake --preset console >/dev/null && cmake --build --preset console -- -j$(JOBS)
	@echo "build/console/vantora-console"

console-windows:
	@scripts/need $(WINDOWS_PACKAGES)
	@cmake --preset windows >/dev/null && cmake --build --preset windows --target vantora-console -- -j$(JOBS)
	@echo "build/windows/vantora-console.exe"

deb: console
	@scripts/need dpkg-dev file
	@cd build/console && cpack -G DEB >cpack.log 2>&1 || { cat cpack.log; exit 1; }
	@ls build/console/*.deb

installer: exe console-windows
	@scripts/need nsis
	@scripts/installer

package: exe console-windows
	@scripts/need zip
	@scripts/package

release: exe console-windows deb
	@scripts/need nsis zip unzip osslsigncode
	@scripts/release

bench:
	@scripts/need $(HOST_PACKAGES) libbenchmark-dev procps
	@cmake --preset host-release >/dev/null && cmake --build --preset host-release -- -j$(JOBS)
	@for program in build/host-release/bench/*_bench; do "$$program" || exit 1; done

fuzz:
	@scripts/need $(FUZZ_PACKAGES)
	@scripts/fuzz $(SECONDS)

screenshots: exe
	@scripts/need $(WINE_PACKAGES)
	@scripts/screenshots

golden:
	@scripts/need $(WINDOWS_PACKAGES) $(WINE_PACKAGES)
	@cmake --preset windows >/dev/null && cmake --build --preset windows -- -j$(JOBS)
	@VANTORA_GOLDEN=write scripts/wine-session ctest --test-dir build/windows -R "Session|Journey|updates|installer" >build/golden.log 2>&1
	@git diff --stat tests/golden

mutants:
	@scripts/need $(HOST_PACKAGES) $(WINDOWS_PACKAGES) $(WINE_PACKAGES) ccache git
	@scripts/mutants $(if $(SEED),--seed $(SEED)) $(if $(COUNT),--count $(COUNT))

lint:
	@scripts/need $(LINT_PACKAGES)
	@mkdir -p build && scripts/lint

format:
	@scripts/need clang-format git
	@git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean:
	@rm -rf build
