// cli/measure/report.h - the lines "name  value" that the verbs print.
// SPDX-License-Identifier: MIT
#pragma once

#include "libraries.h"

#include "formats/hgr.h"
#include "measure/bounds.h"
#include "measure/measures.h"

#include <concepts>
#include <string>

namespace kapris_cli
{

std::string Line(const std::string &name, const std::string &value);

std::string Line(const std::string &name, std::integral auto value)
{
  return Line(name, std::to_string(value));
}

// Name, cells, nets and pins.
std::string FormatSizes(const std::string &name, const Hgr &hgr);

// " at most 5", " 3 to 5", or nothing.
std::string FormatLimits(int part, const Limits &limits);

// The weight of each of up to 16 parts, of more only the extremes and the first that are over their limit. With limits
// also these and how many parts keep to them not; and how many are empty, if any.
std::string FormatWeights(const Measures &measures, long long nparts, const Limits &limits);

} // namespace kapris_cli
