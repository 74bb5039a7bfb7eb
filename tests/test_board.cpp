// The board, its companions and keys, and moves made and taken back, by hand and over trees.
#include <cstdlib>

#include "core/attacks.h"
#include "helpers.h"

namespace {

constexpr PositionKey startKey = 0x7EE956D4B3FB3833ULL;

// The eight fields after the squares: king files and ranks, castling, en passant, side to move.
std::vector<int32_t> fields(const Position& pos) {
    return std::vector<int32_t>(&pos.whiteKingFile, &pos.whiteKingFile + 8);
}

TEST(Position, StartPositionFillsEveryField) {
    Position pos;
    std::memset(&pos, 0x5a, sizeof pos);
    setInitialPosition(pos);
    const PieceCode firstRank[8] = {4, 2, 3, 5, 6, 3, 2, 4}; // square q is file q / 8, rank q % 8
    for (int32_t q = 0; q < 64; ++q) {
        const PieceCode column[8] = {firstRank[q / 8], 1, 0, 0, 0, 0, -1, -firstRank[q / 8]};
        EXPECT_EQ(pos.squares[q], column[q % 8]) << q;
    }
    EXPECT_EQ(fields(pos), (std::vector<int32_t>{4, 0, 4, 7, 3, 3, 0, 1}));
}

// Phase by the stronger side's pawns' worth (Q 9, R 5, minor 3): 31+ 0, 23 1, 17 2, 11 3, 5 4; a
// row on each side of every step, Black the stronger on one, both sides with pieces on one.
TEST(Position, GamePhaseLazyMarginAndBalance) {
    const std::tuple<Text, int32_t, int32_t> cases[] = {
        {"4k3/8/8/8/8/8/PP6/1NBQK2R w - - 0 1", 2, 22000},
        {"4k3/8/8/8/8/8/PPP5/1NBQK2R w - - 0 1", 1, 23000},
        {"1nbqk2r/pp6/8/8/8/8/8/4K3 w - - 0 1", 2, -22000},
        {"4k3/8/8/8/8/8/PPPP4/4K3 w - - 0 1", 5, 4000},
        {"4k3/8/8/8/8/8/8/R3K3 w - - 0 1", 4, 5000},
        {"4k3/8/8/8/8/8/8/R3K2R w - - 0 1", 4, 10000},
        {"4k3/8/8/8/8/8/P7/R3K2R w - - 0 1", 3, 11000},
        {"4k3/8/8/8/8/8/PP6/3QK2R w - - 0 1", 3, 16000},
        {"4k3/8/8/8/8/8/8/2BQK2R w - - 0 1", 2, 17000},
        {"4k3/8/8/8/8/8/PPPPP3/RNBQK2R w - - 0 1", 1, 30000},
        {"4k3/8/8/8/8/8/PPPPPP2/RNBQK2R w - - 0 1", 0, 31000},
        {"4k3/8/8/3r4/8/8/8/1N1QK3 w - - 0 1", 3, 7000},
    };
    for (const auto& [fen, phase, balance] : cases) {
        Board b(fen);
        EXPECT_EQ(gamePhase, phase) << fen;
        EXPECT_EQ(lazyMargin, 1200 + 400 * phase) << fen;
        EXPECT_EQ(materialBalance, balance) << fen;
    }
}

// Whole positions, the side to move not part of the key, with the tables drawn afresh twice and a
// draw in between (the source restarts). The entries are drawn in one stream, two draws each, high
// half first: pieces, en passant, castling. The start's pieces, e3 and all six castling entries
// sample it up to its last draw, so a fault in the draw order shows here. That a Board's derived
// key and the key kept move by move are these is checked by every move of MakeMove.
TEST(Keys, KeysOfWholePositions) {
    const std::pair<Text, PositionKey> cases[] = {
        {startFen, startKey},
        {"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR b KQkq - 0 1", startKey},
        {"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w - - 0 1", 0xBAD1816F98AA9949ULL},
        {"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQ - 0 1", 0x0B4661640219F57AULL},
        {"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w kq - 0 1", 0xCF7EB6DF29485400ULL},
        {"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w Kq - 0 1", 0x69D10AC643B14CBDULL},
        {"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w Qk - 0 1", 0x019F56DD264089B7ULL},
        {"rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq e3 0 1", 0x42EC401D68E52886ULL},
    };
    for (int32_t round = 0; round < 2; ++round) {
        freshKeys();
        for (const auto& [fen, key] : cases)
            EXPECT_EQ(computeKey(fromFen(fen)), key) << fen;
        nextRandom();
    }
}

TEST(Keys, EachFeatureAddsItsOwnKey) {
    freshKeys();
    Position pos = fromFen("4k3/8/8/8/8/8/8/4K3 w - - 0 1");
    const PositionKey kings = computeKey(pos);
    EXPECT_EQ(kings, pieceSquareKeys[0][sq("e8")] ^ pieceSquareKeys[11][sq("e1")]);
    // Castling values 1..3 have a key each per side.
    for (int32_t rights = 1; rights <= 3; ++rights) {
        pos.whiteCastling = rights;
        EXPECT_EQ(computeKey(pos) ^ kings, castlingKeys[0][rights - 1]);
        pos.whiteCastling = 0;
        pos.blackCastling = rights;
        EXPECT_EQ(computeKey(pos) ^ kings, castlingKeys[1][rights - 1]);
        pos.blackCastling = 0;
    }
    // White's double step on file f (value f + 1) uses entry f + 8, Black's entry 7 - f.
    for (int32_t file = 0; file < 8; ++file) {
        pos.enPassant = -(file + 1);
        EXPECT_EQ(computeKey(pos) ^ kings, enPassantKeys[7 - file]);
        pos.enPassant = file + 1;
        EXPECT_EQ(computeKey(pos) ^ kings, enPassantKeys[8 + file]);
    }
    // A white knight on c3 is row 7, square 18; a black rook on h5 row 2, square 60.
    pos.enPassant = 0;
    pos.squares[sq("c3")] = 2;
    pos.squares[sq("h5")] = -4;
    EXPECT_EQ(computeKey(pos) ^ kings, pieceSquareKeys[7][18] ^ pieceSquareKeys[2][60]);
}

// The lists without what is never read: the ranks of dead slots, slotOf of empty squares.
PieceLists readable(PieceLists lists, const Position& pos) {
    for (auto& list : lists.slots) {
        for (int32_t slot = 1; slot <= list[0][0]; ++slot)
            list[slot][1] = list[slot][0] == -1 ? 0 : list[slot][1];
    }
    for (int32_t q = 0; q < 64; ++q)
        lists.slotOf[q] = pos.squares[q] == 0 ? 0 : lists.slotOf[q];
    return lists;
}

// Plays `m`, "" when all is well: keys, companions, slots kept, the victim's slot reported dead.
std::string playChecked(Board& b, Side side, const Move& m, MoveUndo& undo) {
    const int32_t from = squareIndex(m.fromFile, m.fromRank);
    const int32_t to = squareIndex(m.toFile, m.toRank);
    const int32_t kind = side * b.pos.squares[from];
    int32_t victimSquare = b.pos.squares[to] != 0 ? to : -1;
    if (kind == pawn && m.fromFile != m.toFile && victimSquare < 0)
        victimSquare = squareIndex(m.toFile, m.fromRank);
    const int32_t victim = victimSquare < 0 ? 0 : b.lists.slotOf[victimSquare];
    const int32_t mover = b.lists.slotOf[from];
    const bool castles = kind == king && std::abs(m.toFile - m.fromFile) == 2;
    const int32_t rookFrom = squareIndex(m.toFile > m.fromFile ? 7 : 0, m.fromRank);
    const int32_t rookTo = squareIndex((m.fromFile + m.toFile) / 2, m.fromRank);
    const int32_t rook = castles ? b.lists.slotOf[rookFrom] : 0;
    const PositionKey predicted = keyAfterMove(b.key, side, b.pos, m);
    undo = b.play(side, m);
    if (b.key != computeKey(b.pos)) return "incremental key";
    if (b.key != predicted) return "predicted key";
    if (!positionIsOk(b.pos, b.lists, b.material, b.key)) return "companions";
    if (b.lists.slotOf[to] != mover) return "mover's slot";
    if (castles && b.lists.slotOf[rookTo] != rook) return "rook's slot";
    if (undo.capturedSlot != victim) return "captured slot";
    if (victim != 0 && b.lists.slots[sideIndex(-side)][victim][0] != -1) return "victim alive";
    return "";
}

std::string takeBackChecked(Board& b, Side side, const Move& m, const MoveUndo& undo,
                            const Board& before) {
    takeBack(side, b.pos, b.lists, m, undo);
    b.key = before.key;
    b.material = before.material;
    if (std::memcmp(&b.pos, &before.pos, sizeof b.pos) != 0) return "board not restored";
    const PieceLists now = readable(b.lists, b.pos), then = readable(before.lists, b.pos);
    if (std::memcmp(&now, &then, sizeof now) != 0) return "lists not restored";
    return "";
}

// Castling, rights lost, en passant set for one move and taken, promotions; side to move kept.
// Each row: the position before, moves played in turn from its side to move, the position after.
TEST(MakeMove, SpecialMovesLeaveTheBoardTheirFenDescribes) {
    const char* const corners = "r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1";
    const std::tuple<Text, Text, Text> cases[] = {
        {startFen, "e2e4", "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq e3 0 1"},
        {startFen, "e2e4 d7d5", "rnbqkbnr/ppp1pppp/8/3p4/4P3/8/PPPP1PPP/RNBQKBNR w KQkq d6 0 1"},
        {startFen, "e2e4 d7d5 g1f3 h7h6",
         "rnbqkbnr/ppp1ppp1/7p/3p4/4P3/5N2/PPPP1PPP/RNBQKB1R w KQkq - 0 1"},
        {"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQK2R w KQkq - 0 1", "e1g1",
         "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQ1RK1 b kq - 0 1"},
        {"r3kbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR b KQkq - 0 1", "e8c8",
         "2kr1bnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQ - 0 1"},
        {"4k3/3p4/8/4P3/8/8/8/4K3 b - - 0 1", "d7d5 e5d6", "4k3/8/3P4/8/8/8/8/4K3 b - - 0 1"},
        {"4k3/8/8/8/3p4/8/2P5/4K3 w - - 0 1", "c2c4 d4c3", "4k3/8/8/8/8/2p5/8/4K3 w - - 0 1"},
        {"r3k3/1P6/8/8/8/8/8/4K3 w q - 0 1", "b7a8q", "Q3k3/8/8/8/8/8/8/4K3 b - - 0 1"},
        {"4k3/1P6/8/8/8/8/p7/4K3 w - - 0 1", "b7b8n a2a1q", "1N2k3/8/8/8/8/8/8/q3K3 w - - 0 1"},
        {corners, "h1h2", "r3k2r/8/8/8/8/8/7R/R3K3 b Qkq - 0 1"},
        {corners, "h1h8", "r3k2R/8/8/8/8/8/8/R3K3 b Qq - 0 1"},
        {corners, "a1a8", "R3k2r/8/8/8/8/8/8/4K2R b Kk - 0 1"},
        {"r3k2r/8/8/8/8/8/8/R3K2R b KQkq - 0 1", "e8d8", "r2k3r/8/8/8/8/8/8/R3K2R w KQ - 0 1"},
        {"r3k2r/8/8/8/8/8/8/R3K2R w Kkq - 0 1", "a1a4", "r3k2r/8/8/8/R7/8/8/4K2R b Kkq - 0 1"},
        {"4k3/p7/8/3n4/8/8/8/3QK3 w - - 0 1", "d1d5", "4k3/p7/8/3Q4/8/8/8/4K3 b - - 0 1"},
    };
    for (const auto& [before, moveList, after] : cases) {
        SCOPED_TRACE(std::string(before) + " " + moveList);
        Board b(before);
        struct Ply {
            Board before;
            Side side;
            Move move;
            MoveUndo undo;
        };
        std::vector<Ply> plies;
        std::istringstream moves(moveList);
        for (std::string text; moves >> text;) {
            const Side side = plies.empty() ? b.pos.sideToMove : -plies.back().side;
            plies.push_back({b, side, mv(text.c_str()), {}});
            EXPECT_EQ(playChecked(b, side, plies.back().move, plies.back().undo), "") << text;
        }
        Board expected(after);
        EXPECT_EQ(b.pos.sideToMove, plies[0].side);
        expected.pos.sideToMove = b.pos.sideToMove;
        EXPECT_EQ(std::memcmp(&b.pos, &expected.pos, sizeof b.pos), 0);
        EXPECT_EQ(b.key, expected.key);
        EXPECT_EQ(std::memcmp(&b.material, &expected.material, sizeof b.material), 0);
        for (auto p = plies.rbegin(); p != plies.rend(); ++p)
            EXPECT_EQ(takeBackChecked(b, p->side, p->move, p->undo, p->before), "")
                << name(p->move);
    }
}

// Every pseudo-legal move made and taken back; the legal generator, the quick king and check
// tests, the squares that answer a check and the attack map agree with the full square test,
// and the keys of all the node's moves at once (in reverse order) with the keys made.
struct Walk {
    uint64_t nodes = 0;
    uint64_t failures = 0;
    std::string first;
    void note(const std::string& problem, const Move& m) {
        if (!problem.empty() && failures++ == 0) first = problem + " at " + name(m);
    }
};

void walk(Walk& w, Board& b, Side side, int32_t depth) {
    ++w.nodes;
    if (depth == 0) return;
    if (depth >= 2) {
        for (const Side s : {white, black}) {
            const uint64_t map = attackedSquares(b.pos, b.lists, s, occupancy(b.pos));
            for (int32_t q = 0; q < 64; ++q) {
                if (((map >> q & 1) != 0) != (isSquareSafe(b.pos, -s, q / 8, q % 8) == 0))
                    w.note("attack map", {q / 8, q % 8, q / 8, q % 8, 0});
            }
        }
    }
    MoveList moves;
    const int32_t last = generateMoves(side, moves, b.pos, b.lists, allMoves);
    const bool inCheck = !isSquareSafe(b.pos, side, -1, 0);
    const uint64_t answers = inCheck ? checkAnswerSquares(b.pos, side, occupancy(b.pos)) : 0;
    int32_t order[maxMoves];
    PositionKey keys[maxMoves];
    for (int32_t i = 0; i <= last; ++i)
        order[i] = last - i;
    keysAfterMoves(b.key, side, b.pos, moves, order, last, keys);
    int32_t legal = 0;
    for (int32_t i = 0; i <= last; ++i) {
        const Move m = moves.moves[i];
        const Board before = b;
        const int32_t from = squareIndex(m.fromFile, m.fromRank);
        const int32_t kind = side * b.pos.squares[from];
        const bool enPassant = kind == pawn && m.fromFile != m.toFile &&
                               b.pos.squares[squareIndex(m.toFile, m.toRank)] == 0;
        const bool castles = kind == king && std::abs(m.toFile - m.fromFile) == 2;
        MoveUndo undo;
        w.note(playChecked(b, side, m, undo), m);
        if (b.key != keys[last - i]) w.note("key among the node's keys", m);
        const bool safe = isSquareSafe(b.pos, side, -1, 0) != 0;
        if (kind != king && !inCheck && !enPassant &&
            kingSafeAfterMoveFrom(b.pos, side, from) != safe)
            w.note("quick king test", m);
        // In check, a move of another piece outside the answering squares is never legal.
        if (kind != king && inCheck && !enPassant && safe &&
            (answers >> squareIndex(m.toFile, m.toRank) & 1) == 0)
            w.note("check answers", m);
        if (safe) {
            ++legal;
            if (!enPassant && !castles &&
                givesCheck(b.pos, side, m) != (isSquareSafe(b.pos, -side, -1, 0) == 0))
                w.note("quick check test", m);
            walk(w, b, -side, depth - 1);
        }
        w.note(takeBackChecked(b, side, m, undo, before), m);
    }
    MoveList legalMoves;
    if (generateLegalMoves(side, legalMoves, b.pos, allMoves) + 1 != legal)
        w.note("legal move count", {0, 0, 0, 0, 0});
}

TEST(MakeMove, WholeTreesStayConsistent) {
    // Node totals are the sums of the well-known perft counts of each depth, plus the root; 0 for
    // a position without published counts.
    const std::tuple<Text, int32_t, uint64_t> cases[] = {
        {startFen, 4, 1 + 20 + 400 + 8902 + 197281},
        {"r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1", 3,
         1 + 48 + 2039 + 97862},
        {"8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1", 4, 1 + 14 + 191 + 2812 + 43238},
        {"r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq - 0 1", 3, 1 + 6 + 264 + 9467},
        {"rnbq1k1r/pp1Pbppp/2p5/8/2B5/8/PPP1NnPP/RNBQK2R w KQ - 1 8", 3, 1 + 44 + 1486 + 62379},
        {"r4rk1/1pp1qppp/p1np1n2/2b1p1B1/2B1P1b1/P1NP1N2/1PP1QPPP/R4RK1 w - - 0 10", 2,
         1 + 46 + 2079},
        {"7k/P7/8/3Qq3/8/2n5/6pp/K7 b - - 0 1", 2, 0},
    };
    for (const auto& [fen, depth, nodes] : cases) {
        Board b(fen);
        Walk w;
        walk(w, b, b.pos.sideToMove, depth);
        EXPECT_EQ(w.failures, 0u) << fen << ": first " << w.first;
        EXPECT_EQ(nodes != 0 ? w.nodes : 0, nodes) << fen;
    }
}

} // namespace
