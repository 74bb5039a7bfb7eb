#!/usr/bin/env bash
# Runs one transcript of the analysis tools and compares what it prints with the expected text.
#   run_analysis.sh KOVREL_EPD KOVREL_ANNOTATE DIR NAME
# DIR/NAME.sh is run in a fresh scratch folder holding copies of DIR's data files (*.epd,
# *.pgn), with the two programs in $KOVREL_EPD and $KOVREL_ANNOTATE; what it prints is compared
# with DIR/NAME.out. The drivers replace what cannot be known in advance (times; values and
# lines of the engine that no hand can work out) and check those by rule instead.
set -euo pipefail
export KOVREL_EPD KOVREL_ANNOTATE
KOVREL_EPD=$(realpath "$1") KOVREL_ANNOTATE=$(realpath "$2")
dir=$(realpath "$3") name=$4
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cp "$dir"/*.epd "$dir"/*.pgn "$scratch/"
cd "$scratch"
bash "$dir/$name.sh" >actual.out 2>&1 || echo "driver status $?" >>actual.out
if ! diff -u "$dir/$name.out" actual.out; then
    echo "analysis transcript $name: output differs"
    exit 1
fi
