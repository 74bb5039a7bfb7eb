# Filter for transcripts of the ev command in positions whose exact evaluation is not worked out
# by hand: every other line passes unchanged; the two evaluation lines are checked against each
# other and replaced by "- evaluation lines agree" (or by what disagrees). The global value must
# be the material term (the scaled worth of White's material minus Black's) plus White's
# positional total minus Black's, seen from the side to move.
BEGIN {
    # Scaled worth of material besides the king, for the amounts these transcripts reach.
    scale[0] = -18339; scale[1000] = -16577; scale[3000] = -12628; scale[5000] = -8788
    scale[9000] = -1661; scale[38000] = 37889; scale[39000] = 38889
}
/^- White: position=/ {
    split($0, f, /[= ]+/)
    # f: "-" "White:" "position" W "material" MW "/" "Black:" "position" B "material" MB
    wpos = f[4]; wmat = f[6]; bpos = f[10]; bmat = f[12]
    if (!(wmat in scale) || !(bmat in scale)) { print "- unexpected material: " $0; bad = 1 }
    next
}
/^- global evaluation for / {
    side = ($5 == "White:") ? 1 : -1
    got = $6
    want = side * (scale[wmat] - scale[bmat] + wpos - bpos)
    if (got == want) print "- evaluation lines agree"
    else print "- global evaluation " got " but the totals give " want
    next
}
{ print }
