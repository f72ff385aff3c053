// lib/refine/kway/check.cpp - validator of the k-way records, written from the definitions.
// SPDX-License-Identifier: MIT

#include "state.h"

#include <algorithm>
#include <map>
#include <vector>

namespace kapris::engine::KAPRIS_ENGINE
{

typedef std::map<int, int> PinsByPart;

static std::vector<PinsByPart> CountPins(const KwayState *state)
{
  const HGraph *graph = state->graph;
  std::vector<PinsByPart> nets(static_cast<std::size_t>(graph->nnets));

  for (int j = 0; j < graph->nnets; j++)
    for (int k = graph->netptr[j]; k < graph->netptr[j + 1]; k++)
      nets[static_cast<std::size_t>(j)][state->part->where[graph->netind[k]]]++;
  return nets;
}

static const char *CheckNets(const KwayState *state, const std::vector<PinsByPart> &nets)
{
  const HGraph *graph = state->graph;
  Weight cut = 0, soed = 0;

  for (int j = 0; j < graph->nnets; j++) {
    const PinsByPart &pins = nets[static_cast<std::size_t>(j)];
    const NetInfo *net = &state->nrinfo[j];
    const int nparts = static_cast<int>(pins.size());

    if (net->ndegrees != nparts)
      return "nrinfo: not the number of parts that the net touches";
    for (int d = 0; d < nparts; d++) {
      const auto found = pins.find(net->degrees[d].pid);
      if (found == pins.end() || found->second != net->degrees[d].npins)
        return "nrdata: not the pins of the net in its parts";
    }
    if (nparts > 1) {
      cut = AddWrap(cut, graph->netwgt[j]);
      soed = AddWrap(soed, MulWrap(nparts, graph->netwgt[j]));
    }
  }
  // Moving a cell that a net lists twice miscounts both.
  if (HasPlainNets(graph) && (cut != state->part->mincut || soed != state->part->soed))
    return "mincut, soed: not those of where";
  return nullptr;
}

// pref is left out: it may be out of date. So may the rest of a stale record.
static const char *CheckCell(const KwayState *state, const std::vector<PinsByPart> &nets, int i)
{
  const HGraph *graph = state->graph;
  const RInfo *cell = &state->crinfo[i];
  const int m = state->part->where[i];
  Weight id = 0, soloed = 0, outside = 0;
  std::map<int, KDegree> degrees;

  if (cell->stale)
    return nullptr;
  for (int k = graph->incptr[i]; k < graph->incptr[i + 1]; k++) {
    const int j = graph->incind[k];
    const Weight w = graph->netwgt[j];
    const PinsByPart &pins = nets[static_cast<std::size_t>(j)];

    if (NetSize(graph, j) == 1)
      continue;
    outside = AddWrap(outside, w);
    if (pins.size() == 1) {
      id = AddWrap(id, w);
      continue;
    }
    const bool solo = pins.at(m) == 1;
    if (solo)
      soloed = AddWrap(soloed, w);
    for (const auto &[q, npins] : pins) {
      if (q == m)
        continue;
      degrees[q].kgain = AddWrap(degrees[q].kgain, w);
      if (solo && pins.size() == 2)
        degrees[q].ed = AddWrap(degrees[q].ed, w);
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
        entry->kgain != AddWrap(found->second.kgain, SubWrap(soloed, outside)))
      return "crdata: not the gains of a move";
  }
  return nullptr;
}

const char *CheckKway(const KwayState *state)
{
  const HGraph *graph = state->graph;
  std::vector<Weight> wgts(static_cast<std::size_t>(state->nparts), 0);

  for (int i = 0; i < graph->ncells; i++) {
    if (state->part->where[i] < 0 || state->part->where[i] >= state->nparts)
      return "where: a cell is in no part";
    Weight &wgt = wgts[static_cast<std::size_t>(state->part->where[i])];
    wgt = AddWrap(wgt, graph->cellwgt[i]);
  }
  if (!std::equal(wgts.begin(), wgts.end(), state->part->kpwgts))
    return "kpwgts: not the sums of the parts";

  const std::vector<PinsByPart> nets = CountPins(state);

  if (const char *broken = CheckNets(state, nets))
    return broken;
  for (int i = 0; i < graph->ncells; i++)
    if (const char *broken = CheckCell(state, nets, i))
      return broken;
  return nullptr;
}

} // namespace kapris::engine::KAPRIS_ENGINE
