// cli/report/bisections.cpp - the tree of the bisections that the parts came from.
// SPDX-License-Identifier: MIT

#include "report/pictures.h"

#include <algorithm>
#include <fmt/core.h>

namespace kapris_report
{

static constexpr size_t most_levels = 7, most_rows = 255;

// How many bisections each one lies below; they stand in the order of a walk through the tree.
static std::vector<size_t> DepthsOf(const std::vector<ReportBisection> &bisections)
{
  std::vector<size_t> depths;
  std::vector<int> ends; // of the parts of those that are open

  for (const ReportBisection &bisection : bisections) {
    while (!ends.empty() && bisection.first >= ends.back())
      ends.pop_back();
    depths.push_back(ends.size());
    ends.push_back(bisection.first + bisection.parts);
  }
  return depths;
}

static std::string PartsOf(const ReportBisection &bisection)
{
  return fmt::format("{}-{}", bisection.first, bisection.first + bisection.parts - 1);
}

// What the first side weighs too much, or too little, for the parts that it becomes, in percent of both sides.
static double OffBalance(const ReportData &data, const ReportBisection &bisection)
{
  const auto shares = [&](int first, int end) {
    double sum = 0.0;
    for (int p = first; p < end; p++)
      sum += ShareOf(data, static_cast<size_t>(p));
    return sum;
  };
  const int end = bisection.first + bisection.parts, middle = bisection.first + bisection.parts / 2;
  const double first = static_cast<double>(bisection.weights[0]);
  const double both = first + static_cast<double>(bisection.weights[1]);
  const double all = shares(bisection.first, end);
  return both > 0.0 && all > 0.0 ? 100.0 * (first / both - shares(bisection.first, middle) / all) : 0.0;
}

static Table BisectionTable(const ReportData &data, const std::vector<size_t> &depths)
{
  const std::vector<ReportBisection> &bisections = data.records->bisections;
  Table table = {"bisections-numbers",
                 {"parts", "level", "cut", "weights of the sides", "off balance", "seconds"},
                 {},
                 ""};

  for (size_t i = 0; i < std::min(bisections.size(), most_rows); i++) {
    const ReportBisection &one = bisections[i];
    table.rows.push_back({PartsOf(one), fmt::format("{}", depths[i]), fmt::format("{}", one.cut),
                          fmt::format("{} + {}", one.weights[0], one.weights[1]),
                          fmt::format("{:+.2f} %", OffBalance(data, one)),
                          fmt::format("{:.3f}", one.seconds)});
  }
  if (bisections.size() > most_rows)
    table.note = fmt::format("The first {} of {} bisections.", most_rows, bisections.size());
  return table;
}

// A row for each level; a box is as wide as its bisection has parts, and as dark as its cut is large.
static Svg DrawTree(const ReportData &data, const std::vector<size_t> &depths)
{
  constexpr double top = 10.0, height = 24.0, letter = 7.0;
  const std::vector<ReportBisection> &bisections = data.records->bisections;
  const Scale x = {0.0, static_cast<double>(data.parts), 12.0, plot_right};
  std::vector<double> cuts;
  Svg svg;
  size_t nlevels = 0;

  for (const ReportBisection &bisection : bisections)
    cuts.push_back(static_cast<double>(bisection.cut));
  const Heat heat = HeatOf(cuts);
  for (size_t i = 0; i < bisections.size(); i++) {
    if (depths[i] >= most_levels)
      continue;
    const ReportBisection &one = bisections[i];
    const double left = Position(x, one.first), width = Position(x, one.first + one.parts) - left;
    const double y = top + height * static_cast<double>(depths[i]);
    const int colour = HeatClass(heat, cuts[i]);
    const std::string cut = ShortNumber(cuts[i]);
    nlevels = std::max(nlevels, depths[i] + 1);
    DrawBox(&svg, left + 0.5, y, width - 1.0, height - 2.0, colour > 0 ? fmt::format("h{}", colour) : "shade",
            fmt::format("parts {}: cut {}, sides {} and {}, {:.3f} s", PartsOf(one), one.cut, one.weights[0],
                        one.weights[1], one.seconds));
    if (width > letter * static_cast<double>(cut.size() + 1))
      DrawText(&svg, left + width / 2.0, y + height / 2.0 + 3.0, cut, "middle",
               colour >= 5 ? "on-dark" : "on-light");
  }
  const double bottom = top + height * static_cast<double>(nlevels);
  DrawBox(&svg, x.from, top - 1.0, x.to - x.from, bottom - top, "frame");
  DrawHeatLegend(&svg, x.from, bottom + 34.0, heat, "cut of a bisection");
  svg.height = bottom + 52.0;
  return svg;
}

std::string BisectionsHtml(const ReportData &data)
{
  static constexpr char title[] = "Bisections";

  // Two parts come of one bisection, which the rest of the page is about.
  if (data.parts < 3 || data.scheme != "recursive" || data.command != "partition")
    return "";
  if (!data.records || data.records->bisections.empty())
    return MissingFigure("bisections", title, "This result has no records of its bisections.");
  const std::vector<ReportBisection> &bisections = data.records->bisections;
  const std::vector<size_t> depths = DepthsOf(bisections);
  double seconds = 0.0;
  for (const ReportBisection &bisection : bisections)
    seconds += bisection.seconds;
  return FigureHtml(
      {"bisections", title,
       fmt::format("The best start split the cells {} times, from all parts above to two below; the "
                   "first took {:.0f} % of the {:.2f} seconds. Boxes are as wide as they have parts.",
                   bisections.size(), seconds > 0.0 ? 100.0 * bisections.front().seconds / seconds : 0.0,
                   seconds),
       fmt::format("A tree of {} bisections, one box each, with its cut.", bisections.size()),
       DrawTree(data, depths), FoldedTable("Bisections as numbers", BisectionTable(data, depths))});
}

} // namespace kapris_report
