// cli/report/weights.cpp - part weights against targets and limits.
// SPDX-License-Identifier: MIT
//
// Above, weights from 0, where a few percent hardly show; below, how far they are from their targets.

#include "report/escape.h"
#include "report/pictures.h"

#include <algorithm>
#include <cmath>
#include <fmt/core.h>
#include <numeric>

namespace kapris_report
{

static constexpr size_t most_bars = 64, most_rows = 256, most_extremes = 20;

namespace
{

struct PartFigures {
  double weight, target, limit, fixed;
  bool over;

  // Over the target, less 1.
  double Deviation(double value) const
  {
    return target > 0.0 ? value / target - 1.0 : 0.0;
  }
};

// One mark: the extremes and the average of its parts.
struct Bar {
  PartFigures average = {0.0, 0.0, 0.0, 0.0, false};
  double least = 0.0, most = 0.0;         // weights
  double least_off = 0.0, most_off = 0.0; // deviations from the target
  double limit_off = 0.0;                 // the least of the limits' deviations
  bool over = false;
  std::string name, hint;
};

} // namespace

static std::vector<PartFigures> AllFigures(const ReportData &data)
{
  const double total = static_cast<double>(TotalWeight(data));
  const bool fixed = data.records && !data.records->fixed_weights.empty();
  std::vector<PartFigures> figures;

  for (size_t p = 0; p < data.weights.size(); p++)
    figures.push_back({static_cast<double>(data.weights[p]), ShareOf(data, p) * total,
                       static_cast<double>(data.limits[p]),
                       fixed ? static_cast<double>(data.records->fixed_weights[p]) : 0.0,
                       data.weights[p] > data.limits[p]});
  return figures;
}

// With one digit behind the point. Equal shares are exact, others are doubles themselves.
static std::string FormatTarget(const ReportData &data, const PartFigures &part)
{
  const std::int64_t total = TotalWeight(data), parts = data.parts;
  const std::int64_t tenths = (20 * (total % parts) + parts) / (2 * parts);

  if (!data.shares.empty())
    return fmt::format("{:.1f}", part.target);
  return fmt::format("{}.{}", total / parts + tenths / 10, tenths % 10);
}

static std::string Hint(const ReportData &data, const Bar &bar, size_t first, size_t end)
{
  if (end - first == 1)
    return fmt::format("part {}: weight {}, target {}, limit {}", bar.name, data.weights[first],
                       FormatTarget(data, bar.average), data.limits[first]);
  return fmt::format("parts {}, on average: weight {:.6g}, target {:.6g}, limit {:.6g}", bar.name,
                     bar.average.weight, bar.average.target, bar.average.limit);
}

static std::vector<Bar> BarsOf(const ReportData &data, const std::vector<PartFigures> &parts,
                               const Groups &groups)
{
  std::vector<Bar> bars(groups.ngroups);

  for (size_t g = 0; g < groups.ngroups; g++) {
    const size_t first = FirstOf(groups, g), end = FirstOf(groups, g + 1);
    const double count = static_cast<double>(end - first);
    Bar *bar = &bars[g];
    bar->name = NameOfGroup(groups, g);
    for (size_t p = first; p < end; p++) {
      const PartFigures &part = parts[p];
      const double off = part.Deviation(part.weight), limit_off = part.Deviation(part.limit);
      bar->average.weight += part.weight / count;
      bar->average.target += part.target / count;
      bar->average.limit += part.limit / count;
      bar->average.fixed += part.fixed / count;
      bar->least = p == first ? part.weight : std::min(bar->least, part.weight);
      bar->most = std::max(bar->most, part.weight);
      bar->least_off = p == first ? off : std::min(bar->least_off, off);
      bar->most_off = p == first ? off : std::max(bar->most_off, off);
      bar->limit_off = p == first ? limit_off : std::min(bar->limit_off, limit_off);
      bar->over = bar->over || part.over;
    }
    bar->hint = Hint(data, *bar, first, end);
  }
  return bars;
}

// Labels of at most so many bars, so that they do not run into each other.
static void DrawNames(Svg *svg, const Plot &plot, const std::vector<Bar> &bars, size_t stride)
{
  const double step = (plot.x.to - plot.x.from) / static_cast<double>(bars.size());

  for (size_t g = 0; g < bars.size(); g += stride) {
    const double x = plot.x.from + step * (static_cast<double>(g) + 0.5);
    DrawText(svg, x, plot.y.from + 14.0, bars[g].name.substr(0, bars[g].name.find('-')), "middle");
  }
}

static void DrawWeights(Svg *svg, const std::vector<Bar> &bars, const std::string &xtitle, size_t stride)
{
  double highest = 0.0;

  for (const Bar &bar : bars) // a limit far away must not squeeze the bars
    highest = std::max(
        {highest, bar.most, bar.average.target, std::min(bar.average.limit, 1.6 * bar.average.target)});
  const Plot plot = {{0.0, 1.0, plot_left, plot_right}, RoundScale(0.0, highest, 182.0, 48.0, true)};
  const double step = (plot.x.to - plot.x.from) / static_cast<double>(bars.size());
  const double gap = std::min(6.0, step * 0.12);

  DrawYAxis(svg, plot, "weight");
  for (size_t g = 0; g < bars.size(); g++) {
    const Bar &bar = bars[g];
    const double x = plot.x.from + step * static_cast<double>(g);
    const auto y = [&](double value) { return Position(plot.y, value); };
    DrawBox(svg, x + gap, y(bar.average.weight), step - 2 * gap, y(0.0) - y(bar.average.weight),
            bar.over ? "bar over" : "bar", bar.hint);
    if (bar.average.fixed > 0.0)
      DrawBox(svg, x + gap, y(bar.average.fixed), step - 2 * gap, y(0.0) - y(bar.average.fixed), "hatch");
    DrawLine(svg, x, y(bar.average.target), x + step, y(bar.average.target), "target");
    if (bar.average.limit <= plot.y.high)
      DrawLine(svg, x, y(bar.average.limit), x + step, y(bar.average.limit), "limit");
  }
  DrawXLine(svg, plot, xtitle);
  DrawNames(svg, plot, bars, stride);
}

static void DrawDeviations(Svg *svg, const std::vector<Bar> &bars, const std::string &xtitle, size_t stride)
{
  double lowest = 0.0, highest = 0.0;

  for (const Bar &bar : bars) {
    lowest = std::min(lowest, bar.least_off);
    highest = std::max(highest, bar.most_off);
  }
  for (const Bar &bar : bars)
    highest = std::max(highest, std::min(bar.limit_off, std::max(1.0, 1.2 * highest)));
  const Plot plot = {{0.0, 1.0, plot_left, plot_right},
                     RoundScale(100.0 * lowest, 100.0 * highest, 376.0, 250.0)};
  const double step = (plot.x.to - plot.x.from) / static_cast<double>(bars.size());
  const double gap = std::min(6.0, step * 0.12);

  DrawYAxis(svg, plot, "away from the target", "%");
  for (size_t g = 0; g < bars.size(); g++) {
    const Bar &bar = bars[g];
    const double x = plot.x.from + step * static_cast<double>(g);
    const auto y = [&](double ratio) { return Position(plot.y, 100.0 * ratio); };
    const double top = y(std::max(bar.most_off, 0.0)), bottom = y(std::min(bar.least_off, 0.0));
    DrawBox(svg, x + gap, top, step - 2 * gap, std::max(bottom - top, 1.0), bar.over ? "bar over" : "bar",
            fmt::format("part {}: {:+.3f}% of the target", bar.name, 100.0 * bar.most_off));
    if (100.0 * bar.limit_off <= plot.y.high * (1.0 + 1e-9))
      DrawLine(svg, x, y(bar.limit_off), x + step, y(bar.limit_off), "limit");
  }
  DrawLine(svg, plot.x.from, Position(plot.y, 0.0), plot.x.to, Position(plot.y, 0.0), "target");
  DrawXLine(svg, plot, xtitle);
  DrawNames(svg, plot, bars, stride);
}

static Table WeightTable(const ReportData &data, const std::vector<PartFigures> &parts)
{
  const bool fixed = data.records && !data.records->fixed_weights.empty();
  Table table = {"weights", {"part", "weight", "target", "limit", "away from target"}, {}, ""};
  std::vector<size_t> rows(parts.size());

  if (fixed)
    table.head.push_back("fixed weight");
  std::iota(rows.begin(), rows.end(), 0u);
  if (rows.size() > most_rows) {
    const auto fuller = [&](size_t a, size_t b) {
      const double x = parts[a].Deviation(parts[a].weight), y = parts[b].Deviation(parts[b].weight);
      return x != y ? x > y : a < b;
    };
    std::sort(rows.begin(), rows.end(), fuller);
    rows.erase(rows.begin() + most_extremes, rows.end() - most_extremes);
    table.note =
        fmt::format("The {0} fullest and the {0} emptiest of {1} parts; the JSON result has all of them.",
                    most_extremes, parts.size());
  }
  for (const size_t p : rows) {
    table.rows.push_back({fmt::format("{}", p), fmt::format("{}", data.weights[p]),
                          FormatTarget(data, parts[p]), fmt::format("{}", data.limits[p]),
                          fmt::format("{:+.3f} %", 100.0 * parts[p].Deviation(parts[p].weight))});
    if (fixed)
      table.rows.back().push_back(fmt::format("{}", data.records->fixed_weights[p]));
  }
  return table;
}

std::string WeightsHtml(const ReportData &data)
{
  const std::vector<PartFigures> parts = AllFigures(data);
  const Groups groups = GroupParts(parts.size(), most_bars);
  const std::vector<Bar> bars = BarsOf(data, parts, groups);
  const bool fixed = data.records && !data.records->fixed_weights.empty(),
             grouped = groups.ngroups < parts.size();
  const std::string xtitle = grouped ? "first part of each group" : "part";
  const auto [least, most] = std::minmax_element(data.weights.begin(), data.weights.end());
  Svg svg = {412.0, "<defs><pattern id=\"hatch\" width=\"5\" height=\"5\" patternUnits=\"userSpaceOnUse\">"
                    "<rect class=\"bar\" width=\"5\" height=\"5\"/>"
                    "<path d=\"M0 5L5 0\" style=\"stroke:var(--card);stroke-width:1.4\"/></pattern></defs>"};
  std::vector<LegendEntry> legend = {
      {"bar", grouped ? "weight, average" : "weight"}, {"line target", "target"}, {"line limit", "limit"}};

  if (fixed)
    legend.push_back({"hatch", "fixed"});
  DrawLegend(&svg, 2.0, 13.0, legend);
  DrawWeights(&svg, bars, xtitle, LabelStride(groups));
  DrawDeviations(&svg, bars, xtitle, LabelStride(groups));
  std::string sentence = fmt::format("The lightest part weighs {}, the heaviest {}.", *least, *most);
  if (grouped)
    sentence += fmt::format(" {} parts, shown in {} groups: averages above, the range of each group below.",
                            parts.size(), groups.ngroups);
  if (!data.fixed.path.empty() && !fixed)
    sentence += " The weight of fixed cells is not in this result: run with --records.";
  return FigureHtml(
      {"part-weights", "Part weights", sentence,
       fmt::format("Bars for the weights of {} parts from {} to {}, with marks for target and limit.",
                   parts.size(), *least, *most),
       svg, FoldedTable("Weights as numbers", WeightTable(data, parts))});
}

} // namespace kapris_report
