#!/usr/bin/env bash
# Builds the libFuzzer targets with clang (in build-fuzz/) and runs each for SECONDS seconds,
# seeding the corpora from the transcript tests, the shipped book and the perft positions.
#   tools/fuzz.sh [SECONDS] [TARGET...]
# Findings (crash-*, leak-*, timeout-* files) are left in build-fuzz/findings/TARGET/.
set -euo pipefail
seconds=${1:-60}
shift || true
root=$(cd "$(dirname "$0")/.." && pwd)
build=$root/build-fuzz
targets=("$@")
((${#targets[@]} > 0)) || targets=(movetext fen pgn book_source book_records commands)

if ! command -v clang++ >/dev/null; then
    if [[ $(id -u) == 0 ]]; then
        DEBIAN_FRONTEND=noninteractive apt-get install -y -qq clang >/dev/null
    else
        echo "Error (clang++ not found): fuzz" && exit 1
    fi
fi
cmake -S "$root" -B "$build" -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DKOVREL_FUZZ=ON -DKOVREL_TESTS=OFF >/dev/null
cmake --build "$build" -j "$(nproc)" --target "${targets[@]/#/fuzz_}" >/dev/null

seed() { # seed TARGET FILES...
    local dir=$build/corpus/$1
    shift
    mkdir -p "$dir"
    for file in "$@"; do [[ -f $file ]] && cp "$file" "$dir/$(basename "$file")-$(cksum <"$file" | cut -d' ' -f1)"; done
    return 0
}
transcripts=$root/tests/transcripts
seed commands "$transcripts"/*.in
seed pgn $(find "$transcripts" -name '*.pgn') "$transcripts"/*.in
seed fen $(find "$transcripts" -name '*.fen')
printf 'rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1\n' >"$build/start.fen"
seed fen "$build/start.fen"
seed book_source "$root/openings.txt"
(cd "$build" && cp "$root/openings.txt" . && "$build/../build/kovrel" -crbk </dev/null >/dev/null 2>&1 || true)
seed book_records "$build/openings.dat"
seed movetext "$transcripts"/move-notation.in

for target in "${targets[@]}"; do
    findings=$build/findings/$target
    mkdir -p "$findings" "$build/corpus/$target"
    echo "== fuzz_$target for $seconds s"
    (cd "$findings" && "$build/fuzz_$target" -max_total_time="$seconds" -max_len=4096 \
        -timeout=20 -print_final_stats=1 "$build/corpus/$target" 2>&1 |
        grep -E '^(#[0-9]+.*(DONE|pulse)|stat::number_of_executed_units|stat::peak_rss|==[0-9]+==ERROR|SUMMARY|Done)' |
        tail -6) || true
    if ls "$findings"/crash-* "$findings"/leak-* "$findings"/timeout-* >/dev/null 2>&1; then
        echo "findings for $target in $findings"
    fi
done
