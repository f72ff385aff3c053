// lib/search/netparts.cpp - how many pins of each net lie in which part.
// SPDX-License-Identifier: MIT

#include "netparts.h"

#include <algorithm>

namespace kapris::engine::KAPRIS_ENGINE
{

void CountPins(const HGraph *graph, int nparts, const int *part, NetParts *pins)
{
  int nlisted = 0;

  pins->nets.resize(At(graph->nnets));
  for (int j = 0; j < graph->nnets; j++) {
    const int size = NetSize(graph, j);
    pins->nets[At(j)] = {nlisted, 0, size, graph->netwgt[j]};
    nlisted += std::min(size, nparts);
  }
  pins->list.resize(At(nlisted) + 1);
  for (int j = 0; j < graph->nnets; j++) {
    NetHead *head = &pins->nets[At(j)];
    PartPins *list = &pins->list[At(head->first)];
    for (int k = graph->netptr[j]; k < graph->netptr[j + 1]; k++) {
      const int p = part[graph->netind[k]];
      int i = 0;
      while (i < head->nparts && list[i].part != p)
        i++;
      if (i == head->nparts)
        list[head->nparts++] = {p, 0};
      list[i].pins++;
    }
  }
}

Value Evaluate(const SearchGoal *goal, const HGraph *graph, const int *part)
{
  Array<Weight> pwgts(At(goal->nparts), 0);
  Array<int> seen(At(goal->nparts), -1);
  Weight cut = 0, connectivity = 0;
  Value value = {0, 0, 0};

  for (int i = 0; i < graph->ncells; i++)
    pwgts[At(part[i])] += graph->cellwgt[i];
  for (int p = 0; p < goal->nparts; p++)
    value.excess += std::max<Weight>(0, pwgts[At(p)] - goal->limits[p]);
  for (int j = 0; j < graph->nnets; j++) {
    int ntouched = 0;
    for (int k = graph->netptr[j]; k < graph->netptr[j + 1]; k++) {
      const int p = part[graph->netind[k]];
      ntouched += seen[At(p)] != j;
      seen[At(p)] = j;
    }
    if (ntouched < 2)
      continue;
    cut += graph->netwgt[j];
    connectivity += graph->netwgt[j] * (ntouched - 1);
  }
  value.main = goal->cut * cut + goal->connectivity * connectivity;
  value.tie = goal->cut ? connectivity : cut;
  return value;
}

const char *CheckNetParts(const HGraph *graph, int nparts, const int *part, const NetParts *pins)
{
  NetParts counted;

  CountPins(graph, nparts, part, &counted);
  for (int j = 0; j < graph->nnets; j++) {
    const NetHead *head = &pins->nets[At(j)], *other = &counted.nets[At(j)];
    if (head->nparts != other->nparts)
      return "net parts: a net touches another number of parts";
    for (int i = 0; i < other->nparts; i++) {
      const PartPins *wanted = &counted.list[At(other->first + i)];
      const auto same = [&](const PartPins &has) {
        return has.part == wanted->part && has.pins == wanted->pins;
      };
      const auto list = pins->list.begin() + head->first;
      if (std::none_of(list, list + head->nparts, same))
        return "net parts: a net has another number of pins in a part";
    }
  }
  return nullptr;
}

} // namespace kapris::engine::KAPRIS_ENGINE
