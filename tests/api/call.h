// tests/api/call.h - one call of the safe interface as data, and what its result should be.
// SPDX-License-Identifier: MIT
#pragma once

#include "kapris.hpp"

#include "support/build.h"

#include <tuple>

typedef std::unique_ptr<kapris_result, kapris::detail::Release> ResultPtr;

// Shares are given in twelfths and the epsilons in percent, so that limits can be computed in whole numbers.
struct Call {
  Instance instance;
  std::vector<int> netptr, netind, twelfths, fixed;
  std::vector<double> shares;
  kapris_problem problem;
  kapris_options options;
  int percent, minpercent;
};

Instance Circuit(int ncells); // always the same one, without weights
// Defaults, epsilon 3 percent, no minimum, seed 0.
Call MakeCall(const Instance &instance, int nparts);
// Every kind of problem and every option, small.
Call RandomCall(std::uint64_t seed);

// Points the problem to the arrays of the call; afterwards they can be replaced by something wrong.
void Connect(Call *call);
// All expect that status, message and partition go together.
ResultPtr SolveConnected(const Call &call);
ResultPtr Solve(Call call);
ResultPtr Refine(const Call &connected, const std::vector<int> &part);
ResultPtr Combine(const Call &connected, const std::vector<std::vector<int>> &parts);
ResultPtr Evaluate(const Call &connected, const std::vector<int> &part);

std::vector<int> PartOf(const ResultPtr &result);
// A random one that keeps to the fixed cells.
std::vector<int> AnyPart(const Call &call, std::uint64_t seed);

// The order of results, best first.
typedef std::tuple<std::int64_t, int, std::int64_t, std::int64_t, double> Rank;
Rank RankOf(const Call &call, const ResultPtr &result);

typedef std::tuple<std::int64_t, std::int64_t, std::int64_t, double, std::int64_t, int, int> StartFigures;
typedef std::tuple<std::vector<int>, kapris_status, std::int64_t, std::int64_t, double, int,
                   std::vector<StartFigures>>
    Figures;
// Everything that must not depend on threads or timing.
Figures FiguresOf(const ResultPtr &result);

// The first thing about a partition that is not as it should be, recomputed from the call's own arrays; or nothing.
std::string WrongIn(const Call &call, const ResultPtr &result);
