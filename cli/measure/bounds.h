// cli/measure/bounds.h - what the library can add up, and how heavy a part may be.
// SPDX-License-Identifier: MIT
#pragma once

#include "libraries.h"

#include "formats/hgr.h"
#include "measure/measures.h"

#include <functional>
#include <kapris.hpp>
#include <optional>
#include <string>
#include <vector>

namespace kapris_cli
{

// Throws Failure if the weight of the nets, each times the parts that it can span, is above most_weight. That of the
// cells cannot be. The name is for messages.
void CheckSums(const std::string &name, const Hgr &hgr, int nparts);

using PartBound = std::function<std::int64_t(int part)>;

// What each part may weigh at most and has to weigh at least; empty where there is no such limit.
struct Limits {
  PartBound most, least;
};

// Those of parts of a total; without an epsilon, or with a min_epsilon of 1, there is none. What targets refers to has
// to outlive the limits.
Limits LimitsOf(std::int64_t total, const kapris::Targets &targets, std::optional<double> epsilon,
                double min_epsilon);

// The numbers of parts that are above their limit, and below their minimum.
int CountOver(const Measures &measures, const Limits &limits);
long long CountUnder(const Measures &measures, long long nparts, const Limits &limits);

// What is hardly meant: limits that let all cells into one part, an epsilon that looks like percent, more parts than
// cells.
std::vector<std::string> LimitWarnings(const Hgr &hgr, const kapris::Targets &targets, double epsilon);
void PrintWarnings(const std::vector<std::string> &warnings);

} // namespace kapris_cli
