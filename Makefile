# The front door. Each target first makes sure that what it needs is installed.
#
#   make              build the bundle at build/Corvane.app and the link build/corvanectl
#   make run          a sample Mac, kept up to date in front of you; SCENE=prompt, hard, confirmation or
#                     completed-cycle starts it in that state
#   make test         build, tests, format and layer checks
#   make bench        every figure in one run
#   make screenshots  every window in its states, drawn without a display
#   make format       clang-format over the sources
#   make lint         clang-tidy over the sources
#   make texts        gather the texts and merge the languages with them
#   make docs         write the generated documents, the manuals and the completions anew
#   make clean        remove build/

SHELL := /bin/sh
export CCACHE_BASEDIR := $(CURDIR)
export CCACHE_NOHASHDIR := 1
SOURCES = $(shell git ls-files '*.cpp' '*.h' 2>/dev/null)

.PHONY: all bundle run test asan tsan bench screenshots format lint docs texts clean bootstrap
all: bundle

bootstrap:
	@tools/bootstrap

build/%/build.ninja: CMakePresets.json | bootstrap
	@cmake --preset $*

bundle: build/release/build.ninja
	@cmake --build --preset release --target bundle
	@ln -sfn Corvane.app/Contents/MacOS/corvanectl build/corvanectl

run: bundle
	@SCENE='$(SCENE)' tools/run

test: build/debug/build.ninja
	cmake --build --preset debug
	ctest --preset debug
	tools/check_format
	tools/check_layers --self-test
	tools/check_layers
	tools/texts --check

asan tsan: %: build/%/build.ninja
	cmake --build --preset $@
	ctest --preset $@

bench: bundle
	@cmake --build --preset release --target benches
	@tools/bench

screenshots: build/release/build.ninja
	@cmake --build --preset release --target corvane_screenshots
	@tools/screenshots

format: bootstrap
	@clang-format-14 -i $(SOURCES)

lint: build/debug/build.ninja
	@tools/bootstrap --lint
	@tools/lint

docs: build/debug/build.ninja
	@cmake --build --preset debug --target corvane_core_preferences_tests corvane_ctl_tests \
	  corvane_app_tests corvane_helper_tests
	@mkdir -p packaging/man packaging/completion
	@for part in core_preferences ctl app helper; do \
	  CORVANE_UPDATE_DOCS=1 build/debug/tests/corvane_$${part}_tests --gtest_filter='*Document*' || exit 1; done

texts:
	@tools/texts

clean:
	@rm -rf build
