// A position's companions worked out from its squares alone (key, piece lists, material and
// the derived values), and the check that they still agree with it. Above both the position
// and its keys, which it brings together.
#pragma once

#include "core/position.h"
#include "core/types.h"

// Computes key, lists and material from scratch and sets materialBalance, gamePhase and
// lazyMargin. The position must hold at most 16 pieces a side and one king each.
void derivePositionState(const Position& pos, PositionKey& key, PieceLists& lists,
                         Material& material);

// Consistency of a position with its companions: king fields, live slots and slotOf agree with
// the squares, material equals sumMaterial and the key equals computeKey. The tests and the
// fuzz targets check every position they walk with it.
bool positionIsOk(const Position& pos, const PieceLists& lists, const Material& material,
                  PositionKey key);
