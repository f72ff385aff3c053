// cli/report/svg.h - drawings: marks, scales and axes; private to this folder.
// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

namespace kapris_report
{

// The marks of a drawing; its width is always the same, so that letters have one size on the page.
struct Svg {
  double height = 0.0;
  std::string body;
};

inline constexpr double svg_width = 440.0;

// Where values of one direction go. A logarithmic scale starts above 0.
struct Scale {
  double low = 0.0, high = 1.0; // values
  double from = 0.0, to = 1.0;  // places
  bool log = false;
  bool whole = false; // only whole numbers have a meaning
  double step = 0.0;  // between labels; 0: by the room there is
};

// A scale whose ends are round numbers outside the values.
Scale RoundScale(double low, double high, double from, double to, bool whole = false);
// The same for values above 0, with powers of ten as ends.
Scale LogScale(double low, double high, double from, double to);
double Position(const Scale &scale, double value);
// Round values for labels, about so many.
std::vector<double> Ticks(const Scale &scale, int count);

// As short as a label should be: 1200, 45k, 1.2M.
std::string ShortNumber(double value);

// The area of a drawing between its axes.
struct Plot {
  Scale x, y;
};

// Ticks with lines across and numbers, and what the direction means. unit stands behind the numbers.
void DrawYAxis(Svg *svg, const Plot &plot, const std::string &title, const std::string &unit = "",
               int nticks = 4);
void DrawXAxis(Svg *svg, const Plot &plot, const std::string &title);
// Only the line and the title, for labels of the caller's own.
void DrawXLine(Svg *svg, const Plot &plot, const std::string &title);

// Styles are classes of the page's style sheet. Sizes below 0 count as 0.
void DrawBox(Svg *svg, double x, double y, double width, double height, const std::string &style,
             const std::string &hint = "");
void DrawLine(Svg *svg, double x1, double y1, double x2, double y2, const std::string &style);
void DrawDot(Svg *svg, double x, double y, double radius, const std::string &style,
             const std::string &hint = "");
// anchor: start, middle or end.
void DrawText(Svg *svg, double x, double y, const std::string &text, const std::string &anchor,
              const std::string &style = "tick");
// The data of a path.
void DrawPath(Svg *svg, const std::string &data, const std::string &style);
// One step of such data: letter M or L, and a place.
std::string PathStep(char letter, double x, double y);

// One row of coloured samples with their meaning.
struct LegendEntry {
  std::string style, text;
};
void DrawLegend(Svg *svg, double x, double y, const std::vector<LegendEntry> &entries);

// Colours by amount: the eight classes h1 to h8, on a logarithmic scale when the amounts are far apart.
struct Heat {
  double least = 0.0, most = 0.0; // of the amounts above 0
  bool log = false;
};
Heat HeatOf(const std::vector<double> &amounts);
int HeatClass(const Heat &heat, double amount); // 0 for nothing, else 1 to 8
// Cells of a grid of equal boxes, by rows; the y scale runs as the rows do.
void DrawHeatGrid(Svg *svg, const Plot &plot, const std::vector<double> &amounts, size_t columns,
                  const Heat &heat);
void DrawHeatLegend(Svg *svg, double x, double y, const Heat &heat, const std::string &title);

} // namespace kapris_report
