# make demo   installs what is missing, builds, renders the showcase to out/
# make test   installs what is missing, builds, runs every test under a virtual display, then each fuzz target for 60 s
# make gallery  renders every filter of the catalogue and the canvas kinds to out/gallery (index.html),
#               every transition as a strip (out/gallery/transitions) and the text styles
# make farm-test  renders in chunks on a one-node Slurm cluster it starts (also part of make test)
# make corpus  runs the bad-input corpus through the tools (also part of make test)
BUILD      ?= build
ASAN_BUILD ?= build-asan
TSAN_BUILD ?= build-tsan
FUZZ_BUILD ?= build-fuzz
FUZZ_SECONDS ?= 60
FUZZ_SEED  ?=
# Seeds of the fuzz targets: each folder's subfolder named after a target
# when it has one, otherwise the whole folder.
FUZZ_SEEDS ?= tests/fuzz/seeds tests/fuzz/findings $(wildcard tests/corpus)
JOBS       ?= $(shell nproc)
CMAKE_GEN  := $(shell command -v ninja >/dev/null 2>&1 && echo "-G Ninja")
XVFB       := xvfb-run -a -s "-screen 0 1920x1080x24"

.PHONY: all deps configure build test demo gallery check-asan bench clean farm-deps farm-test corpus
.PHONY: fuzz check-tsan soak

all: build

deps:
	@scripts/install-deps.sh

$(BUILD)/CMakeCache.txt: | deps
	cmake -S . -B $(BUILD) $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=RelWithDebInfo

configure: deps $(BUILD)/CMakeCache.txt

build: configure
	cmake --build $(BUILD) -j $(JOBS)

test: build farm-deps
	cd $(BUILD) && $(XVFB) ctest --output-on-failure -j $(JOBS)
	$(MAKE) fuzz FUZZ_SECONDS=60 FUZZ_SEED=1

# The scheduler and its authentication service, for the cluster test only.
farm-deps:
	@scripts/install-deps.sh scripts/packages-farm.txt

farm-test: build farm-deps
	cd $(BUILD) && ctest --output-on-failure -L farm

corpus: build
	$(XVFB) python3 tests/corpus/run-corpus.py $(BUILD)

demo: build
	scripts/demo.sh $(BUILD) out

gallery: build
	mkdir -p out/gallery
	cd $(BUILD) && MVN_GALLERY_DIR=$(CURDIR)/out/gallery $(XVFB) ./bin/ogre_gpu_tests --gtest_filter='FilterGallery.*:TextGallery.*:TransitionGallery.*'
	@echo "out/gallery/index.html"

# The CPU suites, then the engine and tool suites under a virtual display.
# Leaks inside the GL driver, the X libraries and SDL are suppressed by
# library name (tests/sanitizers/lsan.supp, each line says why); nothing
# else is. The test programs and tools keep every library loaded under the
# sanitizer so that those names stay known at exit. The engine's picture
# codec plugin (Codec_STBI) hands the engine pictures that stb_image
# allocated with malloc, and the engine frees them with delete[]: the one
# mismatch is in those two libraries, not in ours, so the GPU step does not
# stop on it.
check-asan: deps
	cmake -S . -B $(ASAN_BUILD) $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=Debug -DMVN_SANITIZE=ON -DMVN_BUILD_BENCH=OFF
	cmake --build $(ASAN_BUILD) -j $(JOBS)
	cd $(ASAN_BUILD) && ASAN_OPTIONS=detect_leaks=1 ctest --output-on-failure -L cpu -j $(JOBS)
	cd $(ASAN_BUILD) && ASAN_OPTIONS=detect_leaks=1:alloc_dealloc_mismatch=0 \
	  LSAN_OPTIONS=suppressions=$(CURDIR)/tests/sanitizers/lsan.supp:print_suppressions=0 \
	  $(XVFB) ctest --output-on-failure -L gpu -LE 'farm|package'

# The CPU suites and the stress program (16 threads x 10,000 calls) under
# ThreadSanitizer, then the stress on the real engine under a virtual
# display; tests/sanitizers/tsan.supp names the few reports that come from
# uninstrumented libraries (the engine's log, Mesa), each with its reason.
check-tsan: deps
	cmake -S . -B $(TSAN_BUILD) $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DMVN_TSAN=ON -DMVN_BUILD_BENCH=OFF
	cmake --build $(TSAN_BUILD) -j $(JOBS) --target host_tests ogre_tests codec_tests media_tests mvn-stress
	cd $(TSAN_BUILD) && TSAN_OPTIONS="halt_on_error=1 second_deadlock_stack=1 suppressions=$(CURDIR)/tests/sanitizers/tsan.supp" \
	  ctest --output-on-failure -L cpu -LE 'slow|fuzz-replay' -j $(JOBS)
	cd $(TSAN_BUILD) && TSAN_OPTIONS="halt_on_error=1 second_deadlock_stack=1 suppressions=$(CURDIR)/tests/sanitizers/tsan.supp" \
	  ./bin/mvn-stress --threads 16 --calls 10000
	cd $(TSAN_BUILD) && TSAN_OPTIONS="halt_on_error=1 second_deadlock_stack=1 suppressions=$(CURDIR)/tests/sanitizers/tsan.supp" \
	  $(XVFB) ./bin/mvn-stress --engine --threads 16 --calls 100

# Each fuzz target for FUZZ_SECONDS (60 by default); fails on a finding,
# which is left in $(FUZZ_BUILD)/fuzz-findings/<target>/. The fuzzers draw
# their mutations at random unless FUZZ_SEED is set: make test sets it, so
# that what it finds from a clean clone it finds again on the next try and
# on any machine, while a plain make fuzz keeps looking somewhere new.
fuzz: deps
	CC=clang-14 CXX=clang++-14 cmake -S . -B $(FUZZ_BUILD) $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	  -DMVN_FUZZ=ON -DMVN_BUILD_TESTS=OFF -DMVN_BUILD_BENCH=OFF
	cmake --build $(FUZZ_BUILD) -j $(JOBS)
	FUZZ_SEED=$(FUZZ_SEED) tests/fuzz/run-fuzz.sh $(FUZZ_BUILD) $(FUZZ_SECONDS) $(FUZZ_SEEDS)

# Micro-benchmarks (queue round trip, pools), the GPU paths beside memcpy,
# then the reference compositions against the ffmpeg command (bench/compose;
# BENCH_ARGS=--quick for a short pass).
bench: build
	cd $(BUILD) && ./bin/mvn-bench
	cd $(BUILD) && $(XVFB) ./bin/mvn-bench-gpu
	bench/compose --build $(BUILD) $(BENCH_ARGS)

# A long 1080p render of every producer and filter kind; memory,
# descriptors, textures and render targets every 1,000 frames
# (SOAK_FRAMES=N for a shorter pass).
SOAK_FRAMES ?= 10000
soak: build
	bench/soak/soak.sh $(BUILD) $(SOAK_FRAMES)

clean:
	rm -rf $(BUILD) $(ASAN_BUILD) $(TSAN_BUILD) $(FUZZ_BUILD) out
