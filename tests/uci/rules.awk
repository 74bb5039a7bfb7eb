# Filter run on every UCI session. It checks by rule the report lines of the searches that
# cannot be worked out line by line: the runner gives a session's @check lines as rule[n] for
# the search of its n-th go (each ends in one bestmove line). The report lines of such a search
# and its bestmove line become "checked by rule: <its rule>" when everything holds, otherwise
# "check failed: <what>" lines followed by the lines themselves. It also checks the BookFile
# default (below). Every other line is printed as it is.
#
# Every checked search must show:
#   - report lines "info depth D score cp|mate V [lowerbound|upperbound] nodes N nps R time T
#     pv MOVES", then at most one "info nodes N nps R time T" (an interrupted iteration that
#     kept the move) as the last; at least one info depth line;
#   - depths 2, 3, 4, ... (the first iteration is one ply below the root moves: depth 2);
#   - nodes and time that never go down (both count from the start of the search), and a speed
#     of nodes * 1000 / time (0 when the time is 0);
#   - bestmove the first move of the last principal variation; when the last line has one, a
#     ponder move exactly when it has a second move, and that move (the same walk of the tables).
# What a rule may add, as words KEY=VALUE:
#   depth=D: the depths run exactly to D, and the last line is D's;  minlines=N: at least N
#   info depth lines;  mate=M: the last one scores "mate M" (exact or a lower bound);
#   allmate=M: all of them do;  score=TEXT: the last score without its bound word ("_" for a
#   blank: score=cp_0);  maxscore=CP: the last score at most CP (being mated is below all);
#   best=MOVE, ponder=MOVE|none: the moves of the bestmove line;  among=M1,M2: the move played
#   is one of these;  mintime=MS, minnodes=N, maxnodes=N: bounds on the last line's time and
#   node count;  fewernodes=K: fewer nodes than search K's last line;  same=K: the info depth
#   lines are search K's but for time and speed, and so is the bestmove line.

function fail(text) { problems = problems "check failed: " text "\n" }

# The value after `key` in a report line.
function field(line, key,    n, i, f) {
    n = split(line, f, " ")
    for (i = 1; i < n; i++) if (f[i] == key) return f[i + 1] + 0
}

# Without time and speed: what two runs of the same search must share.
function steady(line) {
    sub(/ nps [0-9]+ time [0-9]+/, "", line)
    return line
}

BEGIN {
    depthLine = "^info depth [0-9]+ score (cp|mate) -?[0-9]+( lowerbound| upperbound)? nodes " \
        "[0-9]+ nps [0-9]+ time [0-9]+ pv( [a-h][1-8][a-h][1-8][nbrq]?)+$"
}

function checkSearch(n, rule, bestLine,    i, line, depth, pvCount, lastPv, pv, np, nodes, time,
                     want, lastNodes, lastTime, bm, nb, score, k, w, pvLines, progress, kv, v) {
    k = split(rule, kv, " ")
    for (i = 1; i <= k; i++) {
        v = substr(kv[i], index(kv[i], "=") + 1)
        w[substr(kv[i], 1, index(kv[i], "=") - 1)] = v ~ /^-?[0-9]+$/ ? v + 0 : v
    }
    problems = pvLines = ""
    depth = 1
    lastNodes = lastTime = -1
    for (i = 1; i <= count; i++) {
        line = lines[i]
        if (progress) fail("a line after the one without a principal variation")
        if (line ~ depthLine) {
            if (field(line, "depth") != ++depth) fail("depth " field(line, "depth") " out of order")
            depth = field(line, "depth")
            ++pvCount
            lastPv = substr(line, index(line, " pv ") + 4)
            pvLines = pvLines steady(line) "\n"
            score = substr(line, index(line, " score ") + 7)
            sub(/ nodes .*$/, "", score)
            if ("allmate" in w && score != "mate " w["allmate"])
                fail("score " score " at depth " depth)
        } else if (line ~ /^info nodes [0-9]+ nps [0-9]+ time [0-9]+$/ && pvCount) {
            progress = 1
        } else {
            fail("malformed or misplaced report line")
            continue
        }
        nodes = field(line, "nodes")
        time = field(line, "time")
        want = time > 0 ? int(nodes * 1000 / time) : 0
        if (field(line, "nps") != want) fail("speed not nodes * 1000 / time: " want)
        if (nodes < lastNodes || time < lastTime) fail("nodes or time went down")
        lastNodes = nodes
        lastTime = time
    }
    if (pvCount < ("minlines" in w ? w["minlines"] : 1)) fail(pvCount " info depth lines")
    if ("depth" in w && (depth != w["depth"] || progress)) fail("the search did not end at depth")
    if ("mate" in w && score != "mate " w["mate"]) fail("the last score is " score)
    sub(/ (lower|upper)bound$/, "", score)
    gsub(/ /, "_", score) # as a rule writes it: cp_0
    if ("score" in w && score != w["score"]) fail("the last score is " score ", not " w["score"])
    v = score ~ /^mate_-/ ? -1e9 : score ~ /^cp_/ ? substr(score, 4) + 0 : 1e9 # mated: below all
    if ("maxscore" in w && v > w["maxscore"]) fail("the last score is " score)
    if ("mintime" in w && lastTime < w["mintime"]) fail("the last time is " lastTime " ms")
    if ("minnodes" in w && lastNodes < w["minnodes"]) fail("the last node count is " lastNodes)
    if ("maxnodes" in w && lastNodes > w["maxnodes"]) fail("the last node count is " lastNodes)
    if ("fewernodes" in w && lastNodes >= finalNodes[k = w["fewernodes"]])
        fail(lastNodes " nodes, not fewer than search " k "'s " finalNodes[k])
    if ("same" in w && (pvLines != savedPv[w["same"]] || bestLine != savedBest[w["same"]]))
        fail("the info depth or bestmove lines differ from search " w["same"])

    nb = split(bestLine, bm, " ")
    np = split(lastPv, pv, " ")
    if (bestLine !~ /^bestmove [a-h][1-8][a-h][1-8][nbrq]?( ponder [a-h][1-8][a-h][1-8][nbrq]?)?$/)
        fail("malformed bestmove line")
    if (np > 0 && bm[2] != pv[1]) fail("bestmove " bm[2] ", the principal variation's " pv[1])
    if (count && !progress && (np >= 2 ? bm[4] != pv[2] : nb == 4))
        fail("the ponder move is not the principal variation's reply " pv[2])
    if ("best" in w && bm[2] != w["best"]) fail("bestmove " bm[2] ", not " w["best"])
    if ("among" in w && index("," w["among"] ",", "," bm[2] ",") == 0) fail("bestmove " bm[2])
    if ("ponder" in w && (nb == 4 ? bm[4] : "none") != w["ponder"]) fail("ponder move " bm[4])

    if (problems == "") print "checked by rule" (rule == "" ? "" : ": " rule)
    printf "%s", problems
    for (i = 1; problems != "" && i <= count; i++) print "| " lines[i]
    if (problems != "") print "| " bestLine
    savedPv[n] = pvLines
    count = 0
}

# Every search's last node count and lines are kept, for the rules that compare searches.
/^info (depth|nodes) / {
    finalNodes[searches + 1] = field($0, "nodes")
    if ((searches + 1) in rule) {
        lines[++count] = $0
        next
    }
    if ($0 ~ / pv /) savedPv[searches + 1] = savedPv[searches + 1] steady($0) "\n"
}

/^bestmove/ {
    savedBest[++searches] = $0
    if (searches in rule) {
        checkSearch(searches, rule[searches], $0)
        next
    }
}

# The BookFile default is where the program found its book, trying in order: its installed data
# folder (a name ending in share/games/kovrel), that folder of an installation around the
# program, the program's own folder, else plain "openings.dat" in the current folder.
function exists(path,    line, r) {
    r = (getline line < path)
    close(path)
    return r >= 0
}
/^option name BookFile type string default / {
    path = substr($0, 42)
    folder = program
    sub(/\/[^\/]*$/, "", folder)
    around = folder "/../share/games/kovrel/openings.dat"
    if (path ~ /^\/.*\/share\/games\/kovrel\/openings\.dat$/)
        ok = exists(path) && (path == around || !exists(around))
    else if (path == folder "/openings.dat") ok = exists(path) && !exists(around)
    else ok = path == "openings.dat" && !exists(folder "/openings.dat") && !exists(around)
    if (ok) $0 = "option name BookFile type string default (the book found)"
    else $0 = "BookFile default not where the program looks: " $0
}

{ print }
