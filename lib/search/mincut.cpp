// lib/search/mincut.cpp - minimum cuts of a hypergraph between two sides that keep limits.
// SPDX-License-Identifier: MIT
//
// The least cut between the two terminals is a largest flow in which a net lets through as much as it weighs (Lawler
// 1973). Where neither of its sides keeps the limits, the lighter one is grown: what it reaches becomes terminal, and
// with it one cell beyond, if possible one that lets no more flow through (Hamann, Strasser 2018; Gottesbueren, Hamann,
// Wagner 2019). Flow that is there stays, and each side is searched on from the new cell only.
//
// A flow between cells runs into a net at one pin, through it, and out at another one. A pin has one number: what runs
// into the net there, or, below zero, out of it. Seen from side 1 everything runs backwards: what is written for one
// side holds for the other with the signs of pins, and the two ends of nets, exchanged.

#include "mincut.h"

#include "core/constants.h"

#include <algorithm>
#include <climits>
#include <cstdlib>

namespace kapris::engine::KAPRIS_ENGINE
{

namespace
{

struct Arc {
  int node;
  Weight room; // what it still lets through; 0 = nothing
  int pin;     // or -1 of the arc between the ends of a net
};

struct Flow {
  const Control *ctrl;
  const Network *network;
  int ncells;
  Array<int> incptr, incpin; // the pins of each cell
  Array<int> netof;          // [npins]
  Array<Weight> through;     // [nnets]
  Array<Weight> pinflow;     // [npins]
  Weight flow, bound;

  // Nodes: the cells, then two ends for each net.
  Array<int> level, arc; // [nnodes] in the search that runs; level -1 = not found
  Array<int> found;      // nodes with a level, in the order of the search
  Array<int> path;

  Array<char> terminal[2]; // [ncells] of a side for good
  Array<int> terminals[2];
  Array<char> reached[2]; // [nnodes] from its terminals
  Array<char> touched[2]; // [nnets] that have a terminal
  Array<int> beyond[2];   // cells on such nets, not terminals when they were found
  Array<int> fresh[2];    // cells that are reached, those that are terminals left out but for the last ones
  Weight weight[2];       // of the cells that are reached
};

} // namespace

static Weight Signed(int side, Weight pinflow)
{
  return side == 0 ? pinflow : -pinflow;
}

// The end of a net by which the flow of the side enters it.
static int EntryOf(const Flow *f, int side, int net)
{
  return f->ncells + 2 * net + side;
}

static int ExitOf(const Flow *f, int side, int net)
{
  return f->ncells + 2 * net + 1 - side;
}

static int CountArcs(const Flow *f, int node)
{
  if (node < f->ncells)
    return f->incptr[At(node) + 1] - f->incptr[At(node)];
  const std::size_t net = At((node - f->ncells) / 2);
  return f->network->netptr[net + 1] - f->network->netptr[net] + 1;
}

// The other end of a net.
static int OtherEnd(const Flow *f, int node)
{
  return f->ncells + ((node - f->ncells) ^ 1);
}

// The i-th arc of a node in the direction of the side.
static inline Arc ArcOf(const Flow *f, int side, int node, int i)
{
  if (node < f->ncells) {
    const int pin = f->incpin[At(f->incptr[At(node)] + i)];
    const int net = f->netof[At(pin)];
    const Weight in = Signed(side, f->pinflow[At(pin)]);
    return in >= 0 ? Arc{EntryOf(f, side, net), MAX_WEIGHT, pin} : Arc{ExitOf(f, side, net), -in, pin};
  }
  const int net = (node - f->ncells) / 2;
  const bool entry = node == EntryOf(f, side, net);
  if (i == 0) {
    const Weight through = f->through[At(net)];
    return {OtherEnd(f, node), entry ? f->network->netwgts[At(net)] - through : through, -1};
  }
  const int pin = f->network->netptr[At(net)] + i - 1;
  const Weight in = Signed(side, f->pinflow[At(pin)]);
  const Weight room = entry ? std::max<Weight>(in, 0) : in <= 0 ? MAX_WEIGHT : 0;
  return {f->network->netind[At(pin)], room, pin};
}

static void Push(Flow *f, int side, int node, const Arc &arc, Weight amount)
{
  if (arc.pin >= 0)
    f->pinflow[At(arc.pin)] += Signed(side, node < f->ncells ? amount : -amount);
  else {
    const int net = (node - f->ncells) / 2;
    f->through[At(net)] += node == EntryOf(f, side, net) ? amount : -amount;
  }
}

// ----------------------------------------------------------------------------------------------------------
// Largest flows

static void StartSearch(Flow *f)
{
  for (const int node : f->found)
    f->level[At(node)] = -1;
  f->found.clear();
}

static void Find(Flow *f, int node, int level)
{
  f->level[At(node)] = level;
  f->arc[At(node)] = 0;
  f->found.push_back(node);
}

// By the lengths of the ways from start, and from what has been found before it. Returns whether a terminal of the
// other side is there; else all that can be reached has been found, but for what had been reached before.
static bool FindLevels(Flow *f, int side, const Array<int> &starts)
{
  int last = INT_MAX;

  Checkpoint(f->ctrl);
  StartSearch(f);
  for (const int start : starts)
    Find(f, start, 0);
  for (std::size_t i = 0; i < f->found.size(); i++) {
    const int node = f->found[i], level = f->level[At(node)];
    if (level >= last)
      break;
    const int narcs = CountArcs(f, node);
    for (int a = 0; a < narcs; a++) {
      const Arc arc = ArcOf(f, side, node, a);
      if (arc.room == 0 || f->level[At(arc.node)] >= 0 || f->reached[side][At(arc.node)])
        continue;
      Find(f, arc.node, level + 1);
      if (arc.node < f->ncells && f->terminal[1 - side][At(arc.node)])
        last = level + 1;
    }
  }
  return last < INT_MAX;
}

// Extends the path by one node, or goes back by one. Returns whether there is a path left.
static bool Step(Flow *f, int side)
{
  const int node = f->path.back();
  const int narcs = CountArcs(f, node);

  for (int &a = f->arc[At(node)]; a < narcs; a++) {
    const Arc arc = ArcOf(f, side, node, a);
    if (arc.room > 0 && f->level[At(arc.node)] == f->level[At(node)] + 1) {
      f->path.push_back(arc.node);
      return true;
    }
  }
  f->path.pop_back();
  if (!f->path.empty())
    f->arc[At(f->path.back())]++;
  return !f->path.empty();
}

// Sends along the path what it lets through, and cuts the path where no more is let through.
static void Augment(Flow *f, int side)
{
  Weight amount = MAX_WEIGHT;
  std::size_t first = 0;

  for (std::size_t i = 0; i + 1 < f->path.size(); i++)
    amount = std::min(amount, ArcOf(f, side, f->path[i], f->arc[At(f->path[i])]).room);
  for (std::size_t i = f->path.size() - 1; i-- > 0;) {
    const int node = f->path[i];
    const Arc arc = ArcOf(f, side, node, f->arc[At(node)]);
    Push(f, side, node, arc, amount);
    if (arc.room == amount)
      first = i;
  }
  f->path.resize(first + 1);
  f->flow += amount;
}

// Sends as much as it can from start to the terminals of the other side (Dinitz 1970). Returns whether that is less
// than the bound.
static bool MaximiseFlow(Flow *f, int side, int start)
{
  const Array<int> starts(1, start);

  while (f->flow < f->bound) {
    if (!FindLevels(f, side, starts))
      return true;
    f->path.assign(1, start);
    while (!f->path.empty() && f->flow < f->bound) {
      const int node = f->path.back();
      if (node < f->ncells && f->terminal[1 - side][At(node)])
        Augment(f, side);
      else if (!Step(f, side))
        break;
    }
  }
  return false;
}

// ----------------------------------------------------------------------------------------------------------
// Sides

static void Reach(Flow *f, int side, int node)
{
  f->reached[side][At(node)] = 1;
  if (node < f->ncells) {
    f->weight[side] += f->network->cellwgts[At(node)];
    f->fresh[side].push_back(node);
  }
}

static void MakeTerminal(Flow *f, int side, int cell)
{
  f->terminal[side][At(cell)] = 1;
  f->terminals[side].push_back(cell);
  for (int i = f->incptr[At(cell)]; i < f->incptr[At(cell) + 1]; i++) {
    const int net = f->netof[At(f->incpin[At(i)])];
    if (f->touched[side][At(net)])
      continue;
    f->touched[side][At(net)] = 1;
    for (int k = f->network->netptr[At(net)]; k < f->network->netptr[At(net) + 1]; k++)
      if (!f->terminal[side][At(f->network->netind[At(k)])])
        f->beyond[side].push_back(f->network->netind[At(k)]);
  }
}

// After a flow that cannot grow: all that start reaches joins what the side has reached.
static void ReachFound(Flow *f, int side)
{
  for (const int node : f->found)
    Reach(f, side, node);
}

static void ReachAnew(Flow *f, int side)
{
  std::fill(f->reached[side].begin(), f->reached[side].end(), 0);
  f->fresh[side].clear();
  f->weight[side] = 0;
  FindLevels(f, side, f->terminals[side]);
  ReachFound(f, side);
}

// Where side side is what it reaches, and the other one all the rest.
static bool KeepsLimits(const Flow *f, Weight total, int side)
{
  const Weight weights[2] = {f->weight[side], total - f->weight[side]};
  const Network *n = f->network;

  return weights[0] <= n->limits[side] && weights[1] <= n->limits[1 - side] &&
         weights[0] >= n->minimums[side] && weights[1] >= n->minimums[1 - side];
}

// A cell beyond the terminals of the side, or -1: first such as let no more flow through, then such as lie far on their
// own side.
static int ChooseCell(Flow *f, int side)
{
  Array<int> *beyond = &f->beyond[side];
  int chosen = -1, best = INT_MIN;

  std::erase_if(*beyond, [&](int cell) { return f->terminal[0][At(cell)] || f->terminal[1][At(cell)]; });
  for (const int cell : *beyond) {
    const int distance = f->network->distances[At(cell)];
    const int away = f->network->sides[At(cell)] == side ? distance : -1 - distance;
    const int worth = (f->reached[1 - side][At(cell)] ? INT_MIN / 2 : 0) + away;
    if (worth > best || (worth == best && cell < chosen)) {
      best = worth;
      chosen = cell;
    }
  }
  return chosen;
}

// Returns false where the flow would reach the bound, or no cell is left.
static bool Grow(Flow *f, int side)
{
  for (const int cell : f->fresh[side])
    if (!f->terminal[side][At(cell)])
      MakeTerminal(f, side, cell);
  f->fresh[side].clear();
  const int cell = ChooseCell(f, side);
  if (cell == -1)
    return false;
  const bool more = f->reached[1 - side][At(cell)];
  MakeTerminal(f, side, cell);
  if (!MaximiseFlow(f, side, cell))
    return false;
  ReachFound(f, side);
  if (more)
    ReachAnew(f, 1 - side);
  return true;
}

static Flow OpenFlow(const Control *ctrl, const Network *network, Weight bound)
{
  const std::size_t ncells = network->cellwgts.size(), nnets = network->netwgts.size();
  const std::size_t npins = network->netind.size(), nnodes = ncells + 2 * nnets;
  Flow f = {};

  f.ctrl = ctrl;
  f.network = network;
  f.ncells = static_cast<int>(ncells);
  f.bound = bound;
  f.incptr.assign(ncells + 1, 0);
  for (const int cell : network->netind)
    f.incptr[At(cell) + 1]++;
  for (std::size_t i = 0; i < ncells; i++)
    f.incptr[i + 1] += f.incptr[i];
  f.incpin.resize(npins);
  f.netof.resize(npins);
  Array<int> next(f.incptr.begin(), f.incptr.end() - 1);
  for (std::size_t j = 0; j < nnets; j++)
    for (int k = network->netptr[j]; k < network->netptr[j + 1]; k++) {
      f.netof[At(k)] = static_cast<int>(j);
      f.incpin[At(next[At(network->netind[At(k)])]++)] = k;
    }
  f.through.assign(nnets, 0);
  f.pinflow.assign(npins, 0);
  f.level.assign(nnodes, -1);
  f.arc.assign(nnodes, 0);
  for (int side = 0; side < 2; side++) {
    f.terminal[side].assign(ncells, 0);
    f.reached[side].assign(nnodes, 0);
    f.touched[side].assign(nnets, 0);
    MakeTerminal(&f, side, side);
  }
  return f;
}

static const char *CheckCut(const Flow *f)
{
  const Network *n = f->network;
  Weight cut = 0;

  for (std::size_t j = 0; j < n->netwgts.size(); j++) {
    bool sides[2] = {false, false};
    for (int k = n->netptr[j]; k < n->netptr[j + 1]; k++)
      sides[At(n->sides[At(n->netind[At(k)])])] = true;
    if (sides[0] && sides[1])
      cut += n->netwgts[j];
  }
  return cut == f->flow ? nullptr : "mincut: the nets between the sides do not weigh what flows";
}

bool FindMinimumCut(const Control *ctrl, Network *network, Weight bound)
{
  Flow f = OpenFlow(ctrl, network, bound);
  Weight total = 0;

  for (const Weight wgt : network->cellwgts)
    total += wgt;
  if (!MaximiseFlow(&f, 0, 0))
    return false;
  ReachFound(&f, 0);
  ReachAnew(&f, 1);
  for (int grown = 0; grown < MOST_GROWN; grown++) {
    const bool keeps[2] = {KeepsLimits(&f, total, 0), KeepsLimits(&f, total, 1)};
    if (keeps[0] || keeps[1]) {
      const Weight apart[2] = {std::abs(2 * f.weight[0] - total), std::abs(2 * f.weight[1] - total)};
      const int side = keeps[0] && (!keeps[1] || apart[0] <= apart[1]) ? 0 : 1;
      for (std::size_t i = 0; i < network->sides.size(); i++)
        network->sides[i] = static_cast<char>(f.reached[side][i] ? side : 1 - side);
      CHECK_VALID(CheckCut(&f));
      return true;
    }
    if (!Grow(&f, f.weight[0] <= f.weight[1] ? 0 : 1))
      return false;
  }
  return false;
}

} // namespace kapris::engine::KAPRIS_ENGINE
