# make demo   installs what is missing, builds, renders the showcase to out/
# make test   installs what is missing, builds, runs every test under a virtual display
# make gallery  renders every filter of the catalogue to out/gallery (index.html), every
#               transition as a strip (out/gallery/transitions) and the text styles
# make farm-test  renders in chunks on a one-node Slurm cluster it starts (also part of make test)
# make corpus  runs the bad-input corpus through the tools (also part of make test)
BUILD      ?= build
ASAN_BUILD ?= build-asan
JOBS       ?= $(shell nproc)
CMAKE_GEN  := $(shell command -v ninja >/dev/null 2>&1 && echo "-G Ninja")
XVFB       := xvfb-run -a -s "-screen 0 1920x1080x24"

.PHONY: all deps configure build test demo gallery check-asan bench clean farm-deps farm-test corpus

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

check-asan: deps
	cmake -S . -B $(ASAN_BUILD) $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=Debug -DMVN_SANITIZE=ON -DMVN_BUILD_BENCH=OFF
	cmake --build $(ASAN_BUILD) -j $(JOBS) --target host_tests ogre_tests ogre_tests_slow codec_tests media_tests
	cd $(ASAN_BUILD) && ASAN_OPTIONS=detect_leaks=1 ctest --output-on-failure -L cpu -j $(JOBS)

# Micro-benchmarks (queue round trip, pools), the GPU paths beside memcpy,
# then the reference compositions against the ffmpeg command (bench/compose;
# BENCH_ARGS=--quick for a short pass).
bench: build
	cd $(BUILD) && ./bin/mvn-bench
	cd $(BUILD) && $(XVFB) ./bin/mvn-bench-gpu
	bench/compose --build $(BUILD) $(BENCH_ARGS)

clean:
	rm -rf $(BUILD) $(ASAN_BUILD) out
