// cli/json/objects.h - the objects that --json gives, which docs/json.md describes.
// SPDX-License-Identifier: MIT
#pragma once

#include "measure/stats.h"
#include "solve/outcome.h"
#include "verbs/evaluation.h"

#include <string>

namespace kapris_cli
{

// Writes the object and the page of a result to the places that the options named, if they did.
void WriteResult(const Outcome &outcome);

// All that the partitions of the starts depend on, before they are made, as an object kapris-journal-1 in one line.
std::string Fingerprint(const Outcome &outcome);

void WriteEvaluation(const EvalRequest &request, const Evaluation &eval);

void WriteStats(const std::string &name, const Hgr &hgr, const Stats &stats, const std::string &path);

} // namespace kapris_cli
