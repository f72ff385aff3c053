// cli/report/cuts.cpp - what pairs of parts share of the cut, as a heat map.
// SPDX-License-Identifier: MIT

#include "report/pictures.h"

#include <algorithm>
#include <utility>

namespace kapris_cli
{

static constexpr size_t most_cells = 64, most_matrix_rows = 32, most_pairs = 60, most_labelled = 12;

// For each pair of groups the weight of the nets between their parts, a net counting once for each pair of parts that it
// touches: for groups of one part that is CutMatrix without its diagonal. Below the sum over pairs of parts, since a net
// can span thousands.
static std::vector<double> PairWeights(const Hgr &hgr, const std::vector<CutNet> &nets, const Groups &groups)
{
  const size_t n = groups.ngroups;
  std::vector<double> matrix(n * n);
  std::vector<std::pair<size_t, double>> touched; // group, parts in it

  for (const CutNet &cut : nets) {
    const double weight = NetWeight(hgr, cut.net);
    touched.clear();
    for (const int p : cut.parts) { // rising
      const size_t g = GroupOf(groups, static_cast<size_t>(p));
      if (touched.empty() || touched.back().first != g)
        touched.emplace_back(g, 0.0);
      touched.back().second += 1.0;
    }
    for (const auto &[g, a] : touched)
      for (const auto &[h, b] : touched)
        matrix[g * n + h] += g == h ? weight * a * (a - 1.0) / 2.0 : weight * a * b;
  }
  return matrix;
}

static Table MatrixTable(const std::vector<std::vector<long long>> &matrix)
{
  Table table = {
      "cut-matrix-numbers", {"part"}, {}, "On the diagonal: the weight of the cut nets of the part."};

  for (size_t p = 0; p < matrix.size(); p++) {
    table.head.push_back(fmt::format("{}", p));
    table.rows.push_back({fmt::format("{}", p)});
    for (const long long weight : matrix[p])
      table.rows.back().push_back(fmt::format("{}", weight));
  }
  return table;
}

static Table PairTable(const std::vector<double> &matrix, const Groups &groups)
{
  const size_t n = groups.ngroups;
  Table table = {"cut-matrix-pairs", {"parts", "and parts", "weight"}, {}, ""};
  std::vector<size_t> pairs;

  for (size_t i = 0; i < matrix.size(); i++)
    if (i / n <= i % n && matrix[i] > 0.0)
      pairs.push_back(i);
  std::sort(pairs.begin(), pairs.end(),
            [&](size_t a, size_t b) { return matrix[a] != matrix[b] ? matrix[a] > matrix[b] : a < b; });
  if (pairs.size() > most_pairs) {
    table.note =
        fmt::format("The {} heaviest of {}; 'kapris eval --matrix' prints all.", most_pairs, pairs.size());
    pairs.resize(most_pairs);
  }
  for (const size_t i : pairs)
    table.rows.push_back(
        {NameOfGroup(groups, i / n), NameOfGroup(groups, i % n), fmt::format("{:.0f}", matrix[i])});
  return table;
}

static void DrawLabels(Svg *svg, const Plot &plot, const std::vector<double> &matrix, const Groups &groups,
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
      if (matrix[g * n + h] > 0.0)
        DrawText(svg, plot.x.from + step * (static_cast<double>(h) + 0.5),
                 plot.y.from + step * (static_cast<double>(g) + 0.5) + 3.5, ShortNumber(matrix[g * n + h]),
                 "middle", HeatClass(heat, matrix[g * n + h]) > 4 ? "on-dark" : "on-light");
}

std::string CutMatrixHtml(const ReportData &data, const std::vector<CutNet> &nets, const Hgr &hgr)
{
  const Groups groups = GroupParts(static_cast<size_t>(data.parts), most_cells);
  const bool grouped = groups.ngroups < groups.nparts;
  const std::vector<double> matrix = PairWeights(hgr, nets, groups);
  const Heat heat = HeatOf(matrix);
  const double top = 36.0, side = 340.0, left = (svg_width - side) / 2.0;
  const Plot plot = {{0.0, 1.0, left, left + side}, {0.0, 1.0, top, top + side}};
  Svg svg = {top + side + 52.0, ""};

  DrawText(&svg, left + side / 2.0, 14.0, grouped ? "part, first of each group" : "part", "middle", "axis");
  DrawHeatGrid(&svg, plot, matrix, groups.ngroups, heat);
  DrawBox(&svg, left, top, side, side, "frame");
  DrawLabels(&svg, plot, matrix, groups, heat);
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
       fmt::format("A heat map of {0} by {0} cells; the heaviest pair shares a weight of {1:.0f}.",
                   groups.ngroups, heat.most),
       svg, rest});
}

} // namespace kapris_cli
