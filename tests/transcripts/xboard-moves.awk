# Filter for the engine's moves in xboard mode, which are not fixed by hand: "N. ... MOVE" and the
# "My move is: MOVE" line after it must name the same move, and the k-th engine move must be one
# of the k-th list of `legal` (lists separated by "|", moves by ","; "*" for any move).
BEGIN { split(legal, lists, "|"); k = 0; expect = "" }
expect != "" {
    if ($0 == "My move is: " expect) print "My move is: <the same move>"
    else print "- the move line does not repeat " expect ": " $0
    expect = ""
    next
}
/^ *[0-9]+\. \.\.\. [a-h][1-8][a-h][1-8][nbrq ]$/ {
    mv = substr($0, length($0) - 4)
    head = substr($0, 1, length($0) - 5)
    n = split(lists[++k], a, ",")
    ok = (a[1] == "*")
    for (i = 1; i <= n; i++) if (a[i] " " == mv) ok = 1
    if (a[1] == "*") print head "<a move>"
    else if (ok) print head "<one of the " n " moves listed>"
    else print $0 "- not among the " n " moves listed"
    expect = mv
    next
}
{ print }
END { if (expect != "") print "- no move line after " expect }
