#!/usr/bin/env bash
# An installation under a staging folder (DESTDIR) is complete and works from anywhere: both
# programs and the two analysis tools, the book source and the built book, the manual pages;
# the installed kovrel-uci, started from another folder, finds the installed book and plays its
# first move from it; the manual pages render.
#   install.sh BUILD_DIR
set -euo pipefail
build=$(realpath "$1")
stage=$(mktemp -d)
elsewhere=$(mktemp -d)
trap 'rm -rf "$stage" "$elsewhere"' EXIT
DESTDIR=$stage cmake --install "$build" >/dev/null
prefix=$(sed -n 's/^CMAKE_INSTALL_PREFIX:PATH=//p' "$build/CMakeCache.txt")
root=$stage$prefix
for file in games/kovrel{,-uci,-epd,-annotate} share/games/kovrel/openings.{txt,dat} \
    share/man/man6/kovrel{,-uci,-epd,-annotate}.6; do
    [[ -f $root/$file ]] || { echo "not installed: $file"; exit 1; }
done

source "$(dirname "$0")/lib.bash"
book_moves=$(book_start_moves "$root/share/games/kovrel/openings.dat")
cd "$elsewhere"
output=$("$root/games/kovrel-uci" <<<$'uci\nposition startpos\ngo wtime 60000 btime 60000\nquit')
grep -q 'name BookFile type string default .*/share/games/kovrel/openings.dat$' <<<"$output" ||
    { echo "the installed book is not the default: $output"; exit 1; }
grep -q '^info string' <<<"$output" && { echo "a complaint: $output"; exit 1; }
played=$(sed -n 's/^bestmove \([a-h][1-8][a-h][1-8]\).*/\1/p' <<<"$output")
grep -qx "$played" <<<"$book_moves" || { echo "'$played' is no book move of: $book_moves"; exit 1; }

# The manual pages render, where nroff is installed (as it is with man), bold type undone.
for page in kovrel kovrel-uci kovrel-epd kovrel-annotate; do
    command -v nroff >/dev/null || break
    text=$(nroff -man "$root/share/man/man6/$page.6" 2>/dev/null | sed 's/.\x08//g')
    grep -q "^NAME" <<<"$text" && grep -q "$page - " <<<"$text" ||
        { echo "the page $page does not render: $text"; exit 1; }
done
echo "installed, book move $played from $elsewhere"
