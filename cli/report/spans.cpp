// cli/report/spans.cpp - how many parts the nets span, and how that goes with their size.
// SPDX-License-Identifier: MIT

#include "report/pictures.h"

#include <algorithm>
#include <fmt/core.h>
#include <map>

namespace kapris_report
{

static constexpr int most_single_spans = 12; // in the histogram; longer ones share bars by powers of two
static constexpr int most_span_rows = 200;

namespace
{

struct SpanCount {
  std::int64_t nets = 0, weight = 0, pins = 0;
};

// Nets whose pins lie in first to last parts.
struct SpanBin {
  int first, last;
  SpanCount count;
};

} // namespace

// A net counts a cell once, however often it names it, as a part does; a net without pins spans nothing.
static std::map<int, SpanCount> CountSpans(const Hgr &hgr, const std::vector<CutNet> &nets)
{
  std::map<int, SpanCount> counts;
  size_t next = 0;

  for (int net = 0; net < hgr.nnets; net++) {
    const size_t n = static_cast<size_t>(net);
    const int npins = hgr.netptr[n + 1] - hgr.netptr[n];
    int span = npins > 0 ? 1 : 0;
    if (next < nets.size() && nets[next].net == net)
      span = static_cast<int>(nets[next++].parts.size());
    SpanCount *count = &counts[span];
    count->nets++;
    count->weight += NetWeight(hgr, net);
    count->pins += npins;
  }
  return counts;
}

static std::vector<SpanBin> BinSpans(const std::map<int, SpanCount> &counts)
{
  std::vector<SpanBin> bins;

  const int longest = counts.empty() ? 0 : counts.rbegin()->first;
  for (int first = 2; first <= std::max(longest, 4);) {
    const int last = first <= most_single_spans ? first : 2 * first - 2;
    bins.push_back({first, last, {}});
    first = last + 1;
  }
  for (const auto &[span, count] : counts)
    for (SpanBin &bin : bins)
      if (span >= bin.first && span <= bin.last) {
        bin.count.nets += count.nets;
        bin.count.weight += count.weight;
      }
  return bins;
}

static std::string NameOf(const SpanBin &bin)
{
  return bin.first == bin.last ? fmt::format("{}", bin.first) : fmt::format("{}-{}", bin.first, bin.last);
}

// The same where there is little room.
static std::string ShortNameOf(const SpanBin &bin)
{
  return bin.first == bin.last ? fmt::format("{}", bin.first) : fmt::format("{}+", bin.first);
}

static void DrawHistogram(Svg *svg, const std::vector<SpanBin> &bins)
{
  std::int64_t highest = 1;

  for (const SpanBin &bin : bins)
    highest = std::max(highest, bin.count.nets);
  const Plot plot = {{0.0, 1.0, plot_left, plot_right},
                     RoundScale(0.0, static_cast<double>(highest), 160.0, 24.0, true)};
  const double step = (plot.x.to - plot.x.from) / static_cast<double>(bins.size());

  DrawYAxis(svg, plot, "cut nets");
  for (size_t i = 0; i < bins.size(); i++) {
    const double x = plot.x.from + step * static_cast<double>(i);
    const double y = Position(plot.y, static_cast<double>(bins[i].count.nets));
    DrawBox(svg, x + step * 0.1, y, step * 0.8, plot.y.from - y, "bar",
            fmt::format("{} parts: {} nets of weight {}", NameOf(bins[i]), bins[i].count.nets,
                        bins[i].count.weight));
    DrawText(svg, x + step / 2.0, plot.y.from + 14.0, ShortNameOf(bins[i]), "middle");
  }
  DrawXLine(svg, plot, "parts that a net spans");
}

// Columns by powers of two of the size, rows as in the histogram; a net without pins is left out.
static void DrawSizes(Svg *svg, const Hgr &hgr, const std::vector<CutNet> &nets,
                      const std::vector<SpanBin> &bins)
{
  std::vector<double> amounts;
  std::vector<std::string> rows = {"1"};
  size_t columns = 1, next = 0;

  for (size_t n = 0; n < static_cast<size_t>(hgr.nnets); n++)
    for (size_t size = static_cast<size_t>(hgr.netptr[n + 1] - hgr.netptr[n]); size >> columns > 0;)
      columns++;
  for (const SpanBin &bin : bins)
    rows.push_back(ShortNameOf(bin));
  amounts.assign(rows.size() * columns, 0.0);
  for (int net = 0; net < hgr.nnets; net++) {
    const size_t n = static_cast<size_t>(net), size = static_cast<size_t>(hgr.netptr[n + 1] - hgr.netptr[n]);
    size_t row = 0, column = 0;
    if (size == 0)
      continue;
    while (size >> (column + 1) > 0)
      column++;
    if (next < nets.size() && nets[next].net == net) {
      const int span = static_cast<int>(nets[next++].parts.size());
      while (row < bins.size() && span >= bins[row].first)
        row++;
    }
    amounts[(rows.size() - 1 - row) * columns + column] += 1.0;
  }

  const double top = 232.0, height = 15.0 * static_cast<double>(rows.size());
  const Plot plot = {{0.0, 1.0, plot_left, plot_right}, {0.0, 1.0, top, top + height}};
  const Heat heat = HeatOf(amounts);
  const double step = (plot.x.to - plot.x.from) / static_cast<double>(columns);
  DrawText(svg, 2.0, top - 13.0, "parts that a net spans", "start", "axis");
  DrawHeatGrid(svg, plot, amounts, columns, heat);
  DrawBox(svg, plot_left, top, plot_right - plot_left, height, "frame");
  for (size_t r = 0; r < rows.size(); r++)
    DrawText(svg, plot_left - 5.0, top + height - 15.0 * (static_cast<double>(r) + 0.5) + 3.5, rows[r],
             "end");
  for (size_t c = 0; c < columns; c += (columns + 9) / 10)
    DrawText(svg, plot_left + step * (static_cast<double>(c) + 0.5), top + height + 14.0,
             c == 0 ? "1" : ShortNumber(static_cast<double>(size_t{1} << c)) + "+", "middle");
  DrawText(svg, (plot_left + plot_right) / 2.0, top + height + 29.0, "pins of a net, from", "middle", "axis");
  DrawHeatLegend(svg, plot_left, top + height + 62.0, heat, "number of nets");
  svg->height = top + height + 80.0;
}

static Table SpanTable(const std::map<int, SpanCount> &counts)
{
  Table table = {"spans", {"parts", "nets", "weight", "average pins"}, {}, ""};

  for (const auto &[span, count] : counts) {
    if (table.rows.size() == static_cast<size_t>(most_span_rows)) {
      table.note = fmt::format("The first {} of {} numbers of parts.", most_span_rows, counts.size());
      break;
    }
    table.rows.push_back(
        {fmt::format("{}", span), fmt::format("{}", count.nets), fmt::format("{}", count.weight),
         fmt::format("{:.2f}", static_cast<double>(count.pins) / static_cast<double>(count.nets))});
  }
  return table;
}

std::string SpansHtml(const ReportData &data, const std::vector<CutNet> &nets, const Hgr &hgr)
{
  const std::map<int, SpanCount> counts = CountSpans(hgr, nets);
  const std::vector<SpanBin> bins = BinSpans(counts);
  const int longest = counts.empty() ? 0 : counts.rbegin()->first;
  Svg svg;

  DrawHistogram(&svg, bins);
  DrawSizes(&svg, hgr, nets, bins);
  const double whole = hgr.nnets > 0 ? 100.0 - 100.0 * static_cast<double>(nets.size()) / hgr.nnets : 100.0;
  return FigureHtml(
      {"net-spans", "Parts that nets span",
       fmt::format("{:.2f} % of the nets lie in one part. The widest net spans {} of {} parts.", whole,
                   longest, data.parts),
       fmt::format("A histogram of {} cut nets by the parts that they span, and a heat map of all nets by "
                   "size and span.",
                   nets.size()),
       svg, FoldedTable("Spans as numbers", SpanTable(counts))});
}

} // namespace kapris_report
