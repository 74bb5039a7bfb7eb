# Two commands for a new user: `make run` and `make test`. Plain `make` builds the Release
# programs and tools into build/ (kovrel, kovrel-uci, kovrel-epd, kovrel-annotate, kovrel-perft,
# kovrel-bench and, with Google Benchmark, kovrel-bench-eval) and the opening book, which it
# also leaves in this folder as openings.dat, where the console program started here looks for
# it.
BUILD := build
JOBS := $(shell nproc 2>/dev/null || echo 2)
PREFIX ?= /usr/local
DESTDIR ?=

.PHONY: all run test configure format check-format clean install uninstall

all: configure
	cmake --build $(BUILD) --target programs -j $(JOBS)
	@cmp -s $(BUILD)/openings.dat openings.dat || cp $(BUILD)/openings.dat openings.dat

configure:
	@test -f $(BUILD)/CMakeCache.txt || cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=Release

run: all
	./$(BUILD)/kovrel

test: configure
	cmake --build $(BUILD) -j $(JOBS)
	@cmp -s $(BUILD)/openings.dat openings.dat || cp $(BUILD)/openings.dat openings.dat
	cd $(BUILD) && ctest --output-on-failure -LE perft-deep -j $(JOBS)

# Installs into $(DESTDIR)$(PREFIX): games/kovrel, games/kovrel-uci and the analysis tools
# games/kovrel-epd and games/kovrel-annotate, the book source and the built book in
# share/games/kovrel, the manual pages in share/man/man6. The UCI program looks for its book in
# $(PREFIX)/share/games/kovrel, so the prefix is built in.
install: configure
	cmake -S . -B $(BUILD) -DCMAKE_INSTALL_PREFIX=$(PREFIX) >/dev/null
	cmake --build $(BUILD) --target kovrel kovrel-uci kovrel-epd kovrel-annotate book -j $(JOBS)
	DESTDIR=$(DESTDIR) cmake --install $(BUILD)

uninstall:
	rm -f $(DESTDIR)$(PREFIX)/games/kovrel $(DESTDIR)$(PREFIX)/games/kovrel-uci
	rm -f $(DESTDIR)$(PREFIX)/games/kovrel-epd $(DESTDIR)$(PREFIX)/games/kovrel-annotate
	rm -f $(DESTDIR)$(PREFIX)/share/games/kovrel/openings.txt
	rm -f $(DESTDIR)$(PREFIX)/share/games/kovrel/openings.dat
	rm -f $(DESTDIR)$(PREFIX)/share/man/man6/kovrel.6 $(DESTDIR)$(PREFIX)/share/man/man6/kovrel-uci.6
	rm -f $(DESTDIR)$(PREFIX)/share/man/man6/kovrel-epd.6 $(DESTDIR)$(PREFIX)/share/man/man6/kovrel-annotate.6
	rmdir $(DESTDIR)$(PREFIX)/share/games/kovrel 2>/dev/null || true

format:
	clang-format -i $$(git ls-files '*.cpp' '*.h')

check-format:
	clang-format --dry-run --Werror $$(git ls-files '*.cpp' '*.h')

clean:
	rm -rf $(BUILD)
