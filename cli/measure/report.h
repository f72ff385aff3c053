// cli/measure/report.h - the lines "name  value" that the verbs print.
// SPDX-License-Identifier: MIT
#pragma once

#include "io/hgr.h"
#include "measure/measures.h"

#include <fmt/format.h>
#include <string>

namespace kapris_cli
{

template <typename Value>
std::string Line(const std::string &name, const Value &value)
{
  return fmt::format("{:<15}{}\n", name, value);
}

// Name, cells, nets and pins.
std::string FormatSizes(const std::string &name, const Hgr &hgr);

// The weight of each of up to 16 parts, of more only the extremes. With percent > 0 also the limits of
// PartLimit and how many parts are over theirs, if any.
std::string FormatWeights(const Measures &measures, long long nparts, int percent);

} // namespace kapris_cli
