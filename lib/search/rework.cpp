// lib/search/rework.cpp - parts made anew, a few at a time.
// SPDX-License-Identifier: MIT
//
// A bisection high up in the recursion is never looked at again by the ones below it, and refinement of all parts moves
// what lies at the borders. Between them are the few parts that lie side by side: to divide their cells anew costs a
// fraction of a new member, and what is found there keeps everything else that is good about the parent. What groups
// gain adds up: a net with pins in two groups is cut before and after.

#include "rework.h"

#include "borders.h"
#include "climb.h"
#include "sidebyside.h"

#include "base/random.h"
#include "core/constants.h"

#include <algorithm>
#include <numeric>

namespace kapris::engine::KAPRIS_ENGINE
{

namespace
{

// What the nets weigh that are cut between a part and a neighbour, among others.
struct Neighbour {
  int p, q;
  double wgt;
};

// Parts that are made anew together, and their cells as a hypergraph.
struct Group {
  Array<int> parts; // in increasing order
  Array<int> cells; // likewise
  Array<Weight> cellwgts, netwgts;
  Array<int> netptr, netind;
};

// What is known while groups are drawn.
struct Draw {
  Array<Neighbour> neighbours;
  Array<int> first;     // [nparts + 1] where those of a part start
  Array<char> taken;    // [nparts] parts that are in a group
  Array<double> shared; // [nparts] border with the group that grows
  Array<int> near;      // parts where that is not 0
};

} // namespace

// By p, then q; each pair from both sides.
static Array<Neighbour> FindNeighbours(const HGraph *graph, const Array<int> &part)
{
  Array<Neighbour> neighbours;

  for (const BorderNet &border : FindBorderNets(graph, part.data(), MOST_BORDERING)) {
    if (neighbours.empty() || neighbours.back().p != border.p || neighbours.back().q != border.q)
      neighbours.push_back({border.p, border.q, 0.0});
    neighbours.back().wgt += static_cast<double>(graph->netwgt[border.net]);
  }
  const std::size_t n = neighbours.size();
  for (std::size_t i = 0; i < n; i++)
    neighbours.push_back({neighbours[i].q, neighbours[i].p, neighbours[i].wgt});
  std::sort(neighbours.begin(), neighbours.end(),
            [](const Neighbour &a, const Neighbour &b) { return a.p != b.p ? a.p < b.p : a.q < b.q; });
  return neighbours;
}

static Draw OpenDraw(const SearchGoal *goal, const HGraph *graph, const Array<int> &part)
{
  const std::size_t nparts = At(goal->nparts);
  Draw draw = {FindNeighbours(graph, part),
               Array<int>(nparts + 1, 0),
               Array<char>(nparts, 0),
               Array<double>(nparts, 0.0),
               {}};

  for (const Neighbour &neighbour : draw.neighbours)
    draw.first[At(neighbour.p) + 1]++;
  for (std::size_t p = 0; p < nparts; p++)
    draw.first[p + 1] += draw.first[p];
  return draw;
}

static void AddToGroup(Draw *draw, int p, Group *group)
{
  group->parts.push_back(p);
  draw->taken[At(p)] = 1;
  for (int i = draw->first[At(p)]; i < draw->first[At(p) + 1]; i++) {
    const Neighbour *neighbour = &draw->neighbours[At(i)];
    if (draw->taken[At(neighbour->q)])
      continue;
    if (draw->shared[At(neighbour->q)] == 0.0)
      draw->near.push_back(neighbour->q);
    draw->shared[At(neighbour->q)] += neighbour->wgt;
  }
  std::erase_if(draw->near, [draw](int q) { return draw->taken[At(q)] != 0; });
}

// A part by the border that it shares with the group, or -1.
static int DrawNear(const Draw *draw)
{
  double all = 0.0;
  int drawn = -1;

  for (const int q : draw->near)
    all += draw->shared[At(q)];
  double rest = static_cast<double>(RandomDraw()) / (1.0 + INT_MAX) * all;
  for (const int q : draw->near) {
    drawn = q;
    rest -= draw->shared[At(q)];
    if (rest < 0.0)
      break;
  }
  return drawn;
}

// A part that shares a border with no other, or only with such as are taken, is in no group.
static std::vector<Group> DrawGroups(const SearchGoal *goal, const HGraph *graph, const Array<int> &part,
                                     int groupsize)
{
  Draw draw = OpenDraw(goal, graph, part);
  Array<int> order(At(goal->nparts));
  std::vector<Group> groups;

  std::iota(order.begin(), order.end(), 0);
  RandomPermuteFine__(order.data(), goal->nparts, 0);
  for (const int start : order) {
    if (draw.taken[At(start)])
      continue;
    Group group;
    for (int p = start; p != -1; p = std::ssize(group.parts) < groupsize ? DrawNear(&draw) : -1)
      AddToGroup(&draw, p, &group);
    for (const int q : draw.near)
      draw.shared[At(q)] = 0.0;
    draw.near.clear();
    if (group.parts.size() < 2)
      continue;
    std::sort(group.parts.begin(), group.parts.end());
    groups.push_back(std::move(group));
  }
  return groups;
}

namespace
{

// The anchors are the first cells of a group, in the order of its parts, as they are those of the whole.
struct Subgraph {
  HGraph *graph;

  Subgraph(const Group *group, int nfixed)
      : graph(CopyHGraph(static_cast<int>(group->cells.size()), static_cast<int>(group->netwgts.size()),
                         group->cellwgts.data(), group->netptr.data(), group->netind.data(),
                         group->netwgts.data()))
  {
    graph->nfixed = nfixed;
  }
  ~Subgraph()
  {
    FreeHGraph__(graph);
  }
  Subgraph(const Subgraph &) = delete;
  Subgraph &operator=(const Subgraph &) = delete;
};

} // namespace

static void FillGroups(const SearchGoal *goal, const HGraph *graph, const Array<int> &part,
                       std::vector<Group> *groups)
{
  Array<int> groupof(At(goal->nparts), -1), rename(At(graph->ncells)), met;

  for (std::size_t g = 0; g < groups->size(); g++) {
    (*groups)[g].netptr.push_back(0);
    for (const int p : (*groups)[g].parts)
      groupof[At(p)] = static_cast<int>(g);
  }
  for (int i = 0; i < graph->ncells; i++) {
    const int g = groupof[At(part[At(i)])];
    if (g == -1)
      continue;
    Group *group = &(*groups)[At(g)];
    rename[At(i)] = static_cast<int>(group->cells.size());
    group->cells.push_back(i);
    group->cellwgts.push_back(graph->cellwgt[i]);
  }
  for (int j = 0; j < graph->nnets; j++) {
    met.clear();
    for (int k = graph->netptr[j]; k < graph->netptr[j + 1]; k++) {
      const int g = groupof[At(part[At(graph->netind[k])])];
      if (g == -1)
        continue;
      Group *group = &(*groups)[At(g)];
      if (std::ssize(group->netind) == group->netptr.back())
        met.push_back(g);
      group->netind.push_back(rename[At(graph->netind[k])]);
    }
    for (const int g : met) {
      Group *group = &(*groups)[At(g)];
      const int npins = static_cast<int>(group->netind.size()) - group->netptr.back();
      // A net that others cut anyway can still touch fewer parts.
      if (npins < 2 || (npins < NetSize(graph, j) && !goal->connectivity)) {
        group->netind.resize(At(group->netptr.back()));
        continue;
      }
      group->netptr.push_back(static_cast<int>(group->netind.size()));
      group->netwgts.push_back(graph->netwgt[j]);
    }
  }
}

static void ReworkGroup(const Control *ctrl, const SearchGoal *goal, std::int64_t seed, const HGraph *graph,
                        const Group *group, Array<int> *part)
{
  const int ncells = static_cast<int>(group->cells.size()), nparts = static_cast<int>(group->parts.size());
  Array<Weight> limits, minimums;
  std::vector<double> shares;
  Control inner = *ctrl;

  if (ncells <= nparts || group->netwgts.empty())
    return;
  for (const int p : group->parts) {
    limits.push_back(goal->limits[p]);
    minimums.push_back(goal->minimums[p]);
  }
  const double room = std::accumulate(limits.begin(), limits.end(), 0.0);
  for (const Weight limit : limits)
    shares.push_back(room > 0.0 ? static_cast<double>(limit) / room : 1.0 / nparts);
  inner.nparts = nparts;
  inner.bounds.shares = shares.data();
  inner.bounds.limits = limits.data();
  inner.bounds.total = std::accumulate(group->cellwgts.begin(), group->cellwgts.end(), Weight{0});
  const SearchGoal subgoal = {nparts, goal->cut, goal->connectivity, limits.data(), minimums.data()};
  Subgraph sub(group, graph->nfixed > 0 ? nparts : 0);

  Member old = {Array<int>(At(ncells)), {}};
  for (std::size_t i = 0; i < group->cells.size(); i++)
    old.part[i] = static_cast<int>(
        std::lower_bound(group->parts.begin(), group->parts.end(), (*part)[At(group->cells[i])]) -
        group->parts.begin());
  old.value = Evaluate(&subgoal, sub.graph, old.part.data());
  InitRandom__(seed);
  const std::int64_t seeds[2] = {RandomDraw(), RandomDraw()};
  const Member fresh = Bisect(&inner, &subgoal, seeds[0], sub.graph);
  const Member child = Combine(&inner, &subgoal, seeds[1], sub.graph, &old, &fresh);
  if (child.value < old.value)
    for (std::size_t i = 0; i < group->cells.size(); i++)
      (*part)[At(group->cells[i])] = group->parts[At(child.part[i])];
}

Member Rework(const Control *ctrl, const SearchGoal *goal, std::int64_t seed, const HGraph *graph,
              const Member *parent, int groupsize)
{
  Member child = *parent;

  InitRandom__(seed);
  std::vector<Group> groups = DrawGroups(goal, graph, parent->part, groupsize);
  FillGroups(goal, graph, parent->part, &groups);
  std::vector<std::int64_t> seeds(groups.size());
  for (std::int64_t &each : seeds)
    each = RandomDraw();
  const std::int64_t last = RandomDraw();
  DoAll(ctrl, static_cast<int>(groups.size()),
        [&](int g) { ReworkGroup(ctrl, goal, seeds[At(g)], graph, &groups[At(g)], &child.part); });
  if (child.part == parent->part)
    return child;
  child.value = Evaluate(goal, graph, child.part.data());
  InitRandom__(last);
  Climb(ctrl, goal, graph, child.part.data(), &child.value);
  return child.value < parent->value ? child : *parent;
}

} // namespace kapris::engine::KAPRIS_ENGINE
