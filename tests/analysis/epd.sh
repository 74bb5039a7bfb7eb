# kovrel-epd on two small suites: found, missed, avoided, and every kind of bad line. Times are
# replaced by T, and so is the move played where only found or missed is certain: any move but
# Qxd5 avoids the poisoned pawn, and the static choice is some move other than Qg6 (the line says
# found or missed by comparing it with those). Everything else is certain (see the suites).
run() {
    echo "\$ kovrel-epd $*"
    "$KOVREL_EPD" "$@" | sed -E 's/time [0-9]+ ms/time T ms/; s/^((poisoned|WAC\.001) +[a-z]+ +)[^ ]+/\1M/'
    echo "status ${PIPESTATUS[0]}"
}
# A line of 5000 characters is reported, not read.
cp tactics.epd long.epd
printf '%s bm Ra8#;\r\n' "6k1/5ppp/8/8/8/8/8/R5K1 w - - c0 $(printf '%05000d' 0)" >>long.epd
printf '7k/8/8/8/8/8/8/K5R1 b - - bm Kh7; id "after the long line";\n' >>long.epd
run long.epd --depth 2
run deep.epd --depth 1
# Standard input, a move time with a depth (the depth ends it first), and an empty suite.
run - --depth 2 --movetime 60000 <deep.epd
run /dev/null
