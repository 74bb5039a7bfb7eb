# Command lines and files the tools cannot use: one error line naming the problem, the usage
# where the command line is at fault, and the exit status (2: command line, 1: files).
run() {
    echo "\$ $*"
    local program=$1
    shift
    case $program in
    kovrel-epd) "$KOVREL_EPD" "$@" 2>&1 ;;
    kovrel-annotate) "$KOVREL_ANNOTATE" "$@" 2>&1 ;;
    esac
    echo "status $?"
}
run kovrel-epd
run kovrel-epd deep.epd --depth 0
run kovrel-epd deep.epd --depth 32
run kovrel-epd deep.epd --movetime
run kovrel-epd deep.epd --movetime 1s
run kovrel-epd deep.epd --hash 0
run kovrel-epd deep.epd --svg x.svg
run kovrel-epd deep.epd other.epd
run kovrel-epd missing.epd
run kovrel-epd --help
run kovrel-annotate
run kovrel-annotate two-games.pgn --speed 3
run kovrel-annotate missing.pgn --depth 2
run kovrel-annotate two-games.pgn --depth 2 -o no/such/folder/out.pgn
run kovrel-annotate --help
