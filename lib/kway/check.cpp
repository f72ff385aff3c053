// lib/kway/check.cpp - validator of the k-way records, written from the definitions.
// SPDX-License-Identifier: MIT

#include "kway.h"

#include "control/ctrl.h"

#include <algorithm>
#include <map>
#include <vector>

typedef std::map<int, int> PinsByPart;

static std::vector<PinsByPart> CountPins(const HGraph *graph)
{
  std::vector<PinsByPart> nets(static_cast<std::size_t>(graph->nnets));

  for (int j = 0; j < graph->nnets; j++)
    for (int k = graph->netptr[j]; k < graph->netptr[j + 1]; k++)
      nets[static_cast<std::size_t>(j)][graph->where[graph->netind[k]]]++;
  return nets;
}

static const char *CheckNets(const HGraph *graph, const std::vector<PinsByPart> &nets)
{
  int cut = 0, soed = 0;

  for (int j = 0; j < graph->nnets; j++) {
    const PinsByPart &pins = nets[static_cast<std::size_t>(j)];
    const NetInfo *net = &graph->nrinfo[j];
    const int nparts = static_cast<int>(pins.size());

    if (net->ndegrees != nparts)
      return "nrinfo: not the number of parts that the net touches";
    for (int d = 0; d < nparts; d++) {
      const auto found = pins.find(net->degrees[d].pid);
      if (found == pins.end() || found->second != net->degrees[d].npins)
        return "nrdata: not the pins of the net in its parts";
    }
    if (nparts > 1) {
      cut = AddWrap__(cut, graph->netwgt[j]);
      soed = AddWrap__(soed, MulWrap__(nparts, graph->netwgt[j]));
    }
  }
  // Moving a cell that a net lists twice miscounts both.
  if (HasPlainNets__(graph) && (cut != graph->mincut || soed != graph->soed))
    return "mincut, soed: not those of where";
  return nullptr;
}

// pref is left out: it may be out of date. So may the rest of a stale record.
static const char *CheckCell(const HGraph *graph, const std::vector<PinsByPart> &nets, int i)
{
  const RInfo *cell = &graph->crinfo[i];
  const int m = graph->where[i];
  int id = 0, soloed = 0, outside = 0;
  std::map<int, KDegree> degrees;

  if (cell->stale)
    return nullptr;
  for (int k = graph->incptr[i]; k < graph->incptr[i + 1]; k++) {
    const int j = graph->incind[k], w = graph->netwgt[j];
    const PinsByPart &pins = nets[static_cast<std::size_t>(j)];

    if (NetSize__(graph, j) == 1)
      continue;
    outside = AddWrap__(outside, w);
    if (pins.size() == 1) {
      id = AddWrap__(id, w);
      continue;
    }
    const bool solo = pins.at(m) == 1;
    if (solo)
      soloed = AddWrap__(soloed, w);
    for (const auto &[q, npins] : pins) {
      if (q == m)
        continue;
      degrees[q].kgain = AddWrap__(degrees[q].kgain, w);
      if (solo && pins.size() == 2)
        degrees[q].ed = AddWrap__(degrees[q].ed, w);
    }
  }
  if (soloed < id)
    degrees.clear();
  if (cell->id != id || cell->soloed != soloed || cell->ndegrees != static_cast<int>(degrees.size()))
    return "crinfo: not the internal and soloed weight and the number of other parts";
  for (int d = 0; d < cell->ndegrees; d++) {
    const KDegree *entry = &cell->degrees[d];
    const auto found = degrees.find(entry->pid);
    if (found == degrees.end() || entry->ed != found->second.ed ||
        entry->kgain != AddWrap__(found->second.kgain, SubWrap__(soloed, outside)))
      return "crdata: not the gains of a move";
  }
  return nullptr;
}

const char *CheckKway__(const Control *ctrl, const HGraph *graph)
{
  std::vector<int> wgts(static_cast<std::size_t>(ctrl->nparts), 0);

  for (int i = 0; i < graph->ncells; i++) {
    if (graph->where[i] < 0 || graph->where[i] >= ctrl->nparts)
      return "where: a cell is in no part";
    int &wgt = wgts[static_cast<std::size_t>(graph->where[i])];
    wgt = AddWrap__(wgt, graph->cellwgt[i]);
  }
  if (!std::equal(wgts.begin(), wgts.end(), graph->kpwgts))
    return "kpwgts: not the sums of the parts";

  const std::vector<PinsByPart> nets = CountPins(graph);

  if (const char *broken = CheckNets(graph, nets))
    return broken;
  for (int i = 0; i < graph->ncells; i++)
    if (const char *broken = CheckCell(graph, nets, i))
      return broken;
  return nullptr;
}
