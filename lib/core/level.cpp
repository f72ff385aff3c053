// lib/core/level.cpp - creation and release of levels.
// SPDX-License-Identifier: MIT

#include "level.h"

namespace kapris::engine::KAPRIS_ENGINE
{

Level OpenLevel(const HGraph *graph)
{
  Level level = {};

  level.graph = level.outer = graph;
  return level;
}

Level *CreateLevel(Level *finer, HGraph *graph)
{
  Level *level = QVarray<Level>(1, "CreateCoarseHGraph: level");

  *level = Level{};
  level->graph = level->own = graph;
  level->finer = finer;
  level->level = finer->level + 1;
  return level;
}

void CloseCycle(Level *level)
{
  QVfree__(&level->cellmap, &level->islandmap, &level->part.kpwgts);
}

void CloseLevel(Level *level)
{
  CloseCycle(level);
  QVfree__(&level->part.where);
}

void FreeLevel(Level *level)
{
  CloseLevel(level);
  FreeHGraph__(level->own);
  QVfree__(&level);
}

} // namespace kapris::engine::KAPRIS_ENGINE
