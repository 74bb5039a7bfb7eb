// What the unit tests share, headers too; key tables and material scale are set up before the
// first.
#pragma once
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <sstream>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "core/derive.h"
#include "core/fen.h"
#include "core/keys.h"
#include "core/makemove.h"
#include "core/movegen.h"
#include "core/position.h"
#include "eval/material.h"

// The key tables as the program's start-up draws them, whatever was drawn before.
inline void freshKeys() {
    resetRandom();
    initPositionKeys();
}

struct TablesEnvironment : ::testing::Environment {
    void SetUp() override {
        freshKeys();
        fillMaterialScale();
    }
};
inline ::testing::Environment* const tablesEnvironment =
    ::testing::AddGlobalTestEnvironment(new TablesEnvironment);

using Text = const char*; // a field of a table of cases

inline Position fromFen(const char* fen) {
    Position pos;
    const char* error = readFen(fen, pos);
    EXPECT_EQ(error, nullptr) << fen << ": " << error;
    return pos;
}

// "e4" as a board index, "e2e4" or "b7a8q" as a move and back.
inline int32_t sq(const char* name) {
    return squareIndex(name[0] - 'a', name[1] - '1');
}

constexpr std::string_view promotionLetters = "..nbrq"; // the kinds 2..5

inline Move mv(const char* text) {
    const int32_t promotion =
        text[4] == '\0' ? 0 : static_cast<int32_t>(promotionLetters.find(text[4]));
    return {text[0] - 'a', text[1] - '1', text[2] - 'a', text[3] - '1', promotion};
}

inline std::string name(const Move& m) {
    std::string text = {static_cast<char>('a' + m.fromFile), static_cast<char>('1' + m.fromRank),
                        static_cast<char>('a' + m.toFile), static_cast<char>('1' + m.toRank)};
    if (m.promotion != 0) text += promotionLetters[m.promotion];
    return text;
}

// Index of a move in moves 0..last, -1 when absent.
inline int32_t indexOf(const MoveList& list, int32_t last, const Move& m) {
    for (int32_t i = 0; i <= last; ++i)
        if (sameMove(list.moves[i], m)) return i;
    return -1;
}

// A position with its companions, as the game controller keeps them.
struct Board {
    Position pos;
    PieceLists lists;
    Material material;
    PositionKey key = 0;

    explicit Board(const char* fen = startFen) : pos(fromFen(fen)) {
        derivePositionState(pos, key, lists, material);
    }
    MoveUndo play(Side side, const Move& m) {
        return playOnBoard(key, side, pos, lists, m, material);
    }
};

// What `body` prints on standard output.
template <class Body> std::string captureStdout(Body body) {
    std::fflush(stdout);
    ::testing::internal::CaptureStdout();
    body();
    std::fflush(stdout);
    return ::testing::internal::GetCapturedStdout();
}
