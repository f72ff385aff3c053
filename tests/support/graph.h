// tests/support/graph.h - records of the engine for tests, of the width that is being compiled.
// SPDX-License-Identifier: MIT
#pragma once

#include "core/level.h"
#include "support/build.h"

namespace kapris::engine::KAPRIS_ENGINE
{

template <class To, class From>
To *CopyOf(const std::vector<From> &x)
{
  To *copy = QVarray<To>(static_cast<std::int64_t>(x.size()), "test: array");

  for (std::size_t i = 0; i < x.size(); i++)
    copy[i] = static_cast<To>(x[i]);
  return copy;
}

// A record on the heap with its incidence built; nfixed 0. Give it back with FreeHGraph__.
inline HGraph *HGraphOf(const Instance &instance)
{
  HGraph *graph = CreateHGraph__();
  const Weights ones(std::max(static_cast<std::size_t>(instance.ncells), instance.nets.size()), 1);

  graph->ncells = instance.ncells;
  graph->nnets = static_cast<int>(instance.nets.size());
  graph->nfixed = 0;
  graph->netptr = CopyOf<Pin>(instance.NetPtr());
  graph->netind = CopyOf<Cell>(instance.NetInd());
  graph->cellwgt = CopyOf<Weight>(instance.cellwgt.empty() ? ones : instance.cellwgt);
  graph->netwgt = CopyOf<Weight>(instance.netwgt.empty() ? ones : instance.netwgt);
  CreateIncidentHGraph__(graph);
  EXPECT_VALID(CheckHGraph(graph));
  return graph;
}

// Cells 0 .. the largest pin, weights 1.
inline HGraph *HGraphOf(const Nets &nets)
{
  int ncells = 0;

  for (const std::vector<int> &net : nets)
    for (int pin : net)
      ncells = std::max(ncells, pin + 1);
  return HGraphOf(Instance{ncells, nets, {}, {}});
}

// What tests multiply weights by: the wide form then needs more than 32 bits.
constexpr std::int64_t UNIT = IS_WIDE ? std::int64_t{1} << 40 : 1;

inline Weights Units(Weights weights)
{
  for (std::int64_t &weight : weights)
    weight *= UNIT;
  return weights;
}

// The first n entries of an array; EXPECT_EQ prints them.
template <class T>
std::vector<T> ListOf(int n, const T *x)
{
  return std::vector<T>(x, x + n);
}

inline Weights WeightsOf(int n, const Weight *x)
{
  return Weights(x, x + n);
}

inline Nets NetsOf(const HGraph *graph)
{
  Nets nets;

  for (int j = 0; j < graph->nnets; j++)
    nets.push_back(ListOf(NetSize(graph, j), graph->netind + graph->netptr[j]));
  return nets;
}

// A level over a hypergraph of its own, with a partition: one digit per cell.
struct TestLevel : Level {
  HGraph *owned;

  explicit TestLevel(HGraph *hypergraph, const std::string &digits = "")
      : Level(OpenLevel(hypergraph)), owned(hypergraph)
  {
    if (!digits.empty())
      part.where = QVarray<int>(static_cast<std::int64_t>(digits.size()), "test: where");
    for (std::size_t i = 0; i < digits.size(); i++)
      part.where[i] = digits[i] - '0';
  }
  TestLevel(const TestLevel &) = delete;
  ~TestLevel()
  {
    CloseLevel(this);
    FreeHGraph__(owned);
  }

  std::string Digits() const
  {
    std::string digits;
    for (int i = 0; i < graph->ncells + graph->nislands; i++)
      digits += static_cast<char>('0' + part.where[i]);
    return digits;
  }
};

// Without hooks; for a bisection into halves.
inline Control TestControl()
{
  Control ctrl = {};

  ctrl.nparts = 2;
  ctrl.nruns = 1;
  ctrl.ctype = MATCH_ALTERNATE;
  ctrl.rtype = REFINE_FM;
  ctrl.objective = MINIMISE_CUT;
  ctrl.maxnetsize = 50;
  ctrl.coarsento = 100;
  ctrl.bounds.part0frac = 0.5f;
  ctrl.bounds.dealshare = 0.5;
  ctrl.hooks = &NO_HOOKS;
  return ctrl;
}

} // namespace kapris::engine::KAPRIS_ENGINE

using namespace kapris::engine::KAPRIS_ENGINE;
