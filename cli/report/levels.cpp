// cli/report/levels.cpp - down and up through the levels of the best start.
// SPDX-License-Identifier: MIT
//
// Three drawings above each other with the same steps from left to right: sizes, objective, imbalance.

#include "report/pictures.h"

#include <algorithm>
#include <fmt/core.h>
#include <limits>

namespace kapris_report
{

static constexpr size_t most_steps = 1500;

namespace
{

// The steps of one V-cycle, or of the polish.
struct Stage {
  size_t first, end;
  std::string name;
};

} // namespace

static std::vector<Stage> StagesOf(const std::vector<ReportLevel> &levels)
{
  std::vector<Stage> stages;

  for (size_t i = 0; i < levels.size(); i++) {
    const ReportLevel &level = levels[i];
    if (i == 0 || level.cycle != levels[i - 1].cycle || level.polish != levels[i - 1].polish)
      stages.push_back({i, i,
                        level.polish && level.cycle == 0 ? "polish"
                        : level.cycle > 0 ? fmt::format("{}{}", level.polish ? "P" : "V", level.cycle)
                                          : "trial"});
    stages.back().end = i + 1;
  }
  return stages;
}

static void DrawStages(Svg *svg, const Plot &plot, const std::vector<Stage> &stages, bool named)
{
  const double step = (plot.x.to - plot.x.from) / (plot.x.high - plot.x.low);

  for (size_t s = 0; s < stages.size(); s++) {
    const double x = Position(plot.x, static_cast<double>(stages[s].first)) - step / 2.0;
    const double width = step * static_cast<double>(stages[s].end - stages[s].first);
    if (s % 2 == 1)
      DrawBox(svg, x, plot.y.to, width, plot.y.from - plot.y.to, "shade");
    if (named && width > 5.5 * static_cast<double>(stages[s].name.size()))
      DrawText(svg, x + width / 2.0, plot.y.to - 4.0, stages[s].name, "middle");
  }
}

// value(level) is negative where there is none.
template <typename Value>
static void DrawSeries(Svg *svg, const Plot &plot, const std::vector<ReportLevel> &levels,
                       const std::vector<Stage> &stages, const std::string &style, Value value)
{
  std::string path;

  for (const Stage &stage : stages) {
    bool drawing = false;
    for (size_t i = stage.first; i < stage.end; i++) {
      const double amount = value(levels[i]);
      if (amount < 0.0)
        continue;
      path +=
          PathStep(drawing ? 'L' : 'M', Position(plot.x, static_cast<double>(i)), Position(plot.y, amount));
      // A point alone shows as a short line.
      if (!drawing)
        path += "h.6";
      drawing = true;
    }
  }
  DrawPath(svg, path, style);
}

static Table LevelTable(const std::vector<ReportLevel> &levels)
{
  Table table = {"levels-numbers", {"step", "stage", "cells", "nets", "pins", "value", "imbalance"}, {}, ""};

  for (const ReportLevel &level : levels) {
    const std::string cycle = level.cycle > 0 ? fmt::format(", V-cycle {}", level.cycle) : "";
    table.rows.push_back({fmt::format("{}", table.rows.size()),
                          (level.polish ? "polish: " : "") + level.phase + cycle,
                          fmt::format("{}", level.cells), fmt::format("{}", level.nets),
                          fmt::format("{}", level.pins), level.value ? fmt::format("{}", *level.value) : "",
                          level.value ? fmt::format("{:.4f}", level.imbalance) : ""});
  }
  return table;
}

static std::string DrawLevels(const ReportData &data, std::vector<ReportLevel> levels, std::string sentence)
{
  if (levels.size() > most_steps) {
    sentence += fmt::format(" The first {} of {} steps.", most_steps, levels.size());
    levels.resize(most_steps);
  }
  const std::vector<Stage> stages = StagesOf(levels);
  constexpr double none = std::numeric_limits<double>::infinity();
  double least = none, most = 1.0, low = none, high = 0.0, off = 0.0;
  Svg svg = {494.0, ""};

  for (const ReportLevel &level : levels) {
    for (const int size : {level.cells, level.nets, level.pins}) {
      least = std::min(least, std::max(1.0, static_cast<double>(size)));
      most = std::max(most, static_cast<double>(size));
    }
    if (level.value) {
      low = std::min(low, static_cast<double>(*level.value));
      high = std::max(high, static_cast<double>(*level.value));
      off = std::max(off, 100.0 * level.imbalance);
    }
  }
  const double last = static_cast<double>(levels.size()) - 0.5;
  const Scale x = {-0.5, last, plot_left, plot_right, false, true, 0.0};
  const Plot sizes = {x, LogScale(least, most, 180.0, 46.0)};
  const Plot values = {x, RoundScale(std::min(low, high), high, 322.0, 216.0, true)};
  const Plot balance = {x, RoundScale(0.0, std::max(off, 100.0 * data.epsilon), 452.0, 358.0)};

  DrawLegend(&svg, 2.0, 13.0, {{"line blue", "cells"}, {"line red", "nets"}, {"line green", "pins"}});
  for (const Plot *plot : {&sizes, &values, &balance})
    DrawStages(&svg, *plot, stages, plot == &sizes);
  DrawYAxis(&svg, sizes, "size");
  DrawYAxis(&svg, values, data.scheme == "kway" ? TrialMeasure(data) : "cut");
  DrawYAxis(&svg, balance, "imbalance", "%", 3);
  DrawSeries(&svg, sizes, levels, stages, "blue", [](const ReportLevel &level) { return level.cells; });
  DrawSeries(&svg, sizes, levels, stages, "red", [](const ReportLevel &level) { return level.nets; });
  DrawSeries(&svg, sizes, levels, stages, "green", [](const ReportLevel &level) { return level.pins; });
  DrawSeries(&svg, values, levels, stages, "blue",
             [](const ReportLevel &level) { return level.value ? static_cast<double>(*level.value) : -1.0; });
  DrawSeries(&svg, balance, levels, stages, "blue", [](const ReportLevel &level) {
    return level.value ? 100.0 * std::max(level.imbalance, 0.0) : -1.0;
  });
  const double limit = Position(balance.y, 100.0 * data.epsilon);
  DrawLine(&svg, plot_left, limit, plot_right, limit, "limit");
  DrawXAxis(&svg, balance, "step");
  return FigureHtml(
      {"levels", "Levels of the best start", sentence,
       fmt::format("Lines for the sizes of {} levels in the order of time, and for objective and imbalance "
                   "where a level has a partition.",
                   levels.size()),
       svg, FoldedTable("Levels as numbers", LevelTable(levels))});
}

std::string LevelsHtml(const ReportData &data)
{
  static constexpr char title[] = "Levels of the best start";

  if (!data.records)
    return MissingFigure("levels", title,
                         "This result has no records of its levels: write it with 'kapris partition "
                         "--json=FILE --records', or "
                         "with --report.");
  const std::vector<ReportLevel> &levels = data.records->levels;
  if (levels.empty() && data.members > 0)
    return MissingFigure(
        "levels", title,
        "A search has no single road through the levels: each member and each combination has "
        "its own. With --members 0 there is one to show.");
  if (levels.empty())
    return MissingFigure("levels", title,
                         "The partition came out of no trial, so that there are no levels to show.");
  std::string sentence =
      "The road of its best trial: down by coarsening, up with a partition, V-cycles (V1, V2, ...).";
  if (data.scheme == "recursive" && data.parts > 2 && data.command == "partition")
    sentence += " What is shown is the first bisection, and where there is one the polish of all parts (P1, "
                "P2, ...).";
  sentence += " The dashed line is the imbalance that was allowed for the final parts.";
  return DrawLevels(data, levels, sentence);
}

} // namespace kapris_report
