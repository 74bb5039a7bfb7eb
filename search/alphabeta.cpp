#include "search/alphabeta.h"

#include <initializer_list>

#include "core/attacks.h"
#include "core/exchange.h"
#include "core/makemove.h"
#include "core/movegen.h"
#include "eval/evaluate.h"
#include "eval/values.h"
#include "search/settings.h"
#include "search/threats.h"
#include "search/transtable.h"

int32_t pollCountdown = pollInterval;

namespace {

// Offset that puts a move proven by the upper-bound table of its child ahead of the others.
constexpr int64_t tableScoreBase = 36864000;
// Futility: a quiet move this far below the bound one ply (or two) from the horizon is not
// searched.
constexpr int32_t futilityMargin = 6000;
constexpr int32_t deepFutilityMargin = 12000;
// Extensions and reductions, eighths of a ply.
constexpr int32_t recaptureExtension = 5;
constexpr int32_t seventhRankExtension = 6;
constexpr int32_t sixthRankExtension = 4;
constexpr int32_t checkExtension = 8;
constexpr int32_t gainPerEighth = 1125; // material gain worth one eighth of a ply
constexpr int32_t quietReduction = 3;

// How often the node's position occurred before with the same side to move since the last
// capture or pawn move, counting up to two.
int32_t earlierOccurrences(const SearchControl& control, PositionKey key) {
    const int32_t span = control.fiftyMoveCounter & ~1;
    int32_t seen = 0;
    for (int32_t i = control.keyCount - span + 1; i <= control.keyCount - 1 && seen < 2; i += 2) {
        if (i >= 0 && control.keyHistory[i] == key) ++seen;
    }
    return seen;
}

int32_t quiescenceLevelOf(int32_t remaining) {
    if (remaining >= 1) return 0;
    return remaining >= -7 ? 1 : 2;
}

int32_t findInOrder(const MoveList& moves, const int32_t* order, int32_t lastIndex, const Move& m) {
    for (int32_t i = 0; i <= lastIndex; ++i) {
        if (sameMove(moves.moves[order[i]], m)) return i;
    }
    return -1;
}

void swapOrder(int32_t* order, int32_t a, int32_t b) {
    const int32_t t = order[a];
    order[a] = order[b];
    order[b] = t;
}

Move tableMove(const HashEntry& e) {
    return Move{e.fromFile, e.fromRank, e.toFile, e.toRank, e.promotion};
}

// Fills in the node's attack sets (the position must be the node's own).
void knowAttacks(NodeAttacks& attacks, const Position& pos, const PieceLists& lists, Side side) {
    if (attacks.known) return;
    attacks.occupied = occupancy(pos);
    attacks.opponent = attackedSquares(pos, lists, -side, attacks.occupied);
    attacks.known = true;
}

// Whether a piece of `attacker` may reach the target of move m once it is made, given the
// squares it attacked and the occupied squares before the move. Only the line through the
// square the move left can have opened onto the target, and the pieces on that line are the
// same before and after the move, so it may be asked either side of the move; en passant and
// castling, which change more squares, always count as reachable.
bool reachable(const Position& pos, const Move& m, bool special, const NodeAttacks& before,
               Side attacker) {
    const int32_t to = squareIndex(m.toFile, m.toRank);
    if (special || (before.opponent >> to & 1) != 0) return true;
    const int32_t from = squareIndex(m.fromFile, m.fromRank);
    const int32_t line = geometry.line[to][from];
    if (line < 0) return false;
    const uint64_t occupied = (before.occupied & ~(uint64_t{1} << from)) | uint64_t{1} << to;
    const int32_t t = firstOnLine(occupied, to, line);
    if (t < 0) return false;
    const int32_t kind = attacker * pos.squares[t];
    return kind == queen || kind == (isDiagonal(line) ? bishop : rook);
}

// What the node keeps of the two table entries of its position.
struct Probe {
    int32_t lower = -noValue;
    int32_t upper = noValue;
    int32_t frontMoves = 0;
    bool cutoff = false; // a stored bound already answers the question
    int32_t value = 0;
};

// Probes both tables; their moves go to the front of the order array.
Probe probeTables(PositionKey key, int32_t remaining, int32_t distance, int32_t testBound,
                  Side side, const MoveList& moves, int32_t lastIndex, int32_t* order,
                  Position& pos) {
    Probe probe;
    const size_t slot = hashIndex(key);
    bool lowerMoveValid = false;
    HashEntry& lower = lowerBoundTable[slot];
    if (usableEntry(lower, key, pos, side)) {
        if (lower.depthLeft >= remaining) {
            probe.lower = fromTableValue(lower.value, distance);
            lower.age = searchAge;
            if (probe.lower > testBound) {
                probe.cutoff = true;
                probe.value = probe.lower;
                return probe;
            }
        }
        lowerMoveValid = true;
        const int32_t at = findInOrder(moves, order, lastIndex, tableMove(lower));
        if (at >= 0) {
            swapOrder(order, at, 0);
            probe.frontMoves = 1;
        }
    }
    HashEntry& upper = upperBoundTable[slot];
    if (usableEntry(upper, key, pos, side)) {
        if (upper.depthLeft >= remaining) {
            probe.upper = fromTableValue(upper.value, distance);
            upper.age = searchAge;
            if (probe.upper < testBound) {
                probe.cutoff = true;
                probe.value = probe.upper;
                return probe;
            }
        }
        const int32_t target = lowerMoveValid ? 1 : 0;
        const int32_t at = findInOrder(moves, order, lastIndex, tableMove(upper));
        if (at >= 0) {
            if (target <= lastIndex) swapOrder(order, at, target);
            ++probe.frontMoves;
        }
    }
    if (probe.frontMoves > lastIndex + 1) probe.frontMoves = lastIndex + 1;
    return probe;
}

} // namespace

int64_t captureOrderScore(const Position& pos, Side side, const Move& m) {
    const int32_t mover = side * pos.squares[squareIndex(m.fromFile, m.fromRank)];
    const int32_t victim = capturedKind(pos, side, m);
    int64_t score = 0;
    if (victim > 0) score += pieceValue[victim] * 128 - pieceValue[mover];
    if (m.promotion != 0) score += pieceValue[m.promotion] * 128 - 128000;
    return score;
}

namespace {

// The exchange term of a capture's order score, move m of `side` already on the board.
int64_t exchangeTermOnBoard(Side side, const Move& m, Position& pos) {
    return side * staticExchange(-side, pos, m.toFile, m.toRank, 0) * int64_t{2048};
}

} // namespace

int64_t exchangeTerm(PositionKey key, const Material& material, Side side, const Move& m,
                     Position& pos, PieceLists& lists) {
    Material childMaterial = material;
    const MoveUndo undo = playOnBoard(key, side, pos, lists, m, childMaterial);
    const int64_t term = exchangeTermOnBoard(side, m, pos);
    takeBack(side, pos, lists, m, undo);
    return term;
}

Ordering scoreMoves(PositionKey key, const Material& material, int32_t testBound, int32_t distance,
                    int32_t remaining, Side side, const MoveList& moves, int32_t lastIndex,
                    const int32_t* order, int32_t frontMoves, int32_t upper, int64_t* scores,
                    bool* pending, NodeAttacks& attacks, Position& pos, PieceLists& lists) {
    // The children's upper-bound slots are fetched together, from keys worked out without
    // making the moves; a move is made only when its slot holds its child's key. A capture
    // whose target the opponent can reach is scored as if the opponent won nothing back there,
    // and marked pending: its exchange is worked out only if that score comes up for choice.
    PositionKey childKeys[maxMoves];
    keysAfterMoves(key, side, pos, moves, order, lastIndex, childKeys);
    for (int32_t i = 0; i <= lastIndex; ++i)
        prefetchEntry(upperBoundTable[hashIndex(childKeys[i])]);
    Ordering result;
    // The order terms first, while the slots arrive.
    for (int32_t i = 0; i <= lastIndex; ++i) {
        pending[i] = false;
        scores[i] = 0;
        if (i < frontMoves) continue;
        const Move& m = moves.moves[order[i]];
        const int32_t mover = side * pos.squares[squareIndex(m.fromFile, m.fromRank)];
        int64_t terms = historyTable[historyIndex(m, mover, side)];
        if (m.promotion != 0) terms += (pieceValue[m.promotion] - 1000) * int64_t{4096};
        const int32_t victim = capturedKind(pos, side, m);
        if (victim > 0) {
            // The line a capture opens through its from-square and the pieces on it are the
            // same before and after the move, so the reach is known before it is made.
            const bool enPassant = pos.squares[squareIndex(m.toFile, m.toRank)] == 0;
            knowAttacks(attacks, pos, lists, side);
            pending[i] = reachable(pos, m, enPassant, attacks, -side);
            terms += 2 * pieceValue[victim] * int64_t{2048} - pieceValue[mover] * 32;
        }
        scores[i] = terms;
    }
    // Then the moves whose child's slot holds its key.
    for (int32_t i = 0; i <= lastIndex; ++i) {
        HashEntry& entry = upperBoundTable[hashIndex(childKeys[i])];
        if (!entryHasKey(entry, childKeys[i])) continue;
        const Move& m = moves.moves[order[i]];
        PositionKey childKey = key;
        Material childMaterial = material;
        const MoveUndo undo = playOnBoard(childKey, side, pos, lists, m, childMaterial);
        if (pending[i]) {
            scores[i] += exchangeTermOnBoard(side, m, pos);
            pending[i] = false;
        }
        if (usableEntry(entry, childKey, pos, -side)) {
            const int32_t v = -fromTableValue(entry.value, distance + 8);
            const int32_t enough = remaining - 8 > 0 ? remaining - 8 : 0;
            if (v <= testBound || entry.depthLeft < enough) {
                scores[i] += static_cast<int64_t>(v - testBound) * 4096 + tableScoreBase;
            } else {
                entry.age = searchAge;
                takeBack(side, pos, lists, m, undo);
                result.cutoff = true;
                result.value = v < upper ? v : upper;
                result.bestIndex = order[i];
                return result;
            }
        }
        takeBack(side, pos, lists, m, undo);
    }
    return result;
}

namespace {

// The child's depth limit: extensions for recaptures, pawn pushes and checks; an extension or
// reduction by what the move's threats and captures gain that the opponent cannot parry;
// then the limits.
int32_t childDepthLimit(int32_t depthLimit, const Material& before, const Material& after,
                        int32_t exchange, ThreatKind& childCheck, ThreatKind moveThreat, Side side,
                        const Move& m, int32_t mover, bool captures, Position& pos) {
    int32_t d = depthLimit;
    const int32_t balanceBefore = (before.sum[1] - before.sum[0]) * side;
    const int32_t balanceAfter = (after.sum[1] - after.sum[0]) * side;
    if (balanceBefore < materialBalance * side && balanceAfter >= materialBalance * side)
        d += recaptureExtension;
    if (mover == pawn) {
        if (m.toRank == (side > 0 ? 6 : 1)) d += seventhRankExtension;
        if (gamePhase > 2 && m.toRank == (side > 0 ? 5 : 2)) d += sixthRankExtension;
    }
    int32_t tMax = 0;
    int32_t tMin = 0;
    if (childCheck == 2) {
        d += checkExtension;
    } else {
        childCheck = threatScan(pos, side, m.fromFile, m.fromRank, m.toFile, m.toRank);
        if (childCheck == 1) {
            // Value the threatened pieces by the exchanges the mover could start on them.
            int32_t t1 = 0;
            int32_t t2 = 0;
            const Threat disc = discoveredThreat;
            const Threat dir = directThreat;
            const Threat second = secondThreat;
            if (disc.value != 0) {
                t1 = side * staticExchange(side, pos, disc.file, disc.rank, 1,
                                           sideKingSafe | opponentKingSafe);
            }
            if (dir.value != 0 && exchange == 0 &&
                (dir.file != disc.file || dir.rank != disc.rank)) {
                t2 = side * staticExchange(side, pos, dir.file, dir.rank, 1,
                                           sideKingSafe | opponentKingSafe);
            }
            tMax = t1 > t2 ? t1 : t2;
            tMin = t1 > t2 ? t2 : t1;
            if ((second.value < 0 || (second.value > 0 && exchange == 0)) &&
                (second.file != disc.file || second.rank != disc.rank) &&
                (second.file != dir.file || second.rank != dir.rank)) {
                const int32_t t3 = side * staticExchange(side, pos, second.file, second.rank, 1,
                                                         sideKingSafe | opponentKingSafe);
                if (t3 > tMax) {
                    tMin = tMax;
                    tMax = t3;
                } else if (t3 > tMin) {
                    tMin = t3;
                }
            }
        }
    }
    int32_t gain = (tMin + (balanceAfter - balanceBefore) + exchange) / gainPerEighth;
    if (gain < 0) gain *= 4;
    if (tMax == 0 && d == depthLimit && !captures && m.promotion == 0 && moveThreat != 2)
        gain -= quietReduction;
    d += gain;

    int32_t ceiling = depthLimit + 4;
    if (childCheck == 2) {
        ceiling = depthLimit + 12;
    } else if (depthLimit <= fullWidthDepth) {
        ceiling = depthLimit + 8;
    }
    if (d > ceiling) {
        d = ceiling;
    } else if (d < fullWidthDepth / 2) {
        d = fullWidthDepth / 2;
    }
    return d < maxDepthLimit ? d : maxDepthLimit;
}

} // namespace

int32_t historyIndex(const Move& m, int32_t kind, Side side) {
    return ((((m.toRank * 8 + m.toFile) * 8 + m.fromRank) * 8 + m.fromFile) * 6 + kind - 1) * 2 +
           (side > 0 ? 1 : 0);
}

void rewardHistory(uint32_t& counter, int32_t exponent) {
    if (exponent <= 20 && counter <= 1048575u) {
        counter += 1u << exponent;
    } else if (counter <= 2097150u) {
        counter += 1;
    }
}

int32_t alphaBetaWithMemory(SearchControl& control, PositionKey key, int32_t depthLimit,
                            const Material& material, int32_t testBound, int32_t distance,
                            ThreatKind moveThreat, Side side, MoveList& moves, int32_t lastIndex,
                            Position& pos, PieceLists& lists) {
    // 1. Bookkeeping, and the interruption poll every pollInterval nodes. The node's table
    //    slots are fetched meanwhile.
    const size_t slot = hashIndex(key);
    prefetchEntry(lowerBoundTable[slot]);
    prefetchEntry(upperBoundTable[slot]);
    ++nodeCount;
    if (--pollCountdown == 0) {
        pollCountdown = pollInterval;
        control.pollFunction(control);
        if (control.StopFlag) {
            searchRunning = 0;
            return 0;
        }
    }

    // 2. Draws: fifty moves, no mating material, a third occurrence.
    if (control.fiftyMoveCounter > 99) return 0;
    if (noMatingMaterial(material, lists)) return 0;
    const int32_t occurrences = earlierOccurrences(control, key);
    if (occurrences == 2) return 0;

    // 3. Remaining depth and quiescence level.
    const int32_t remaining = depthLimit - distance;
    const int32_t level = quiescenceLevelOf(remaining);

    // 4. Probe both tables; their moves go first.
    int32_t order[maxMoves];
    int64_t scores[maxMoves];
    bool pending[maxMoves]; // a capture's score without its exchange, an upper bound
    for (int32_t i = 0; i <= lastIndex; ++i)
        order[i] = i;
    const Probe probe =
        probeTables(key, remaining, distance, testBound, side, moves, lastIndex, order, pos);
    if (probe.cutoff) return probe.value;

    // 5. Order scores, with the enhanced transposition cut-off at levels 0 and 1.
    NodeAttacks attacks;
    if (level == 2) {
        for (int32_t i = 0; i <= lastIndex; ++i) {
            scores[i] = captureOrderScore(pos, side, moves.moves[order[i]]);
            pending[i] = false;
        }
    } else if (testBound > -noValue) {
        const Ordering ordering =
            scoreMoves(key, material, testBound, distance, remaining, side, moves, lastIndex, order,
                       probe.frontMoves, probe.upper, scores, pending, attacks, pos, lists);
        if (ordering.cutoff) return ordering.value; // always above the bound
    } else {
        for (int32_t i = 0; i <= lastIndex; ++i) {
            scores[i] = 0;
            pending[i] = false;
        }
    }

    // 6. Static value of the node, for futility. It is counted here, as the evaluation entry
    //    counts it; when the material alone does not settle it against the bound, the
    //    positional evaluation waits until a move first asks for the value: most nodes end
    //    before any does.
    int32_t staticValue = 0;
    bool staticValueKnown = true;
    if (level < 2) {
        int32_t estimate = 0;
        staticValueKnown = evaluateLazily(material, side * testBound, estimate);
        staticValue = 2 * side * estimate;
    }

    // 7. Push the node's key.
    ++control.keyCount;
    control.keyHistory[control.keyCount] = key;

    // 8. The moves, best score first.
    int32_t best = -noValue;
    Move bestMove = {0, 0, 0, 0, 0};
    const int32_t fiftyBefore = control.fiftyMoveCounter;
    int32_t inCheck = -1;      // whether the side to move is in check: -1 until it is needed
    uint64_t checkAnswers = 0; // in check: the squares where a move can answer it
    // At levels 0 and 1 the squares the opponent attacks before the move and the occupied
    // squares are worked out at the first exchange the node needs: a move to a square the
    // opponent cannot reach afterwards starts no exchange.
    for (int32_t i = 0; i <= lastIndex && best < testBound && searchRunning; ++i) {
        if (i >= probe.frontMoves) {
            // The first of the best scores; a pending capture that comes up gets its exchange
            // and the choice is made again. Its exact score is no higher, and every score before
            // it was lower than its bound, so the choice is the one the exact scores give.
            int32_t pick;
            for (;;) {
                pick = i;
                for (int32_t j = i + 1; j <= lastIndex; ++j) {
                    if (scores[j] > scores[pick]) pick = j;
                }
                if (!pending[pick]) break;
                scores[pick] +=
                    exchangeTerm(key, material, side, moves.moves[order[pick]], pos, lists);
                pending[pick] = false;
            }
            swapOrder(order, i, pick);
            const int64_t s = scores[i];
            scores[i] = scores[pick];
            scores[pick] = s;
            const bool p = pending[i];
            pending[i] = pending[pick];
            pending[pick] = p;
        }
        const Move m = moves.moves[order[i]];
        const int32_t mover = side * pos.squares[squareIndex(m.fromFile, m.fromRank)];
        const bool captures = capturedKind(pos, side, m) != 0;
        control.fiftyMoveCounter = captures || mover == pawn ? 0 : fiftyBefore + 1;

        PositionKey childKey = key;
        Material childMaterial = material;
        // A capture onto an empty square is en passant.
        const bool enPassant = captures && pos.squares[squareIndex(m.toFile, m.toRank)] == 0;
        const bool castles =
            mover == king && (m.toFile - m.fromFile == 2 || m.fromFile - m.toFile == 2);
        if (mover != king && inCheck < 0) {
            inCheck = isSquareSafe(pos, side, -1, 0) ? 0 : 1;
            if (inCheck == 1) checkAnswers = checkAnswerSquares(pos, side, occupancy(pos));
        }
        // In check, a move of another piece that neither takes the checker nor blocks its line
        // is illegal without being tried.
        if (inCheck == 1 && mover != king && !enPassant &&
            (checkAnswers >> squareIndex(m.toFile, m.toRank) & 1) == 0) {
            control.fiftyMoveCounter = fiftyBefore;
            continue;
        }
        // At levels 0 and 1 every move may need an exchange, tested against the node's attack
        // sets; deep in quiescence the few captures test their targets one by one.
        if (level < 2) knowAttacks(attacks, pos, lists, side);
        MoveUndo undo = playOnBoard(childKey, side, pos, lists, m, childMaterial);
        if (mover != king &&
            !(inCheck == 0 && !enPassant
                  ? kingSafeAfterMoveFrom(pos, side, squareIndex(m.fromFile, m.fromRank))
                  : isSquareSafe(pos, side, -1, 0))) {
            takeBack(side, pos, lists, m, undo);
            control.fiftyMoveCounter = fiftyBefore;
            continue;
        }
        // The child's table slots are fetched now, while its depth is worked out.
        const size_t childSlot = hashIndex(childKey);
        prefetchEntry(lowerBoundTable[childSlot]);
        prefetchEntry(upperBoundTable[childSlot]);
        ThreatKind childCheck =
            (enPassant || castles ? !isSquareSafe(pos, -side, -1, 0) : givesCheck(pos, side, m))
                ? 2
                : 0;

        int32_t d = depthLimit;
        bool exchangeKnown = false;
        int32_t exchange = 0;
        bool pruned = false;
        int32_t v = 0;
        if (level < 2) {
            // The mover's king is safe after its legal move, the opponent's when the move gives
            // no check.
            exchange =
                reachable(pos, m, enPassant || castles, attacks, -side)
                    ? side * staticExchange(-side, pos, m.toFile, m.toRank, 1,
                                            childCheck == 2 ? opponentKingSafe
                                                            : sideKingSafe | opponentKingSafe)
                    : 0;
            exchangeKnown = true;
            d = childDepthLimit(depthLimit, material, childMaterial, exchange, childCheck,
                                moveThreat, side, m, mover, captures, pos);
            // Futility: a quiet move far below the bound close to the horizon.
            if (childCheck != 2 && !captures && m.promotion == 0) {
                if (!staticValueKnown && distance - 8 < d && d <= distance + 8) {
                    // The first move to ask: the node's own position is evaluated, the move
                    // taken back for it and made again.
                    takeBack(side, pos, lists, m, undo);
                    staticValue = 2 * side * evaluateExactly(material, pos, lists, side);
                    staticValueKnown = true;
                    childKey = key;
                    childMaterial = material;
                    undo = playOnBoard(childKey, side, pos, lists, m, childMaterial);
                }
                if (d <= distance && distance < d + 8 && staticValue < testBound - futilityMargin) {
                    v = testBound - futilityMargin - 1;
                    pruned = v != -noValue;
                } else if (d - 8 <= distance && distance < d &&
                           staticValue < testBound - deepFutilityMargin) {
                    v = testBound - deepFutilityMargin - 1;
                    pruned = v != -noValue;
                }
            }
        }
        if (!pruned) {
            MoveList childMoves;
            if (distance < d) {
                const int32_t childLast = generateMoves(-side, childMoves, pos, lists, allMoves);
                v = -alphaBetaWithMemory(control, childKey, d, childMaterial, -testBound,
                                         distance + 8, childCheck, -side, childMoves, childLast,
                                         pos, lists);
            } else if (distance >= d + quiescenceDepth) {
                v = 2 * side * evaluate(childMaterial, pos, lists, -side, side * testBound);
            } else if (childCheck == 2) {
                // A check in the quiescence stage is answered by all the evasions.
                v = 2 * (mateValue - 8 - distance);
                if (v > testBound) {
                    const int32_t childLast =
                        generateMoves(-side, childMoves, pos, lists, allMoves);
                    v = -alphaBetaWithMemory(control, childKey, d, childMaterial, -testBound,
                                             distance + 8, 2, -side, childMoves, childLast, pos,
                                             lists);
                }
            } else {
                // Quiescence: the opponent may stand pat or go on capturing.
                int32_t e;
                if (distance < d + 8) {
                    e = side * evaluate(childMaterial, pos, lists, -side, side * testBound);
                } else {
                    // The opponent can start an exchange only on a target it attacks now.
                    if (!exchangeKnown &&
                        (enPassant || castles || !isSquareSafe(pos, side, m.toFile, m.toRank)))
                        exchange = side * staticExchange(-side, pos, m.toFile, m.toRank, 1,
                                                         sideKingSafe | opponentKingSafe);
                    e = side * evaluate(childMaterial, pos, lists, -side,
                                        side * (testBound - 2 * exchange)) +
                        exchange;
                }
                v = 2 * e;
                if (v > testBound) {
                    const int32_t childLast =
                        generateMoves(-side, childMoves, pos, lists, capturesOnly);
                    if (childLast >= 0) {
                        const int32_t w = -alphaBetaWithMemory(
                            control, childKey, d, childMaterial, -testBound, distance + 8,
                            childCheck, -side, childMoves, childLast, pos, lists);
                        if (w < v) v = w;
                    }
                }
            }
        }
        if (v > best && searchRunning) {
            best = v;
            bestMove = m;
        }
        takeBack(side, pos, lists, m, undo);
        control.fiftyMoveCounter = fiftyBefore;
    }

    // 9. Pop the key.
    --control.keyCount;
    if (!searchRunning) return 0;

    // 10. No legal move: mate, stalemate, or (deep in quiescence) nothing to capture.
    if (best == -noValue) {
        if (moveThreat == 2) return distance - mateValue;
        return level < 2 ? 0 : -noValue;
    }

    // 11. Stay within the bounds the tables proved.
    if (best < probe.lower) {
        best = probe.lower;
    } else if (best > probe.upper) {
        best = probe.upper;
    }

    // 12. History.
    if (remaining >= 0) {
        const int32_t mover = side * pos.squares[squareIndex(bestMove.fromFile, bestMove.fromRank)];
        const int32_t exponent = remaining / 8 + (best > testBound ? 2 : 0);
        rewardHistory(historyTable[historyIndex(bestMove, mover, side)], exponent);
    }

    // 13. A position seen once before: its entries are no good for either occurrence.
    if (occurrences == 1) {
        invalidateEntry(lowerBoundTable, slot);
        invalidateEntry(upperBoundTable, slot);
        return best;
    }

    // 14. Store the bound.
    const BoundTable& table = best > testBound ? lowerBoundTable : upperBoundTable;
    storeBound(table, slot, key, best, distance, remaining, level, bestMove, pos);
    return best;
}
