#include "search/driver.h"

#include <cstdio>

#include "core/derive.h"
#include "core/exchange.h"
#include "core/makemove.h"
#include "core/movegen.h"
#include "core/movetext.h"
#include "eval/evaluate.h"
#include "search/alphabeta.h"
#include "search/book.h"
#include "search/settings.h"
#include "search/threats.h"
#include "search/transtable.h"

namespace {

// Half-width of a root move's first range around its static score.
constexpr int32_t rootWindow = 900;
// How far a failed test pushes the opposite bound of a range it crossed.
constexpr int32_t rangeSpread = 1800;
// A best value this far below the root's static value lets the search use its whole budget;
// an interrupted iteration is taken only with a proven gain of this much.
constexpr int32_t troubleMargin = 1500;
constexpr int32_t maxIterationDepth = 248;
constexpr int32_t refinementTests = 20;
constexpr int32_t shownRanges = 8;

// One root move: its static score, its range of values, whether the range's bounds were proven
// by a test of this iteration, and what the move attacks.
struct RootMove {
    int32_t staticScore;
    int32_t lower;
    int32_t upper;
    bool lowerProven;
    bool upperProven;
    ThreatKind rootThreat;
};

// Everything one call of the driver works on.
struct Root {
    SearchControl& control;
    Side side;
    MoveList& moves;
    int32_t lastIndex;
    Position& pos;
    PieceLists lists;
    Material material;
    PositionKey key;
    RootMove rootMoves[maxMoves];
    int32_t order[maxMoves];
    int32_t fiftyAtEntry;
};

// Time since the search began, in the front end's clock unit.
int64_t elapsedTime(const SearchControl& control) {
    return control.now() - control.searchStartTime;
}

// Odd midpoint of a range: a test bound that splits it.
int32_t oddMidpoint(int32_t lower, int32_t upper) {
    const int32_t mid = (lower + upper) / 2;
    return mid - (mid + 1) % 2;
}

// "Better" for the move at position 0: the greater lower bound, then the greater upper bound.
bool betterLower(const RootMove& a, const RootMove& b) {
    return a.lower > b.lower || (a.lower == b.lower && a.upper > b.upper);
}
// Order behind it: the greater upper bound, then the greater lower bound.
bool betterUpper(const RootMove& a, const RootMove& b) {
    return a.upper > b.upper || (a.upper == b.upper && a.lower > b.lower);
}

// Position (in the order array) of the move with the greatest lower bound; earlier on full ties.
int32_t bestByLower(const Root& root) {
    int32_t best = 0;
    for (int32_t i = 1; i <= root.lastIndex; ++i) {
        if (betterLower(root.rootMoves[root.order[i]], root.rootMoves[root.order[best]])) best = i;
    }
    return best;
}

// Puts the move with the greatest lower bound first, the others (keeping their relative order
// on ties) by upper bound; returns whether the best move is separated from all others.
bool arrange(Root& root) {
    const int32_t best = bestByLower(root);
    const int32_t bestMove = root.order[best];
    for (int32_t i = best; i > 0; --i)
        root.order[i] = root.order[i - 1];
    root.order[0] = bestMove;
    // Stable insertion sort of positions 1..last.
    for (int32_t i = 2; i <= root.lastIndex; ++i) {
        const int32_t moving = root.order[i];
        int32_t j = i;
        while (j > 1 && betterUpper(root.rootMoves[moving], root.rootMoves[root.order[j - 1]])) {
            root.order[j] = root.order[j - 1];
            --j;
        }
        root.order[j] = moving;
    }
    const RootMove& first = root.rootMoves[root.order[0]];
    if (!first.lowerProven || first.lower < root.rootMoves[root.order[1]].upper) return false;
    for (int32_t i = 1; i <= root.lastIndex; ++i) {
        if (!root.rootMoves[root.order[i]].upperProven) return false;
    }
    return true;
}

// Makes root move `index`, updating the fifty-move counter; the child's key and material.
MoveUndo makeRootMove(Root& root, int32_t index, PositionKey& childKey, Material& childMaterial) {
    const Move& m = root.moves.moves[index];
    const PieceCode mover = root.pos.squares[squareIndex(m.fromFile, m.fromRank)];
    const PieceCode target = root.pos.squares[squareIndex(m.toFile, m.toRank)];
    root.control.fiftyMoveCounter =
        target != 0 || mover == root.side * pawn ? 0 : root.fiftyAtEntry + 1;
    childKey = root.key;
    childMaterial = root.material;
    return playOnBoard(childKey, root.side, root.pos, root.lists, m, childMaterial);
}

void unmakeRootMove(Root& root, int32_t index, const MoveUndo& undo) {
    takeBack(root.side, root.pos, root.lists, root.moves.moves[index], undo);
    root.control.fiftyMoveCounter = root.fiftyAtEntry;
}

// One null-window test of a made root move against test bound t; the result narrows its
// range unless the search was stopped meanwhile.
void testRootMove(Root& root, int32_t index, int32_t t, PositionKey childKey,
                  const Material& childMaterial, MoveList& replies, int32_t lastReply) {
    RootMove& rm = root.rootMoves[index];
    const int32_t v =
        -alphaBetaWithMemory(root.control, childKey, fullWidthDepth, childMaterial, -t, 8,
                             rm.rootThreat, -root.side, replies, lastReply, root.pos, root.lists);
    if (!searchRunning) return;
    if (v <= t) {
        rm.upper = v;
        rm.upperProven = true;
        if (rm.lower > v) rm.lower = v - rangeSpread;
    } else {
        rm.lower = v;
        rm.lowerProven = true;
        if (rm.upper < v) rm.upper = v + rangeSpread;
    }
}

// Static scores of the root moves, sorted best first (earlier move first on equal scores).
void scoreRootMoves(Root& root) {
    for (int32_t i = 0; i <= root.lastIndex; ++i) {
        const Move& m = root.moves.moves[i];
        PositionKey childKey;
        Material childMaterial;
        const MoveUndo undo = makeRootMove(root, i, childKey, childMaterial);
        RootMove& rm = root.rootMoves[i];
        rm.rootThreat = threatScan(root.pos, root.side, m.fromFile, m.fromRank, m.toFile, m.toRank);
        rm.staticScore = 2 * root.side *
                         (evaluate(childMaterial, root.pos, root.lists, -root.side, 0) +
                          staticExchange(-root.side, root.pos, m.toFile, m.toRank, 1));
        unmakeRootMove(root, i, undo);
        root.order[i] = i;
    }
    for (int32_t i = 1; i <= root.lastIndex; ++i) {
        const int32_t moving = root.order[i];
        int32_t j = i;
        while (j > 0 &&
               root.rootMoves[moving].staticScore > root.rootMoves[root.order[j - 1]].staticScore) {
            root.order[j] = root.order[j - 1];
            --j;
        }
        root.order[j] = moving;
    }
}

void printStaticList(const Root& root) {
    std::printf("current best-first move list with respective evaluation:\n");
    for (int32_t i = 0; i <= root.lastIndex; ++i) {
        const int32_t index = root.order[i];
        std::printf("%s=% 7ld", moveText(root.moves.moves[index]).text,
                    static_cast<long>(root.rootMoves[index].staticScore / 2));
        std::printf(i % 4 == 3 || i == root.lastIndex ? "\n" : "\t");
    }
    if (searchTimeLimit < 1) {
        std::printf("\n- time for this move: ? sec -\n\n");
    } else {
        std::printf("\n- time for this move: %ld sec -\n\n", static_cast<long>(searchTimeLimit));
    }
}

// Divides every history counter of each colour so that the greatest becomes 1024.
void rescaleHistory() {
    for (int32_t colour = 0; colour < 2; ++colour) {
        uint64_t greatest = 1;
        for (size_t i = colour; i < historySize; i += 2) {
            if (historyTable[i] > greatest) greatest = historyTable[i];
        }
        // Most counters are 0 and stay 0; the division is skipped for them.
        for (size_t i = colour; i < historySize; i += 2) {
            if (historyTable[i] != 0)
                historyTable[i] =
                    static_cast<uint32_t>(historyTable[i] * uint64_t{1024} / greatest);
        }
    }
}

// Narrows the range of a displayed move (at most refinementTests tests) until its value is
// exact, without a time limit.
void refineRange(Root& root, int32_t index) {
    RootMove& rm = root.rootMoves[index];
    if (rm.lowerProven && rm.upperProven && rm.lower >= rm.upper) return;
    const int32_t savedLimit = searchTimeLimit;
    searchTimeLimit = 0;
    PositionKey childKey;
    Material childMaterial;
    const MoveUndo undo = makeRootMove(root, index, childKey, childMaterial);
    MoveList replies;
    const int32_t lastReply = generateMoves(-root.side, replies, root.pos, root.lists, allMoves);
    for (int32_t test = 0; test < refinementTests && searchRunning; ++test) {
        int32_t t;
        if (!rm.lowerProven) {
            t = rm.lower - 1;
        } else if (!rm.upperProven) {
            t = rm.upper + 1;
        } else {
            t = oddMidpoint(rm.lower, rm.upper);
        }
        testRootMove(root, index, t, childKey, childMaterial, replies, lastReply);
        if (rm.lowerProven && rm.upperProven && rm.lower >= rm.upper) break;
    }
    unmakeRootMove(root, index, undo);
    searchTimeLimit = savedLimit;
}

void printPrincipalVariation(Root& root, int32_t index) {
    PositionKey childKey;
    Material childMaterial;
    const MoveUndo undo = makeRootMove(root, index, childKey, childMaterial);
    char text[pvTextSize] = "";
    std::printf("] PV:");
    walkPrincipalVariation(childKey, root.pos, root.lists, -root.side, 8, 248, text);
    std::printf("%s\n", text);
    unmakeRootMove(root, index, undo);
}

// The summary of an iteration for a front end that reports in its own words: the front
// move's range and the chosen move with its principal variation from the tables.
void callReport(Root& root, int32_t chosen) {
    const RootMove& front = root.rootMoves[root.order[0]];
    IterationReport report = {};
    report.depth = fullWidthDepth / 8 + 1;
    report.lower = front.lower;
    report.upper = front.upper;
    report.lowerProven = front.lowerProven;
    report.upperProven = front.upperProven;
    report.finished = searchRunning != 0;
    report.chosen = root.moves.moves[chosen];
    report.line[0] = report.chosen;
    PositionKey childKey;
    Material childMaterial;
    const MoveUndo undo = makeRootMove(root, chosen, childKey, childMaterial);
    report.lineLength = 1 + principalVariation(childKey, root.pos, root.lists, -root.side, 8,
                                               maxIterationDepth, report.line + 1);
    unmakeRootMove(root, chosen, undo);
    root.control.report(root.control, report);
}

void reportIteration(Root& root, int32_t chosen, int32_t bestValue, int32_t showPv,
                     bool pondering) {
    const int64_t elapsed = elapsedTime(root.control);
    if (root.control.output == SearchOutput::report) return callReport(root, chosen);
    if (root.control.output == SearchOutput::xboard) {
        if (showPv) {
            std::printf("%ld %ld %ld %ld %s\n", static_cast<long>(fullWidthDepth / 8 + 1),
                        static_cast<long>(root.rootMoves[root.order[0]].lower / 20),
                        static_cast<long>(elapsed) * 100, static_cast<long>(nodeCount),
                        moveText(root.moves.moves[chosen]).text);
            std::fflush(stdout);
        }
        return;
    }
    if (pondering) {
        std::printf("best move: %s=[% 7ld .. ?]\n", moveText(root.moves.moves[chosen]).text,
                    static_cast<long>(bestValue / 2));
    } else {
        std::printf("current best-first move list with respective value range:\n");
        for (int32_t i = 0; i <= root.lastIndex; ++i) {
            const int32_t index = root.order[i];
            const MoveText text = moveText(root.moves.moves[index]);
            if (i >= shownRanges) {
                std::printf("%s", text.text);
                std::printf(i % 8 == 7 || i == root.lastIndex ? "\n" : "\t");
                continue;
            }
            const bool details = showPv && searchRunning;
            if (details) refineRange(root, index);
            const RootMove& rm = root.rootMoves[index];
            std::printf("%s=[% 7ld%s..% 7ld%s", text.text, static_cast<long>(rm.lower / 2),
                        rm.lowerProven ? " " : "?", static_cast<long>(rm.upper / 2),
                        rm.upperProven ? " " : "?");
            if (details && searchRunning) {
                printPrincipalVariation(root, index);
            } else {
                std::printf("]\n");
            }
        }
    }
    if (!searchRunning) {
        if (searchTimeLimit > 0 && elapsedTime(root.control) >= searchTimeLimit)
            std::printf("time over\n");
        std::printf("iteration interrupted - ");
    } else {
        std::printf("iteration finished - ");
    }
    std::printf("total time: %ld sec - #nodes: %ld\n\n",
                static_cast<long>(elapsedTime(root.control)), static_cast<long>(nodeCount));
}

// One pass over the root moves: each is tested against the bound that would separate it from
// the best move, unless its proven upper bound already lies in the lower half of the best
// move's range.
void runPass(Root& root) {
    int32_t b = 0;
    int32_t second = 1;
    for (int32_t i = 0; i <= root.lastIndex && searchRunning; ++i) {
        const int32_t index = root.order[i];
        RootMove& rm = root.rootMoves[index];
        const RootMove& best = root.rootMoves[root.order[b]];
        if (i != b && rm.upperProven && 2 * rm.upper <= best.lower + best.upper) continue;

        PositionKey childKey;
        Material childMaterial;
        const MoveUndo undo = makeRootMove(root, index, childKey, childMaterial);
        MoveList replies;
        const int32_t lastReply =
            generateMoves(-root.side, replies, root.pos, root.lists, allMoves);
        int32_t t;
        if (i != b) {
            t = best.lower + 1;
            if (2 * t < rm.lower + rm.upper) t = oddMidpoint(rm.lower, rm.upper);
        } else {
            t = root.rootMoves[root.order[second]].upper - 1;
            if (2 * t > rm.lower + rm.upper) t = oddMidpoint(rm.lower, rm.upper);
        }
        testRootMove(root, index, t, childKey, childMaterial, replies, lastReply);

        // The best so far, and the strongest challenger by upper bound.
        b = 0;
        for (int32_t j = 1; j <= root.lastIndex; ++j) {
            if (betterLower(root.rootMoves[root.order[j]], root.rootMoves[root.order[b]])) b = j;
        }
        second = b == 0 ? 1 : 0;
        for (int32_t j = 0; j <= root.lastIndex; ++j) {
            if (j != b &&
                betterUpper(root.rootMoves[root.order[j]], root.rootMoves[root.order[second]]))
                second = j;
        }
        unmakeRootMove(root, index, undo);
    }
}

} // namespace

int32_t runSearch(SearchControl& control, Side side, MoveList& moves, int32_t lastIndex,
                  Position& pos, int32_t showPv, int32_t ponderTime, int32_t earlyStopTime) {
    // 1. Set-up. The limits live in the control record while the search runs, so that the
    //    front end's poll may change them.
    Root root = {control, side, moves, lastIndex, pos, {}, {}, 0, {}, {}, control.fiftyMoveCounter};
    const bool pondering = ponderTime == ponderingSearch;
    const int32_t entryDepth = fullWidthDepth;
    control.minimumDepth = fullWidthDepth;
    control.ponderTime = ponderTime;
    control.earlyStopTime = earlyStopTime;
    const int32_t entryTimeLimit = searchTimeLimit;
    derivePositionState(pos, root.key, root.lists, root.material);
    const int32_t rootValue = 2 * side * evaluate(root.material, pos, root.lists, side, 0);

    // 2. and 3. Static scores, and the static list.
    scoreRootMoves(root);
    if (control.output == SearchOutput::console && !pondering) printStaticList(root);

    // 4. The opening book.
    if (bookEnabled) {
        const int32_t bookMove = probeBook(root.key, side, moves, root.order, lastIndex);
        if (bookMove == bookMissing && control.bookMissingIsFatal) {
            std::printf("Error (fopen(\"%s\", \"rt\")): mtdriver\n", bookFile);
            return 0;
        }
        if (bookMove != noBookMove) return bookMove;
    }

    // 5. Shortcuts: a single move, or a one-ply search without a time limit.
    if (lastIndex == 0) return 0;
    if (fullWidthDepth == 8 && searchTimeLimit < 1 && !pondering) return root.order[0];

    // 6. Start: every move's range around its static score.
    int32_t chosen = root.order[0];
    int32_t bestValue = root.rootMoves[chosen].staticScore;
    int32_t stability = 0;
    for (int32_t i = 0; i <= lastIndex; ++i) {
        RootMove& rm = root.rootMoves[i];
        rm.lower = rm.staticScore - rootWindow;
        rm.upper = rm.staticScore + rootWindow;
        rm.lowerProven = false;
        rm.upperProven = false;
    }
    searchRunning = 1;
    fullWidthDepth = 8;
    nodeCount = 0;
    pollCountdown = pollInterval;
    ++searchAge;
    rescaleHistory();

    // 7. Iterations.
    while (searchRunning) {
        // The clock: beyond the minimum depth, a new iteration starts only within the first
        // quarter of the budget while the best value holds up.
        const int32_t minimumDepth = control.minimumDepth;
        if (!pondering && (searchTimeLimit >= 1 || fullWidthDepth > minimumDepth - 8)) {
            const int64_t elapsed = elapsedTime(control);
            int64_t budget = int64_t{control.ponderTime} + searchTimeLimit;
            if (fullWidthDepth > minimumDepth - 8 && bestValue >= rootValue - troubleMargin)
                budget /= 4;
            if (control.ponderTime + elapsed > budget) break;
        }
        if (fullWidthDepth > maxIterationDepth) break;
        if (control.output == SearchOutput::console) {
            std::printf("new iteration with depth %ld\n",
                        static_cast<long>(fullWidthDepth / 8 + 1));
            std::fflush(stdout);
        }

        bool resolved = arrange(root);
        while (!resolved && searchRunning) {
            const int32_t exponent = fullWidthDepth / 8 + 1;
            const Move& first = moves.moves[root.order[0]];
            const int32_t kind = side * pos.squares[squareIndex(first.fromFile, first.fromRank)];
            rewardHistory(historyTable[historyIndex(first, kind, side)], exponent);
            runPass(root);
            resolved = arrange(root);
        }

        // Accept the iteration's best move; an interrupted one only with a clear proven gain.
        const int32_t front = root.order[0];
        const RootMove& leader = root.rootMoves[front];
        if (searchRunning || (leader.lowerProven && leader.lower >= bestValue + troubleMargin)) {
            if (front == chosen) {
                ++stability;
                if (stability == 2 && searchTimeLimit >= 1 &&
                    elapsedTime(control) >= control.earlyStopTime)
                    searchRunning = 0;
            } else {
                chosen = front;
                stability = 0;
            }
            bestValue = root.rootMoves[chosen].upper;
        }

        reportIteration(root, chosen, bestValue, showPv, pondering);
        if (!searchRunning) break;
        fullWidthDepth += 8;
        for (int32_t i = 0; i <= lastIndex; ++i) {
            root.rootMoves[i].lowerProven = false;
            root.rootMoves[i].upperProven = false;
        }
    }

    // 8. End.
    fullWidthDepth = entryDepth;
    searchTimeLimit = entryTimeLimit;
    control.fiftyMoveCounter = root.fiftyAtEntry;
    if (pondering) --searchAge;
    return chosen;
}
