// cli/solve/solve.h - the run behind the verbs partition, refine and combine.
// SPDX-License-Identifier: MIT
#pragma once

#include "libraries.h"

#include "formats/failure.h"
#include "solve/journal.h"
#include "solve/request.h"

#include <functional>
#include <kapris.hpp>
#include <span>
#include <string>

namespace kapris_cli
{

// What the library is to do. The options have the callbacks of the tool.
struct LibraryCall {
  const std::string &command; // the verb
  const kapris::Hypergraph &hypergraph;
  const kapris::Targets &targets;
  std::span<const std::span<const int>> given;
  const kapris::Options &options;
  const Journal *journal; // which starts the callbacks know, or NULL
};

// Who does it: this process, or many.
struct Engine {
  std::function<kapris::Result(const LibraryCall &)> run;
  int nranks; // that share the work, 0: this process alone
};

// The library in this process.
Engine LocalEngine();

ExitStatus Solve(const std::string &command, const Request &request, const Engine &engine = LocalEngine());

} // namespace kapris_cli
