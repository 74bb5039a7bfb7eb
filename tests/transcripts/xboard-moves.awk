# Filter for the engine's moves in xboard mode, which are not fixed by hand: "N. ... MOVE" and the
# "My move is: MOVE" line after it must name the same move, and the k-th engine move must be one
# of the k-th list of `legal` (lists separated by "|", moves by ","; "*" for any move).
expect != "" {
    if ($0 == "My move is: " expect) $0 = "My move is: <the same move>"
    else $0 = "- the move line does not repeat " expect ": " $0
    expect = ""
}
/^ *[0-9]+\. \.\.\. [a-h][1-8][a-h][1-8][nbrq ]$/ {
    split(legal, lists, "|")
    n = split(lists[++k], a, ",")
    expect = move = substr($0, length($0) - 4)
    sub(/ $/, "", move)
    head = substr($0, 1, length($0) - 5)
    if (lists[k] == "*") $0 = head "<a move>"
    else if (index("," lists[k] ",", "," move ",")) $0 = head "<one of the " n " moves listed>"
    else $0 = $0 "- not among the " n " moves listed"
}
{ print }
END { if (expect != "") print "- no move line after " expect }
