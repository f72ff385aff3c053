// cli/verbs/evaluation.h - what kapris eval was asked for, and what it found.
// SPDX-License-Identifier: MIT
#pragma once

#include "libraries.h"

#include "formats/input.h"
#include "formats/names.h"
#include "measure/border.h"
#include "measure/bounds.h"
#include "measure/components.h"
#include "measure/measures.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kapris_cli
{

struct EvalRequest {
  Input input;
  std::string parts;
  std::string fixed;             // empty: no cell is fixed
  int nparts = 0;                // 0: as many as the largest part number asks for
  std::string target_weights;    // empty: all equal
  std::optional<double> epsilon; // of the limits to check
  double min_epsilon = 1.0;
  bool matrix = false, nets = false, json_names = false;
  std::string json; // empty: none
};

struct Evaluation {
  Hgr hgr;
  std::vector<int> part, fixed;
  long long nparts = 0;
  Measures measures;
  std::vector<double> shares;             // of the parts; empty: all equal
  Limits limits;                          // refer to these
  std::vector<PartComponents> components; // of the parts in use
  int nfixed = 0;
  std::vector<int> misplaced; // fixed cells that are elsewhere
  std::vector<CutNet> nets;   // for the matrix and the list of nets, the heaviest first
  std::vector<BorderCell> border;
  Details details; // names
  std::vector<std::vector<std::int64_t>> matrix;
};

} // namespace kapris_cli
