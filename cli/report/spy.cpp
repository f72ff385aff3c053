// cli/report/spy.cpp - where the pins are, before and after cells and nets are put in the order of the parts.
// SPDX-License-Identifier: MIT
//
// A column is a cell, a row a net.

#include "report/order.h"
#include "report/pictures.h"
#include "report/png.h"

#include <algorithm>
#include <cmath>
#include <fmt/core.h>

namespace kapris_report
{

static constexpr size_t most_pins = 50 * 1000 * 1000, most_side = 400, most_lines = 24;
static constexpr int levels = 15; // of darkness
static constexpr double size = 400.0, left = 20.0, top = 8.0;

// Pins per pixel as darkness; a single pin must show, and a few crowded pixels must not hide the others.
static std::vector<std::uint8_t> Darken(const std::vector<int> &counts)
{
  const int most = *std::max_element(counts.begin(), counts.end());
  std::vector<std::uint8_t> pixels;

  for (const int count : counts) {
    const double part = most > 1 ? std::log(static_cast<double>(std::max(count, 1))) / std::log(most) : 1.0;
    pixels.push_back(static_cast<std::uint8_t>(count > 0 ? 4 + std::lround(part * (levels - 4)) : 0));
  }
  return pixels;
}

// order: NULL for that of the input.
static std::string Pixels(const Hgr &hgr, const Order *order, size_t side)
{
  std::vector<int> counts(side * side);

  for (size_t n = 0; n < static_cast<size_t>(hgr.nnets); n++) {
    const size_t net = order != nullptr ? static_cast<size_t>(order->nets[n]) : n;
    const size_t row = net * side / static_cast<size_t>(hgr.nnets);
    for (int i = hgr.netptr[n]; i < hgr.netptr[n + 1]; i++) {
      const size_t cell = static_cast<size_t>(hgr.netind[static_cast<size_t>(i)]);
      const size_t place = order != nullptr ? static_cast<size_t>(order->cells[cell]) : cell;
      counts[row * side + place * side / static_cast<size_t>(hgr.ncells)]++;
    }
  }
  return PixelUri(Darken(counts), side);
}

static Svg DrawPixels(const Hgr &hgr, const std::string &uri)
{
  Svg svg = {top + size + 26.0, ""};

  svg.body = fmt::format("<image x=\"{0:g}\" y=\"{1:g}\" width=\"{2:g}\" height=\"{2:g}\" "
                         "preserveAspectRatio=\"none\" href=\"{3}\"/>",
                         left, top, size, uri);
  DrawBox(&svg, left, top, size, size, "frame");
  DrawText(&svg, left + size / 2.0, top + size + 17.0,
           fmt::format("{} cells across, {} nets down", hgr.ncells, hgr.nnets), "middle", "axis");
  return svg;
}

// Lines between the blocks, while they leave room for what they surround, and one above the cut nets.
static void DrawBlocks(Svg *svg, const Hgr &hgr, const Order &order)
{
  const size_t nparts = order.cellends.size();

  for (size_t p = nparts > most_lines ? nparts - 1 : 0; p < nparts; p++) {
    const double x = left + size * static_cast<double>(order.cellends[p]) / hgr.ncells;
    const double y = top + size * static_cast<double>(order.netends[p]) / hgr.nnets;
    if (p + 1 < nparts)
      DrawLine(svg, x, top, x, top + size, "cut");
    DrawLine(svg, left, y, left + size, y, "cut");
  }
}

std::string SpyHtml(const ReportData &data, const Hgr &hgr, const std::vector<int> &part)
{
  static constexpr char before[] = "Pins in the order of the input",
                        after[] = "Pins in the order of the parts";

  if (hgr.netind.empty() || hgr.netind.size() > most_pins)
    return MissingFigure("spy-before", before,
                         hgr.netind.empty() ? "There are no pins."
                                            : fmt::format("Drawn for up to {} pins.", most_pins));
  const size_t side = std::min(most_side, static_cast<size_t>(std::max(hgr.ncells, hgr.nnets)));
  const Order order = OrderByPart(hgr, part, data.parts);
  Svg ordered = DrawPixels(hgr, Pixels(hgr, &order, side));
  DrawBlocks(&ordered, hgr, order);
  return FigureHtml(
             {"spy-before", before,
              "A column is a cell and a row a net; the stronger the colour, the more pins.",
              fmt::format(
                  "A picture of {} pins: where the nets, from top to bottom, have their cells, from left "
                  "to right.",
                  hgr.netind.size()),
              DrawPixels(hgr, Pixels(hgr, nullptr, side)), ""}) +
         FigureHtml(
             {"spy-after", after,
              "The same with the cells part by part. Nets in one part form its block; the cut nets are at "
              "the "
              "bottom.",
              fmt::format("The same picture with cells and nets in the order of the {} parts: blocks on the "
                          "diagonal, and the cut nets in a border at the bottom.",
                          data.parts),
              ordered, ""});
}

} // namespace kapris_report
