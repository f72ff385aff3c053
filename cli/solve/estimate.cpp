// cli/solve/estimate.cpp - what a partition will cost, before it is made.
// SPDX-License-Identifier: MIT
//
//   table     calls with one thread and the options of a preset, measured     bench/estimate.py
//   between   powers of the size and of the parts                             SizeOf, Between, InTable
//   options   members, combinations, runs, starts, threads, the limit of time   EstimateCost

#include "solve/estimate.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fmt/core.h>
#include <string_view>
#include <vector>

namespace kapris_cli
{

namespace
{

// Of hypergraphs with the numbers of pins below, four for each cell.
struct Row {
  std::string_view way;
  int parts;
  std::array<double, 3> seconds, megabytes;
};

} // namespace

static constexpr std::array<double, 3> sizes = {1e4, 1e5, 1e6};

// bench/estimate.py KAPRIS --update writes it, here and in docs/performance.md.
// clang-format off
static constexpr Row table[] = {
    {"fast", 2, {0.036, 0.45, 5.4}, {0.82, 8.2, 83}},
    {"fast", 8, {0.12, 1.5, 18}, {0.82, 8.2, 83}},
    {"fast", 64, {0.15, 1.8, 22}, {0.87, 8.8, 88}},
    {"default", 2, {0.07, 0.85, 10}, {0.82, 8.2, 83}},
    {"default", 8, {0.23, 2.8, 33}, {0.75, 7.6, 76}},
    {"default", 64, {0.38, 4.6, 56}, {0.84, 8.5, 86}},
    {"quality", 2, {0.3, 3.6, 43}, {0.72, 7.3, 73}},
    {"quality", 8, {0.97, 12, 140}, {0.72, 7.3, 74}},
    {"quality", 64, {1.6, 19, 234}, {0.88, 8.9, 89}},
    {"kway", 2, {0.088, 1.1, 13}, {0.89, 8.9, 90}},
    {"kway", 8, {0.27, 3.2, 40}, {0.93, 9.4, 95}},
    {"kway", 64, {0.6, 7.2, 88}, {1.1, 11, 110}},
    {"refine", 2, {0.1, 1.3, 15}, {0.69, 7, 70}},
    {"refine", 8, {0.1, 1.3, 15}, {0.8, 8, 81}},
    {"refine", 64, {0.11, 1.3, 15}, {0.85, 8.6, 86}},
};
// clang-format on

// The value at x of a function that is a power of x between two neighbours, and goes on as it ends.
template <class Values>
static double Between(const Values &xs, const Values &values, double x)
{
  size_t i = 0;

  while (i + 2 < xs.size() && x > xs[i + 1])
    i++;
  const double power = std::log(values[i + 1] / values[i]) / std::log(xs[i + 1] / xs[i]);
  return values[i] * std::pow(x / xs[i], power);
}

static Cost InTable(std::string_view way, double nparts, double size)
{
  std::vector<double> parts, seconds, bytes;

  for (const Row &row : table)
    if (row.way == way) {
      parts.push_back(row.parts);
      seconds.push_back(Between(sizes, row.seconds, size));
      bytes.push_back(1e6 * Between(sizes, row.megabytes, size));
    }
  return {Between(parts, seconds, nparts), Between(parts, bytes, nparts)};
}

// The work of a combination, or of refining a given partition before, in members of one run: half a member of two.
static constexpr double combination = 1.75;

// The work of a start.
static double WorkOf(const kapris::Options &options)
{
  constexpr double besides = 1.5; // what is done once, in runs

  return std::max(1, options.members) * (options.runs + besides) + combination * options.combinations;
}

static kapris::Options OptionsOf(Preset preset)
{
  Request request;

  request.preset = preset;
  return Resolve("partition", request).options;
}

// A pin costs more where there are more cells to move. As many pins as would cost the same with four for each cell.
static double SizeOf(const Hgr &hgr)
{
  const double npins = static_cast<double>(std::max<size_t>(1, hgr.netind.size()));

  return 2.0 * std::sqrt(std::clamp<double>(hgr.ncells, 1.0, npins) * npins);
}

Cost EstimateCost(const Request &request, const Plan &plan, const Hgr &hgr)
{
  static constexpr std::string_view names[] = {"fast", "default", "quality"};
  const kapris::Options &options = plan.options;
  const bool refines = plan.command == "refine";
  const kapris::Options usual = OptionsOf(refines ? Preset::DEFAULT : request.preset);
  const double nparts = std::max(2, request.nparts), size = SizeOf(hgr);
  // At the same time: in a process, and in all.
  const int together = std::max(1, std::min(options.threads, options.starts));
  const double all = std::min<double>(options.starts, 1.0 * together * std::max(1, plan.nranks));

  Cost cost = InTable(refines ? "refine" : names[static_cast<size_t>(request.preset)], nparts, size);
  if (!refines && options.scheme == KAPRIS_KWAY && usual.scheme != KAPRIS_KWAY) {
    const Cost kway = InTable("kway", nparts, size), recursive = InTable("default", nparts, size);
    cost = {cost.seconds * kway.seconds / recursive.seconds, cost.bytes * kway.bytes / recursive.bytes};
  }
  if (plan.command == "combine")
    cost.seconds *= combination * (options.combinations + std::ssize(request.parts)) / WorkOf(usual);
  else if (!refines)
    cost.seconds *= WorkOf(options) / WorkOf(usual);
  cost.seconds *= static_cast<double>(options.starts) / usual.starts / all;
  cost.bytes *= together;
  // A search goes on until its time is up.
  if (request.time_limit)
    cost.seconds = options.members > 0 ? *request.time_limit : std::min(cost.seconds, *request.time_limit);
  return cost;
}

// Two digits are more than an estimate is worth.
static std::string Roughly(double value)
{
  return value < 100.0 ? fmt::format("{:.2g}", std::max(value, 0.01)) : fmt::format("{:.0f}", value);
}

std::string FormatCost(const Cost &cost)
{
  return fmt::format("about {} s, {} MB", Roughly(cost.seconds), Roughly(cost.bytes / 1e6));
}

} // namespace kapris_cli
