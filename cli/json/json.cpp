// cli/json/json.cpp - JSON objects in files.
// SPDX-License-Identifier: MIT

#include "json/json.h"

#include "formats/failure.h"
#include "formats/files.h"
#include "formats/output.h"
#include "report/library.h"

#include <fmt/core.h>
#include <nlohmann/json.hpp>

namespace kapris_report
{

Json ParseJson(std::string_view text)
{
  constexpr int deepest = 16;
  bool toodeep = false;
  Json json = Json::parse(
      text,
      [&toodeep](int depth, Json::parse_event_t, Json &) {
        toodeep = toodeep || depth > deepest;
        return !toodeep;
      },
      false);

  return toodeep ? Json(Json::value_t::discarded) : json;
}

Json ReadJson(const std::string &path)
{
  Json json = ParseJson(OpenText(path).bytes);

  if (json.is_discarded())
    throw Failure{EXIT_MALFORMED, fmt::format("{}:1:1: not a JSON file of ours", InputName(path))};
  return json;
}

bool IsJsonText(const std::string &text)
{
  try {
    Json(text).dump();
    return true;
  } catch (const Json::exception &) {
    return false;
  }
}

void WriteJson(const Json &json, const std::string &path)
{
  // Names of files can hold any bytes.
  const std::string text = json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";

  WriteFile(path, text);
}

} // namespace kapris_report
