#!/usr/bin/env bash
# Line and branch coverage of the program (core, eval, search, ui, uci, analysis) by the whole
# test suite but the deep perft counts: builds with gcc's --coverage into build-coverage/, runs
# ctest and prints gcovr's summary. The tests and tools themselves are not counted.
#   tools/coverage.sh [BUILD_DIR]      (default build-coverage; needs gcovr from Debian)
set -euo pipefail
cd "$(dirname "$0")/.."
dir=${1:-build-coverage}
jobs=$(nproc 2>/dev/null || echo 2)

cmake -S . -B "$dir" -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS="--coverage -O1" \
      -DCMAKE_EXE_LINKER_FLAGS=--coverage >/dev/null
cmake --build "$dir" -j "$jobs" >/dev/null
find "$dir" -name '*.gcda' -delete
(cd "$dir" && ctest -LE perft-deep -j "$jobs" --output-on-failure >/dev/null) ||
    echo "coverage: some tests failed (figures below still count what ran)" >&2

# Branches the compiler adds for exceptions are left out: they are not the program's decisions.
gcovr --root . --object-directory "$dir" \
      --filter 'core/' --filter 'eval/' --filter 'search/' --filter 'ui/' --filter 'uci/' \
      --filter 'analysis/' --exclude-throw-branches --exclude-unreachable-branches \
      --exclude-directories "$dir/CMakeFiles/[0-9.]+" \
      --print-summary --txt "$dir/coverage.txt" >"$dir/gcovr.summary" 2>"$dir/gcovr.log" ||
    { cat "$dir/gcovr.log" >&2; exit 1; }
grep -E '^(lines|branches):' "$dir/gcovr.summary"
echo "per file: $dir/coverage.txt"
