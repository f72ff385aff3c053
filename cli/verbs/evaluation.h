// cli/verbs/evaluation.h - what kapris eval was asked for, and what it found.
// SPDX-License-Identifier: MIT
#pragma once

#include "io/input.h"
#include "measure/bounds.h"
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
  std::optional<double> epsilon; // of the limits to check
  bool matrix = false, nets = false;
  std::string json; // empty: none
};

struct Evaluation {
  Hgr hgr;
  std::vector<int> part, fixed;
  long long nparts = 0;
  Measures measures;
  Limits limits;
  int nfixed = 0;
  std::vector<int> misplaced; // fixed cells that are elsewhere
  std::vector<CutNet> nets;   // for the matrix and the list of nets
  std::vector<std::vector<std::int64_t>> matrix;
};

} // namespace kapris_cli
