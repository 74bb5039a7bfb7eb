#include "analysis/annotate.h"

#include <cstring>

#include "analysis/san.h"
#include "core/movegen.h"
#include "search/transtable.h"

namespace {

// What a loss is measured in: centipawns, a mate counting as 100 pawns less its moves (so that
// a slower mate loses a little, and a mate let go loses nearly everything).
constexpr int32_t mateWorth = 10000;

Analysis analyses[maxGamePlies + 1]; // the positions of the game being annotated, before each ply
GameLine replay;                     // the game replayed for writing
GameLine variation;                  // the engine's line played out for writing
MoveList legal;

int32_t lossScale(int32_t value) {
    if (!isMateValue(value)) return value / 20;
    const int32_t moves = mateInMoves(value);
    return moves > 0 ? mateWorth - moves : -mateWorth - moves;
}

// The value from White's side for the chart, in centipawns within +-chartLimit.
ChartPoint chartPoint(const Analysis& a, Side side) {
    ChartPoint p = {};
    p.mate = isMateValue(a.value);
    int32_t white = side * a.value / 20;
    if (p.mate) white = side * a.value > 0 ? chartLimit : -chartLimit;
    if (white > chartLimit) white = chartLimit;
    if (white < -chartLimit) white = -chartLimit;
    p.centipawns = white;
    return p;
}

// "White - Black, Event, Date" from the tags that are known.
void chartTitle(const PgnGame& game, char* title, size_t size) {
    const char* names[4] = {"White", "Black", "Event", "Date"};
    const char* values[4];
    for (int32_t i = 0; i < 4; ++i) {
        values[i] = tagValue(game, names[i]);
        if (values[i] != nullptr && (values[i][0] == '\0' || values[i][0] == '?'))
            values[i] = nullptr;
    }
    // The date without its unknown parts: "1858.??.??" is 1858.
    char date[tagValueSize] = "";
    if (values[3] != nullptr) {
        std::strcpy(date, values[3]);
        if (char* unknown = std::strstr(date, ".?")) *unknown = '\0';
    }
    std::snprintf(title, size, "%s - %s%s%s%s%s", values[0] ? values[0] : "White",
                  values[1] ? values[1] : "Black", values[2] ? ", " : "",
                  values[2] ? values[2] : "", date[0] ? ", " : "", date);
}

// The number of a move and the side that plays it.
int32_t moveNumber(const PgnGame& game, int32_t ply) {
    const int32_t blackFirst = game.start.sideToMove < 0 ? 1 : 0;
    return game.startNumber + (ply + blackFirst) / 2;
}

// Writes a move with its number ("12. e4", "12... e5") as one token, so that a line never ends
// between them; a Black move gets its number only when `numbered` (after a comment, a variation
// or at the start). `prefix` goes before it ("(" at the start of a variation).
void writeMove(PgnWriter& w, int32_t number, Side side, bool numbered, const char* san,
               const char* prefix) {
    char token[sanSize + 24];
    if (side > 0) {
        std::snprintf(token, sizeof token, "%s%d. %s", prefix, static_cast<int>(number), san);
    } else if (numbered) {
        std::snprintf(token, sizeof token, "%s%d... %s", prefix, static_cast<int>(number), san);
    } else {
        std::snprintf(token, sizeof token, "%s%s", prefix, san);
    }
    writeToken(w, token, false);
}

// "{+0.35/12}": the value of `a` (`side` to move there) and its depth; "{mate}", "{stalemate}"
// for a position without moves.
void writeValueComment(PgnWriter& w, const Analysis& a, Side side) {
    char comment[40];
    if (a.moves == 0) {
        std::strcpy(comment, a.value != 0 ? "{mate}" : "{stalemate}");
    } else {
        char value[16];
        valueText(a.value, side, value, sizeof value);
        std::snprintf(comment, sizeof comment, "{%s/%d}", value, static_cast<int>(a.depth));
    }
    writeToken(w, comment, false);
}

// The engine's line from the position before ply `ply` as a variation, its first move followed
// by the value the engine gave it.
void writeVariation(PgnWriter& w, const PgnGame& game, int32_t ply, const Analysis& a) {
    variation = replay;
    bool numbered = true;
    for (int32_t i = 0; i < a.lineLength && i < shownLinePlies; ++i) {
        const Move& m = a.line[i];
        const int32_t last = generateLegalMoves(variation.side, legal, variation.pos, allMoves);
        bool isLegal = false;
        for (int32_t j = 0; j <= last; ++j)
            isLegal = isLegal || sameMove(legal.moves[j], m);
        if (!isLegal) break;
        const SanText san = moveToSan(variation.pos, variation.side, m);
        writeMove(w, moveNumber(game, ply + i), variation.side, numbered, san.text,
                  i == 0 ? "(" : "");
        numbered = false;
        if (i == 0) {
            writeValueComment(w, a, variation.side);
            numbered = true;
        }
        playGameMove(variation, m);
    }
    writeToken(w, ")", true);
}

} // namespace

void valueText(int32_t value, Side side, char* text, int32_t size) {
    const size_t room = static_cast<size_t>(size);
    if (isMateValue(value)) {
        const int32_t moves = side * mateInMoves(value);
        const bool whiteMates = side * value > 0;
        std::snprintf(text, room, "%sM%d", whiteMates ? "+" : "-",
                      static_cast<int>(moves < 0 ? -moves : moves));
        return;
    }
    const int32_t centipawns = side * value / 20;
    const int32_t magnitude = centipawns < 0 ? -centipawns : centipawns;
    std::snprintf(text, room, "%s%d.%02d", centipawns > 0 ? "+" : (centipawns < 0 ? "-" : ""),
                  static_cast<int>(magnitude / 100), static_cast<int>(magnitude % 100));
}

GameSummary annotateGame(const PgnGame& game, const SearchLimits& limits, PgnWriter& writer,
                         GameChart* chart) {
    GameSummary summary = {game.plyCount, 0, 0};
    const int32_t n = game.plyCount;

    // 1. Every position of the game, from cleared tables.
    clearSearchTables();
    startGameLine(replay, game.start, game.startFifty);
    for (int32_t i = 0; i <= n; ++i) {
        analyses[i] = analysePosition(replay, limits);
        if (i < n) playGameMove(replay, game.moves[i]);
    }

    // 2. The game, each move with the value after it, the mistakes with the engine's line.
    const char* tagResult = tagValue(game, "Result");
    const char* result = tagResult != nullptr && isResult(tagResult) ? tagResult : game.result;
    writeTags(writer, game, result);
    if (chart != nullptr) {
        chartTitle(game, chart->title, sizeof chart->title);
        chart->startNumber = game.startNumber;
        chart->blackFirst = game.start.sideToMove < 0;
        chart->mistakeThreshold = mistakeLoss;
        chart->blunderThreshold = blunderLoss;
        chart->points[0] = chartPoint(analyses[0], game.start.sideToMove);
        chart->count = n + 1;
    }
    startGameLine(replay, game.start, game.startFifty);
    for (int32_t i = 0; i < n; ++i) {
        const Move& m = game.moves[i];
        const Side side = replay.side;
        const Analysis& before = analyses[i];
        const Analysis& after = analyses[i + 1];
        const int32_t loss = lossScale(before.value) - lossScale(parentValue(after.value));
        Mark mark = Mark::none;
        if (before.moves > 1 && !sameMove(m, before.best) && loss >= mistakeLoss)
            mark = loss >= blunderLoss ? Mark::blunder : Mark::mistake;
        char san[sanSize + 4];
        std::snprintf(san, sizeof san, "%s%s", moveToSan(replay.pos, side, m).text,
                      mark == Mark::blunder ? "??" : (mark == Mark::mistake ? "?" : ""));
        writeMove(writer, moveNumber(game, i), side, true, san, "");
        writeValueComment(writer, after, -side);
        if (mark != Mark::none) {
            writeVariation(writer, game, i, before);
            if (mark == Mark::blunder) {
                ++summary.blunders;
            } else {
                ++summary.mistakes;
            }
        }
        if (chart != nullptr) {
            ChartPoint& p = chart->points[i + 1];
            p = chartPoint(after, -side);
            p.mark = mark;
            std::snprintf(p.move, sizeof p.move, "%d%s %s", static_cast<int>(moveNumber(game, i)),
                          side > 0 ? "." : "...", san);
        }
        playGameMove(replay, m);
    }
    finishGame(writer, result);
    return summary;
}
