// lib/coarsen/islands.cpp - cells on no net: set aside, and put back.
// SPDX-License-Identifier: MIT
//
// A level with k kept cells and m islands keeps k+m entries in its per-cell arrays: the kept cells first, in
// their old order, then the islands, the one of the lowest old number last. Projection through the finer
// level's cellmap therefore still reaches every cell.
//
// Other trials may be at work on the hypergraph of a finest level, so it is not renumbered: the level gets another one,
// which shares with it what does not depend on the numbers of the cells.

#include "coarsen.h"

namespace kapris::engine::KAPRIS_ENGINE
{

// A copy of x, of n entries, with the entry at index i at map[i].
template <class T>
static T *Permuted(int n, const Cell *map, const T *x)
{
  T *permuted = QVarray<T>(n, "SeparateIslands: aux");

  for (int i = 0; i < n; i++)
    permuted[map[i]] = x[i];
  return permuted;
}

template <class T>
static void Permute(int n, const Cell *map, T **x)
{
  T *permuted = Permuted(n, map, *x);

  QVfree__(x);
  *x = permuted;
}

// Where each cell goes; returns how many are kept.
static int MapIslands(const HGraph *graph, Cell *map)
{
  const int n = graph->ncells;
  int nkept = graph->nfixed, last = n;

  for (int i = 0; i < graph->nfixed; i++)
    map[i] = i;
  for (int i = graph->nfixed; i < n; i++)
    map[i] = graph->incptr[i + 1] > graph->incptr[i] ? nkept++ : --last;
  return nkept;
}

// Islands have empty lists, so dropping their entries keeps the lists of the others in place.
static void DropEmptyLists(const Cell *map, int n, int nkept, int nfixed, Pin *incptr)
{
  for (int i = nfixed, end = nfixed; i < n; i++)
    if (map[i] < nkept)
      incptr[++end] = incptr[i + 1];
}

// The hypergraph of a finest level, renumbered.
static HGraph *Renumbered(const HGraph *graph, const Cell *map)
{
  const int n = graph->ncells, npins = graph->netptr[graph->nnets];
  HGraph *view = CreateHGraph__();

  *view = *graph;
  view->incptr = imalloc__(static_cast<std::int64_t>(n) + 1, "SeparateIslands: incptr");
  icopy__(static_cast<std::int64_t>(n) + 1, graph->incptr, view->incptr);
  view->cellwgt = Permuted(n, map, graph->cellwgt);
  view->adjwgt = Permuted(n, map, graph->adjwgt);
  view->netind = imalloc__(npins, "SeparateIslands: netind");
  for (int k = 0; k < npins; k++)
    view->netind[k] = map[graph->netind[k]];
  return view;
}

static void FreeRenumbered(HGraph *view)
{
  view->incind = view->netptr = nullptr;
  view->netwgt = nullptr;
  view->edgewgt = nullptr;
  FreeHGraph__(view);
}

static void RenumberOwn(HGraph *graph, const Cell *map)
{
  const int n = graph->ncells;

  Permute(n, map, &graph->cellwgt);
  Permute(n, map, &graph->adjwgt);
  for (int k = 0; k < graph->netptr[graph->nnets]; k++)
    graph->netind[k] = map[graph->netind[k]];
}

void SeparateIslands__(Level *level)
{
  const HGraph *graph = level->graph;
  const int n = graph->ncells;
  Cell *map = imalloc__(n, "SeparateIslands: ncells");
  const int nkept = MapIslands(graph, map);

  if (nkept == n) {
    QVfree__(&map);
    return;
  }
  if (level->finer == nullptr)
    level->own = Renumbered(graph, map);
  else
    RenumberOwn(level->own, map);
  HGraph *own = level->own;
  level->graph = own;
  DropEmptyLists(map, n, nkept, own->nfixed, own->incptr);
  own->nislands = n - nkept;
  own->ncells = nkept;
  if (level->part.where != nullptr)
    Permute(n, map, &level->part.where);

  if (level->finer == nullptr) {
    level->islandmap = map;
  } else {
    for (int i = 0; i < level->finer->graph->ncells; i++)
      level->finer->cellmap[i] = map[level->finer->cellmap[i]];
    QVfree__(&map);
  }
  CHECK_VALID(CheckLevel(level));
}

void CombineIslands__(Level *level)
{
  if (level->islandmap == nullptr)
    return;

  const int n = level->outer->ncells;
  int *where = imalloc__(n, "CombineIslands: aux");
  for (int i = 0; i < n; i++)
    where[i] = level->part.where[level->islandmap[i]];
  QVfree__(&level->part.where, &level->islandmap);
  level->part.where = where;
  FreeRenumbered(level->own);
  level->own = nullptr;
  level->graph = level->outer;
}

} // namespace kapris::engine::KAPRIS_ENGINE
