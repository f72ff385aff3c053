// cli/generate/draft.cpp - a hypergraph in the making, and its text.
// SPDX-License-Identifier: MIT

#include "generate/draft.h"

#include <algorithm>
#include <charconv>
#include <numeric>

namespace kapris_cli
{

Draft StartDraft(int ncells, int seed)
{
  Draft draft;

  draft.hgr.ncells = ncells;
  draft.hgr.netptr = {0};
  draft.random.state = static_cast<std::uint64_t>(seed);
  draft.last_net.resize(static_cast<size_t>(ncells));
  return draft;
}

static int PinsSoFar(const Draft &draft)
{
  return static_cast<int>(draft.hgr.netind.size()) - draft.hgr.netptr.back();
}

void AddPin(Draft *draft, int cell)
{
  int &last = draft->last_net[static_cast<size_t>(cell)];

  if (last == draft->hgr.nnets + 1)
    return;
  last = draft->hgr.nnets + 1;
  draft->hgr.netind.push_back(cell);
}

void EndNet(Draft *draft)
{
  draft->hgr.nnets++;
  draft->hgr.netptr.push_back(static_cast<int>(draft->hgr.netind.size()));
}

// One draw per pin, however full the block: a cell that is there already stands for the newest, which cannot be.
void AddNetInside(Draft *draft, Block block, int npins)
{
  for (int newest = block.size - npins; newest < block.size; newest++) {
    const int before = PinsSoFar(*draft);
    AddPin(draft, block.first + DrawFrom(&draft->random, 0, newest));
    if (PinsSoFar(*draft) == before)
      AddPin(draft, block.first + newest);
  }
  EndNet(draft);
}

void AddNetAcross(Draft *draft, Block one, Block other, int npins)
{
  AddPin(draft, one.first + DrawFrom(&draft->random, 0, one.size - 1));
  AddPin(draft, other.first + DrawFrom(&draft->random, 0, other.size - 1));
  while (PinsSoFar(*draft) < npins) {
    const int place = DrawFrom(&draft->random, 0, one.size + other.size - 1);
    AddPin(draft, place < one.size ? one.first + place : other.first + place - one.size);
  }
  EndNet(draft);
}

static std::vector<int> RandomOrder(Random *random, int count)
{
  std::vector<int> order(static_cast<size_t>(count));

  std::iota(order.begin(), order.end(), 0);
  Shuffle(random, &order);
  return order;
}

void Hide(Draft *draft, std::vector<int> *part)
{
  const Hgr old = std::move(draft->hgr);
  const std::vector<int> number = RandomOrder(&draft->random, old.ncells);
  Hgr &hgr = draft->hgr = {old.ncells, old.nnets, {0}, {}, old.cellwgts, {}};

  hgr.netind.reserve(old.netind.size());
  for (const int net : RandomOrder(&draft->random, old.nnets)) {
    const size_t n = static_cast<size_t>(net);
    for (int i = old.netptr[n]; i < old.netptr[n + 1]; i++)
      hgr.netind.push_back(number[static_cast<size_t>(old.netind[static_cast<size_t>(i)])]);
    hgr.netptr.push_back(static_cast<int>(hgr.netind.size()));
    if (!old.netwgts.empty())
      hgr.netwgts.push_back(old.netwgts[n]);
  }
  const std::vector<int> old_part = *part;
  for (size_t cell = 0; cell < old_part.size(); cell++)
    (*part)[static_cast<size_t>(number[cell])] = old_part[cell];
}

} // namespace kapris_cli
