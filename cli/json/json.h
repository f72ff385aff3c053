// cli/json/json.h - JSON objects in files.
// SPDX-License-Identifier: MIT
//
// The library's whole header takes long to compile: only what looks into objects includes it.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

namespace kapris_report
{

// Keeps the order of its keys.
using Json = nlohmann::ordered_json;

// Whether an object can hold the text as it is: UTF-8.
bool IsJsonText(const std::string &text);

// The object in a text, or a discarded value if there is none, or none of ours. Objects of results are not nested
// deeply, and what is cannot even be copied safely.
Json ParseJson(std::string_view text);

// The object in a file; throws Failure for anything that no result looks like.
Json ReadJson(const std::string &path);

// Writes the object to the place that the option --json named.
void WriteJson(const Json &json, const std::string &path);

} // namespace kapris_report
