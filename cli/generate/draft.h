// cli/generate/draft.h - a hypergraph in the making.
// SPDX-License-Identifier: MIT
#pragma once

#include "libraries.h"

#include "formats/failure.h"
#include "formats/hgr.h"
#include "generate/generate.h"
#include "generate/numbers.h"

#include <string>
#include <vector>

namespace kapris_cli
{

struct Draft {
  Hgr hgr;
  Random random;
  std::vector<int> last_net; // [ncells] of each cell: the number, from 1, of the last net that has it
};

// Cells first .. first + size - 1.
struct Block {
  int first, size;
};

Draft StartDraft(int ncells, int seed);

// Adds the cell to the net that is being built, unless it is there.
void AddPin(Draft *draft, int cell);

void EndNet(Draft *draft);

// A net of npins distinct cells of the block; at most as many as there are.
void AddNetInside(Draft *draft, Block block, int npins);

// A net with a cell of each block and npins distinct cells of both in all.
void AddNetAcross(Draft *draft, Block one, Block other, int npins);

// Gives cells random numbers and nets a random order, which hides how the hypergraph was made. The parts, if
// there are any, follow their cells.
void Hide(Draft *draft, std::vector<int> *part);

[[noreturn]] inline void FailUsage(const std::string &text)
{
  throw Failure{EXIT_USAGE, text};
}

// Adds the nets of a circuit-like hypergraph to an empty draft.
void AddCircuitNets(const Recipe &recipe, Draft *draft);

} // namespace kapris_cli
