// lib/search/flow.cpp - refinement by minimum cuts between pairs of parts.
// SPDX-License-Identifier: MIT
//
// Moves of single cells end where no short sequence of them helps. Between two parts the best border within reach can
// be found at once, as a minimum cut of the cells around it (Sanders, Schulz 2011; Heuer, Sanders, Schlag 2018). Pairs
// without a part in common do not touch each other's nets as far as these count, so that they are done side by side.

#include "flow.h"

#include "borders.h"
#include "mincut.h"
#include "sidebyside.h"

#include "core/constants.h"

#include <algorithm>
#include <map>
#include <utility>

namespace kapris::engine::KAPRIS_ENGINE
{

namespace
{

// Two parts and what they share.
struct PartPair {
  int p, q;
  std::size_t first, last; // of the border nets
  double wgt;
};

struct Pairs {
  const SearchGoal *goal;
  const HGraph *graph;
  int *part;
  Array<Weight> pwgts;
  Array<int> counts; // [nparts] cells
  Array<int> places; // [graph->ncells] in the network of the cell's pair; -1 = in none
  Array<BorderNet> borders;
  Array<int> changed;                       // [nparts] the round in which the part has changed last
  std::map<std::pair<int, int>, int> tried; // the round in which a pair has been tried last
  int round;
};

// The cells around the border of a pair.
struct Region {
  const PartPair *pair;
  Array<int> cells; // from place 2 on
  Network network;
};

} // namespace

// What is gained where the net is no longer cut between two parts. others: whether it touches more parts.
static Weight WorthOf(const Pairs *s, int net, bool others)
{
  const Weight wgt = s->graph->netwgt[net];

  return (s->goal->connectivity ? wgt : 0) + (s->goal->cut && !others ? wgt : 0);
}

// So much of a part can change sides that the other one would be far above its limit: a minimum cut has to be found
// that keeps the limits, and the more it can choose from the better.
static double RoomOf(const Pairs *s, int from, int to)
{
  const double all = static_cast<double>(s->pwgts[At(from)]) + static_cast<double>(s->pwgts[At(to)]);
  const double limits = static_cast<double>(s->goal->limits[from]) + static_cast<double>(s->goal->limits[to]);
  const double slack = std::max(0.0, limits - all);
  const double share = static_cast<double>(s->goal->limits[to]) / limits;

  return std::min(FLOW_MOST_OF_PART * static_cast<double>(s->pwgts[At(from)]),
                  share * (all + FLOW_ROOM * slack) - static_cast<double>(s->pwgts[At(to)]));
}

// Cells of the part, from those on the nets of the border on, as far as they fit. Returns whether any stays outside.
static bool FillSide(Pairs *s, int from, int to, Region *region)
{
  const HGraph *graph = s->graph;
  const int side = from == region->pair->p ? 0 : 1;
  const std::size_t first = region->cells.size();
  double room = RoomOf(s, from, to);
  Network *network = &region->network;
  const auto meet = [&](int net, int distance) {
    for (int k = graph->netptr[net]; k < graph->netptr[net + 1]; k++) {
      const int cell = graph->netind[k];
      if (s->part[cell] != from || cell < graph->nfixed || s->places[At(cell)] != -1 ||
          static_cast<double>(graph->cellwgt[cell]) > room)
        continue;
      room -= static_cast<double>(graph->cellwgt[cell]);
      network->cellwgts[At(side)] -= graph->cellwgt[cell];
      s->places[At(cell)] = static_cast<int>(network->cellwgts.size());
      region->cells.push_back(cell);
      network->cellwgts.push_back(graph->cellwgt[cell]);
      network->sides.push_back(static_cast<char>(side));
      network->distances.push_back(distance);
    }
  };

  for (std::size_t i = region->pair->first; i < region->pair->last; i++)
    meet(s->borders[i].net, 0);
  for (std::size_t i = first; i < region->cells.size() && region->cells.size() < first + FLOW_MOST_CELLS;
       i++) {
    const int cell = region->cells[i], distance = network->distances[i + 2];
    if (distance >= FLOW_DISTANCE)
      break;
    for (int k = graph->incptr[cell]; k < graph->incptr[cell + 1]; k++)
      if (NetSize(graph, graph->incind[k]) <= LARGE_SEARCHED_NET)
        meet(graph->incind[k], distance + 1);
  }
  return std::ssize(region->cells) - static_cast<std::ptrdiff_t>(first) < s->counts[At(from)];
}

// Returns what its nets between the sides weigh.
static Weight FillNets(const Pairs *s, Region *region)
{
  const HGraph *graph = s->graph;
  Network *network = &region->network;
  Array<int> nets;
  Weight cut = 0;

  for (const int cell : region->cells)
    nets.insert(nets.end(), graph->incind + graph->incptr[cell], graph->incind + graph->incptr[cell + 1]);
  std::sort(nets.begin(), nets.end());
  nets.erase(std::unique(nets.begin(), nets.end()), nets.end());
  network->netptr.push_back(0);
  for (const int net : nets) {
    bool stays[2] = {false, false}, sides[2] = {false, false}, others = false;
    for (int k = graph->netptr[net]; k < graph->netptr[net + 1]; k++) {
      const int cell = graph->netind[k], part = s->part[cell];
      if (part != region->pair->p && part != region->pair->q) {
        others = true;
        continue;
      }
      const int side = part == region->pair->p ? 0 : 1;
      sides[side] = true;
      if (s->places[At(cell)] == -1)
        stays[side] = true;
      else
        network->netind.push_back(s->places[At(cell)]);
    }
    for (int side = 0; side < 2; side++)
      if (stays[side])
        network->netind.push_back(side);
    const Weight worth = WorthOf(s, net, others);
    if (worth == 0 || (stays[0] && stays[1]) || std::ssize(network->netind) < network->netptr.back() + 2) {
      network->netind.resize(At(network->netptr.back()));
      continue;
    }
    network->netptr.push_back(static_cast<int>(network->netind.size()));
    network->netwgts.push_back(worth);
    if (sides[0] && sides[1])
      cut += worth;
  }
  return cut;
}

// Returns the cells that change sides.
static Array<int> RefinePair(const Control *ctrl, Pairs *s, const PartPair *pair)
{
  const int parts[2] = {pair->p, pair->q};
  Array<int> changing;
  Region region = {pair, {}, {}};
  Network *network = &region.network;

  network->cellwgts = {s->pwgts[At(pair->p)], s->pwgts[At(pair->q)]};
  network->distances.assign(2, INT_MAX / 4);
  network->sides = {0, 1};
  bool stays[2];
  for (int side = 0; side < 2; side++) {
    stays[side] = FillSide(s, parts[side], parts[1 - side], &region);
    network->limits[side] = s->goal->limits[parts[side]];
    network->minimums[side] = s->goal->minimums[parts[side]];
  }
  if (stays[0] && stays[1]) {
    const Weight cut = FillNets(s, &region);
    const Array<char> before = network->sides;
    if (cut > 0 && FindMinimumCut(ctrl, network, cut))
      for (std::size_t i = 2; i < before.size(); i++)
        if (network->sides[i] != before[i])
          changing.push_back(region.cells[i - 2]);
  }
  for (const int cell : region.cells)
    s->places[At(cell)] = -1;
  return changing;
}

// Pairs that have not been tried since one of the two has changed, without a part in common; those that share most
// first.
static Array<PartPair> ChoosePairs(Pairs *s)
{
  Array<PartPair> all, chosen;
  Array<char> taken(s->changed.size(), 0);

  for (std::size_t i = 0; i < s->borders.size(); i++) {
    const BorderNet *border = &s->borders[i];
    if (all.empty() || all.back().p != border->p || all.back().q != border->q)
      all.push_back({border->p, border->q, i, i, 0.0});
    all.back().last = i + 1;
    all.back().wgt += static_cast<double>(s->graph->netwgt[border->net]);
  }
  std::erase_if(all, [s](const PartPair &pair) {
    const auto found = s->tried.find({pair.p, pair.q});
    const int tried = found == s->tried.end() ? 0 : found->second;
    return tried > std::max(s->changed[At(pair.p)], s->changed[At(pair.q)]);
  });
  std::sort(all.begin(), all.end(), [](const PartPair &a, const PartPair &b) {
    return a.wgt != b.wgt ? a.wgt > b.wgt : a.p != b.p ? a.p < b.p : a.q < b.q;
  });
  for (const PartPair &pair : all) {
    if (taken[At(pair.p)] || taken[At(pair.q)])
      continue;
    taken[At(pair.p)] = taken[At(pair.q)] = 1;
    chosen.push_back(pair);
  }
  return chosen;
}

static void Change(Pairs *s, const PartPair *pair, const Array<int> &cells)
{
  if (cells.empty())
    return;
  for (const int cell : cells) {
    const int from = s->part[cell], to = from == pair->p ? pair->q : pair->p;
    s->part[cell] = to;
    s->pwgts[At(from)] -= s->graph->cellwgt[cell];
    s->pwgts[At(to)] += s->graph->cellwgt[cell];
    s->counts[At(from)]--;
    s->counts[At(to)]++;
  }
  s->changed[At(pair->p)] = s->changed[At(pair->q)] = s->round;
}

static Pairs OpenPairs(const SearchGoal *goal, const HGraph *graph, const int *refined, int *part)
{
  const std::size_t nparts = At(goal->nparts);
  Pairs s = {};

  s.goal = goal;
  s.graph = graph;
  s.part = part;
  s.pwgts.assign(nparts, 0);
  s.counts.assign(nparts, 0);
  s.changed.assign(nparts, refined == nullptr ? 0 : -1);
  s.places.assign(At(graph->ncells), -1);
  for (int i = 0; i < graph->ncells; i++) {
    s.pwgts[At(part[i])] += graph->cellwgt[i];
    s.counts[At(part[i])]++;
    if (refined != nullptr && refined[i] != part[i])
      s.changed[At(part[i])] = s.changed[At(refined[i])] = 0;
  }
  return s;
}

void RefineByFlow(const Control *ctrl, const SearchGoal *goal, const HGraph *graph, const int *refined,
                  int *part, Value *value)
{
  Pairs s = OpenPairs(goal, graph, refined, part);
  const int mostparts = goal->connectivity ? MOST_BORDERING : 2;

  EnterPhase(ctrl, PHASE_REFINE, graph->ncells);
  for (s.round = 1; s.round <= FLOW_ROUNDS; s.round++) {
    Checkpoint(ctrl);
    s.borders = FindBorderNets(graph, part, mostparts);
    const Array<PartPair> pairs = ChoosePairs(&s);
    if (pairs.empty())
      break;
    std::vector<Array<int>> changing(pairs.size());
    DoAll(ctrl, static_cast<int>(pairs.size()),
          [&](int i) { changing[At(i)] = RefinePair(ctrl, &s, &pairs[At(i)]); });
    for (std::size_t i = 0; i < pairs.size(); i++) {
      s.tried[{pairs[i].p, pairs[i].q}] = s.round;
      Change(&s, &pairs[i], changing[i]);
    }
  }
  *value = Evaluate(goal, graph, part);
}

} // namespace kapris::engine::KAPRIS_ENGINE
