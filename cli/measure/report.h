// cli/measure/report.h - the lines "name  value" that the verbs print.
// SPDX-License-Identifier: MIT
#pragma once

#include "io/hgr.h"
#include "measure/bounds.h"
#include "measure/measures.h"

#include <fmt/format.h>
#include <nlohmann/json_fwd.hpp>
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

// What a verb gives with --json: one object, which starts with its schema and what FormatSizes says.
using Json = nlohmann::ordered_json;
Json StartJson(const std::string &schema, const std::string &name, const Hgr &hgr);

// The weight of each of up to 16 parts, of more only the extremes and the first that are over their limit. With limits
// also these and how many parts are over theirs, if any.
std::string FormatWeights(const Measures &measures, long long nparts, const Limits &limits);

} // namespace kapris_cli
