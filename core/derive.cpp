#include "core/derive.h"

#include "core/keys.h"

// Phase thresholds on v = (stronger side's material without king) * 38: the phase rises as the
// stronger side's material falls (n pawns' worth: 31+ phase 0, 23..30 phase 1, 17..22 phase 2,
// 11..16 phase 3, 5..10 phase 4, 0..4 phase 5).
constexpr int32_t phaseFactor = 38;

void derivePositionState(const Position& pos, PositionKey& key, PieceLists& lists,
                         Material& material) {
    key = computeKey(pos);
    buildPieceLists(pos, lists);
    sumMaterial(pos, lists, material);
    materialBalance = material.sum[1] - material.sum[0];
    int32_t stronger = material.sum[1] > material.sum[0] ? material.sum[1] : material.sum[0];
    int32_t v = (stronger - 12000) * phaseFactor;
    if (v < 156001) {
        gamePhase = 5;
    } else if (v < 390001) {
        gamePhase = 4;
    } else if (v < 624001) {
        gamePhase = 3;
    } else if (v <= 858000) {
        gamePhase = 2;
    } else if (v < 1170001) {
        gamePhase = 1;
    } else {
        gamePhase = 0;
    }
    lazyMargin = gamePhase * 400 + 1200;
}

bool positionIsOk(const Position& pos, const PieceLists& lists, const Material& material,
                  PositionKey key) {
    int32_t kings[2] = {0, 0};
    int32_t pieces[2] = {0, 0};
    for (int32_t sq = 0; sq < 64; ++sq) {
        PieceCode code = pos.squares[sq];
        if (code < -king || code > king) return false;
        if (code == 0) continue;
        Side side = code > 0 ? white : black;
        int32_t idx = sideIndex(side);
        ++pieces[idx];
        if (side * code == king) {
            ++kings[idx];
            if (kingFile(pos, side) * 8 + kingRank(pos, side) != sq) return false;
        }
        int32_t slot = lists.slotOf[sq];
        if (slot < 1 || slot > lists.slots[idx][0][0]) return false;
        if (squareIndex(lists.slots[idx][slot][0], lists.slots[idx][slot][1]) != sq) return false;
    }
    if (kings[0] != 1 || kings[1] != 1) return false;
    for (int32_t idx = 0; idx < 2; ++idx) {
        int32_t count = lists.slots[idx][0][0];
        if (count < 0 || count > 16) return false;
        int32_t live = 0;
        for (int32_t slot = 1; slot <= count; ++slot) {
            int32_t file = lists.slots[idx][slot][0];
            int32_t rank = lists.slots[idx][slot][1];
            if (file == -1) continue;
            if (!onBoard(file, rank)) return false;
            int32_t sq = squareIndex(file, rank);
            PieceCode code = pos.squares[sq];
            if (code == 0 || (code > 0) != (idx == 1) || lists.slotOf[sq] != slot) return false;
            ++live;
        }
        if (live != pieces[idx]) return false;
    }
    Material expected;
    sumMaterial(pos, lists, expected);
    if (expected.sum[0] != material.sum[0] || expected.sum[1] != material.sum[1]) return false;
    return computeKey(pos) == key;
}
