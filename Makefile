# Two commands for a new user: `make run` and `make test`. Plain `make` builds the Release
# binaries build/kovrel, build/kovrel-perft and build/kovrel-bench.
BUILD := build
JOBS := $(shell nproc 2>/dev/null || echo 2)

.PHONY: all run test configure format check-format clean

all: configure
	cmake --build $(BUILD) --target kovrel kovrel-perft kovrel-bench -j $(JOBS)

configure:
	@test -f $(BUILD)/CMakeCache.txt || cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=Release

# The opening book is built from openings.txt into openings.dat here (when the source is newer;
# the builder's report goes to build/openings.log), then Kovrel starts.
run: all
	@if [ ! -f openings.dat ] || [ openings.txt -nt openings.dat ]; then \
		./$(BUILD)/kovrel -crbk </dev/null >$(BUILD)/openings.log; fi
	./$(BUILD)/kovrel

test: configure
	cmake --build $(BUILD) -j $(JOBS)
	cd $(BUILD) && ctest --output-on-failure -LE perft-deep -j $(JOBS)

format:
	clang-format -i $$(git ls-files '*.cpp' '*.h')

check-format:
	clang-format --dry-run --Werror $$(git ls-files '*.cpp' '*.h')

clean:
	rm -rf $(BUILD)
