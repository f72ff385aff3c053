// cli/solve/solve.h - the run behind the verbs partition, refine and combine.
// SPDX-License-Identifier: MIT
#pragma once

#include "libraries.h"

#include "formats/failure.h"
#include "solve/request.h"

#include <string>

namespace kapris_cli
{

ExitStatus Solve(const std::string &command, const Request &request);

} // namespace kapris_cli
