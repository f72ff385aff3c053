// cli/report/cuts.cpp - what pairs of parts share of the cut, as a heat map.
// SPDX-License-Identifier: MIT

#include "measure/sums.h"
#include "report/pictures.h"

#include <algorithm>
#include <fmt/core.h>
#include <utility>

namespace kapris_report
{

static constexpr size_t most_cells = 64, most_matrix_rows = 32, most_pairs = 60, most_labelled = 12;

// For each pair of groups the weight of the nets between their parts, a net counting once for each pair of parts that
// it touches: for groups of one part that is CutMatrix without its diagonal. Below the sum over pairs of parts, since
// a net can span thousands. Where 64 bits end, so do the sums.
static std::vector<std::int64_t> PairWeights(const Hgr &hgr, const std::vector<CutNet> &nets,
                                             const Groups &groups)
{
  const size_t n = groups.ngroups;
  std::vector<std::int64_t> matrix(n * n);
  std::vector<std::pair<size_t, std::int64_t>> touched; // group, parts in it

  for (const CutNet &cut : nets) {
    touched.clear();
    for (const int p : cut.parts) { // rising
      const size_t g = GroupOf(groups, static_cast<size_t>(p));
      if (touched.empty() || touched.back().first != g)
        touched.emplace_back(g, 0);
      touched.back().second++;
    }
    for (const auto &[g, a] : touched)
      for (const auto &[h, b] : touched)
        if (!AddProduct(&matrix[g * n + h], NetWeight(hgr, cut.net), g == h ? a * (a - 1) / 2 : a * b))
          matrix[g * n + h] = INT64_MAX;
  }
  return matrix;
}

static std::string FormatSum(std::int64_t sum)
{
  return fmt::format("{}{}", sum == INT64_MAX ? "at least " : "", sum);
}

static Table MatrixTable(const std::vector<std::vector<std::int64_t>> &matrix)
{
  Table table = {
      "cut-matrix-numbers", {"part"}, {}, "On the diagonal: the weight of the cut nets of the part."};

  for (size_t p = 0; p < matrix.size(); p++) {
    table.head.push_back(fmt::format("{}", p));
    table.rows.push_back({fmt::format("{}", p)});
    for (const std::int64_t weight : matrix[p])
      table.rows.back().push_back(fmt::format("{}", weight));
  }
  return table;
}

static Table PairTable(const std::vector<std::int64_t> &matrix, const Groups &groups)
{
  const size_t n = groups.ngroups;
  Table table = {"cut-matrix-pairs", {"parts", "and parts", "weight"}, {}, ""};
  std::vector<size_t> pairs;

  for (size_t i = 0; i < matrix.size(); i++)
    if (i / n <= i % n && matrix[i] > 0)
      pairs.push_back(i);
  std::sort(pairs.begin(), pairs.end(),
            [&](size_t a, size_t b) { return matrix[a] != matrix[b] ? matrix[a] > matrix[b] : a < b; });
  if (pairs.size() > most_pairs) {
    table.note =
        fmt::format("The {} heaviest of {}; 'kapris eval --matrix' prints all.", most_pairs, pairs.size());
    pairs.resize(most_pairs);
  }
  for (const size_t i : pairs)
    table.rows.push_back({NameOfGroup(groups, i / n), NameOfGroup(groups, i % n), FormatSum(matrix[i])});
  return table;
}

static void DrawLabels(Svg *svg, const Plot &plot, const std::vector<double> &amounts, const Groups &groups,
                       const Heat &heat)
{
  const size_t n = groups.ngroups, stride = LabelStride(groups);
  const double step = (plot.x.to - plot.x.from) / static_cast<double>(n);

  for (size_t g = 0; g < n; g += stride) {
    const double at = step * (static_cast<double>(g) + 0.5);
    const std::string name = fmt::format("{}", FirstOf(groups, g));
    DrawText(svg, plot.x.from + at, plot.y.from - 5.0, name, "middle");
    DrawText(svg, plot.x.from - 5.0, plot.y.from + at + 3.5, name, "end");
  }
  if (n > most_labelled)
    return;
  for (size_t g = 0; g < n; g++)
    for (size_t h = 0; h < n; h++)
      if (amounts[g * n + h] > 0.0)
        DrawText(svg, plot.x.from + step * (static_cast<double>(h) + 0.5),
                 plot.y.from + step * (static_cast<double>(g) + 0.5) + 3.5, ShortNumber(amounts[g * n + h]),
                 "middle", HeatClass(heat, amounts[g * n + h]) > 4 ? "on-dark" : "on-light");
}

std::string CutMatrixHtml(const ReportData &data, const std::vector<CutNet> &nets, const Hgr &hgr)
{
  const Groups groups = GroupParts(static_cast<size_t>(data.parts), most_cells);
  const bool grouped = groups.ngroups < groups.nparts;
  const std::vector<std::int64_t> matrix = PairWeights(hgr, nets, groups);
  const std::vector<double> amounts(matrix.begin(), matrix.end());
  const Heat heat = HeatOf(amounts);
  const double top = 36.0, side = 340.0, left = (svg_width - side) / 2.0;
  const Plot plot = {{0.0, 1.0, left, left + side}, {0.0, 1.0, top, top + side}};
  Svg svg = {top + side + 52.0, ""};

  DrawText(&svg, left + side / 2.0, 14.0, grouped ? "part, first of each group" : "part", "middle", "axis");
  DrawHeatGrid(&svg, plot, amounts, groups.ngroups, heat);
  DrawBox(&svg, left, top, side, side, "frame");
  DrawLabels(&svg, plot, amounts, groups, heat);
  DrawHeatLegend(&svg, left, top + side + 32.0, heat, "weight of cut nets between two parts");
  const std::string rest =
      groups.nparts <= most_matrix_rows
          ? FoldedTable("Matrix as numbers", MatrixTable(CutMatrix(hgr, nets, data.parts)))
          : FoldedTable("Heaviest pairs", PairTable(matrix, groups));
  return FigureHtml(
      {"cut-matrix", "Cut between parts",
       fmt::format("{} of {} nets are cut. A net counts for each pair of parts that it touches.{}",
                   nets.size(), hgr.nnets,
                   grouped ? fmt::format(" {} parts, in {} groups.", groups.nparts, groups.ngroups) : ""),
       fmt::format("A heat map of {0} by {0} cells; the heaviest pair shares a weight of {1}.",
                   groups.ngroups, FormatSum(*std::max_element(matrix.begin(), matrix.end()))),
       svg, rest});
}

} // namespace kapris_report
