# Filter for the ev command's lines in positions whose exact evaluation is not worked out by
# hand: the global value must be the material term (the scaled worth of White's material minus
# Black's) plus White's positional total minus Black's, seen from the side to move. The two
# lines become "- evaluation lines agree" (or what disagrees); other lines pass unchanged.
BEGIN {
    # Scaled worth of material besides the king, for the amounts these transcripts reach.
    scale[0] = -18339; scale[1000] = -16577; scale[3000] = -12628; scale[5000] = -8788
    scale[9000] = -1661; scale[38000] = 37889; scale[39000] = 38889
}
/^- White: position=/ {
    split($0, f, /[= ]+/) # - White: position W material MW / Black: position B material MB
    wpos = f[4]; wmat = f[6]; bpos = f[10]; bmat = f[12]
    if (!(wmat in scale) || !(bmat in scale)) print "- unexpected material: " $0
    next
}
/^- global evaluation for / {
    want = ($5 == "White:" ? 1 : -1) * (scale[wmat] - scale[bmat] + wpos - bpos)
    if ($6 == want) print "- evaluation lines agree"
    else print "- global evaluation " $6 " but the totals give " want
    next
}
{ print }
