// cli/report/svg.cpp - drawings: scales, axes and marks.
// SPDX-License-Identifier: MIT

#include "report/svg.h"

#include "report/escape.h"

#include <algorithm>
#include <cmath>
#include <fmt/core.h>

namespace kapris_report
{

// ----------------------------------------------------------------------------------------------------------
// Scales

// 1, 2 or 5 times a power of ten, at least step.
static double RoundStep(double step)
{
  const double power = std::pow(10.0, std::floor(std::log10(step)));

  for (const double factor : {1.0, 2.0, 5.0})
    if (factor * power >= step * (1.0 - 1e-9))
      return factor * power;
  return 10.0 * power;
}

Scale RoundScale(double low, double high, double from, double to, bool whole)
{
  constexpr int steps = 5;

  // Closer ends than that leave no room for steps that doubles can count.
  const double closest = 1e-9 * std::max(std::fabs(low), std::fabs(high));

  if (!(high > low))
    high = low + std::max(1.0, std::fabs(low) * 0.1);
  high = std::max(high, low + closest);
  const double step = std::max(RoundStep((high - low) / steps), whole ? 1.0 : 0.0);
  return {std::floor(low / step + 1e-9) * step,
          std::ceil(high / step - 1e-9) * step,
          from,
          to,
          false,
          whole,
          step};
}

Scale LogScale(double low, double high, double from, double to)
{
  low = std::max(low, 1e-12);
  high = std::max(high, low);
  const double first = std::floor(std::log10(low) + 1e-9), last = std::ceil(std::log10(high) - 1e-9);
  return {std::pow(10.0, first), std::pow(10.0, std::max(last, first + 1.0)), from, to, true, true, 0.0};
}

double Position(const Scale &scale, double value)
{
  const double low = scale.log ? std::log10(scale.low) : scale.low;
  const double high = scale.log ? std::log10(scale.high) : scale.high;
  const double at = scale.log ? std::log10(std::max(value, scale.low)) : value;

  return scale.from + (std::clamp(at, low, high) - low) / (high - low) * (scale.to - scale.from);
}

std::vector<double> Ticks(const Scale &scale, int count)
{
  std::vector<double> ticks;

  if (scale.log) {
    const double decades = std::log10(scale.high / scale.low);
    const double stride = std::max(1.0, std::ceil(decades / count));
    for (double at = 0.0; at <= decades + 1e-9; at += stride)
      ticks.push_back(scale.low * std::pow(10.0, at));
    return ticks;
  }
  const double step = scale.step > 0.0
                          ? scale.step
                          : std::max(RoundStep((scale.high - scale.low) / count), scale.whole ? 1.0 : 0.0);
  for (double at = std::ceil(scale.low / step - 1e-9); at * step <= scale.high + step * 1e-9; at += 1.0)
    ticks.push_back(at == 0.0 ? 0.0 : at * step);
  return ticks;
}

std::string ShortNumber(double value)
{
  static constexpr struct {
    double size;
    const char *letter;
  } units[] = {{1e18, "E"}, {1e15, "P"}, {1e12, "T"}, {1e9, "G"}, {1e6, "M"}, {1e4, "k"}};

  for (const auto &unit : units)
    if (std::fabs(value) >= unit.size) {
      const double scaled = value / (unit.size == 1e4 ? 1e3 : unit.size);
      return fmt::format("{:.6g}{}", std::round(scaled * 1000.0) / 1000.0, unit.letter);
    }
  return fmt::format("{:.6g}", value);
}

// ----------------------------------------------------------------------------------------------------------
// Marks

// Tenths of a unit are finer than any screen shows here.
static std::string Number(double value)
{
  return fmt::format("{:g}", std::round(value * 10.0) / 10.0);
}

std::string PathStep(char letter, double x, double y)
{
  return fmt::format("{}{} {}", letter, Number(x), Number(y));
}

static std::string Hinted(const std::string &name, const std::string &hint)
{
  if (hint.empty())
    return "/>";
  return "><title>" + EscapeHtml(hint) + "</title></" + name + ">";
}

void DrawBox(Svg *svg, double x, double y, double width, double height, const std::string &style,
             const std::string &hint)
{
  svg->body += fmt::format("<rect class=\"{}\" x=\"{}\" y=\"{}\" width=\"{}\" height=\"{}\"{}", style,
                           Number(x), Number(y), Number(std::max(width, 0.0)), Number(std::max(height, 0.0)),
                           Hinted("rect", hint));
}

void DrawLine(Svg *svg, double x1, double y1, double x2, double y2, const std::string &style)
{
  svg->body +=
      fmt::format("<path class=\"{}\" d=\"{}{}\"/>", style, PathStep('M', x1, y1), PathStep('L', x2, y2));
}

void DrawDot(Svg *svg, double x, double y, double radius, const std::string &style, const std::string &hint)
{
  svg->body += fmt::format("<circle class=\"{}\" cx=\"{}\" cy=\"{}\" r=\"{}\"{}", style, Number(x), Number(y),
                           Number(radius), Hinted("circle", hint));
}

void DrawText(Svg *svg, double x, double y, const std::string &text, const std::string &anchor,
              const std::string &style)
{
  svg->body += fmt::format("<text class=\"{}\" x=\"{}\" y=\"{}\" text-anchor=\"{}\">{}</text>", style,
                           Number(x), Number(y), anchor, EscapeHtml(text));
}

void DrawPath(Svg *svg, const std::string &data, const std::string &style)
{
  if (!data.empty())
    svg->body += fmt::format("<path class=\"{}\" d=\"{}\"/>", style, data);
}

// ----------------------------------------------------------------------------------------------------------
// Axes

void DrawYAxis(Svg *svg, const Plot &plot, const std::string &title, const std::string &unit, int nticks)
{
  const double top = std::min(plot.y.from, plot.y.to);

  for (const double tick : Ticks(plot.y, nticks)) {
    const double y = Position(plot.y, tick);
    DrawLine(svg, plot.x.from, y, plot.x.to, y, "grid");
    DrawText(svg, plot.x.from - 5.0, y + 3.5, ShortNumber(tick) + unit, "end");
  }
  DrawText(svg, 2.0, top - 13.0, title, "start", "axis");
}

void DrawXLine(Svg *svg, const Plot &plot, const std::string &title)
{
  const double bottom = std::max(plot.y.from, plot.y.to);

  DrawLine(svg, plot.x.from, bottom, plot.x.to, bottom, "rule");
  DrawText(svg, (plot.x.from + plot.x.to) / 2.0, bottom + 29.0, title, "middle", "axis");
}

void DrawXAxis(Svg *svg, const Plot &plot, const std::string &title)
{
  const double bottom = std::max(plot.y.from, plot.y.to);

  DrawXLine(svg, plot, title);
  for (const double tick : Ticks(plot.x, 6)) {
    const double x = Position(plot.x, tick);
    DrawLine(svg, x, bottom, x, bottom + 3.0, "rule");
    DrawText(svg, x, bottom + 14.0, ShortNumber(tick), "middle");
  }
}

void DrawLegend(Svg *svg, double x, double y, const std::vector<LegendEntry> &entries)
{
  constexpr double letter = 6.5, sample = 12.0, gap = 12.0;

  for (const LegendEntry &entry : entries) {
    if (entry.style.starts_with("dot"))
      DrawDot(svg, x + 5.0, y - 4.0, 3.5, entry.style.substr(4));
    else if (entry.style.starts_with("line"))
      DrawLine(svg, x, y - 4.0, x + sample - 2.0, y - 4.0, entry.style.substr(5));
    else
      DrawBox(svg, x, y - 8.5, sample - 2.0, 9.0, entry.style);
    DrawText(svg, x + sample + 2.0, y, entry.text, "start");
    x += sample + gap + letter * static_cast<double>(entry.text.size());
  }
}

// ----------------------------------------------------------------------------------------------------------
// Colours by amount

static constexpr int heat_classes = 8;

Heat HeatOf(const std::vector<double> &amounts)
{
  constexpr double far_apart = 30.0;
  Heat heat;

  for (const double amount : amounts)
    if (amount > 0.0) {
      heat.least = heat.least > 0.0 ? std::min(heat.least, amount) : amount;
      heat.most = std::max(heat.most, amount);
    }
  heat.log = heat.most > far_apart * heat.least;
  return heat;
}

// The smallest amount of a class; classes run from the least amount, or from 0 if they are of equal width.
static double HeatBound(const Heat &heat, int heat_class)
{
  const double part = static_cast<double>(heat_class - 1) / heat_classes;

  return heat.log ? heat.least * std::pow(heat.most / heat.least, part) : heat.most * part;
}

int HeatClass(const Heat &heat, double amount)
{
  int found = 1;

  if (!(amount > 0.0))
    return 0;
  while (found < heat_classes && amount >= HeatBound(heat, found + 1))
    found++;
  return found;
}

void DrawHeatGrid(Svg *svg, const Plot &plot, const std::vector<double> &amounts, size_t columns,
                  const Heat &heat)
{
  const size_t rows = columns > 0 ? amounts.size() / columns : 0;
  const double width = (plot.x.to - plot.x.from) / static_cast<double>(std::max<size_t>(columns, 1));
  const double height = (plot.y.to - plot.y.from) / static_cast<double>(std::max<size_t>(rows, 1));
  std::vector<std::string> paths(heat_classes + 1);

  // One path per colour, and one box for neighbours of one colour: a fraction of the text of single boxes.
  for (size_t r = 0; r < rows; r++)
    for (size_t c = 0; c < columns;) {
      const int colour = HeatClass(heat, amounts[r * columns + c]);
      const size_t first = c;
      while (c < columns && HeatClass(heat, amounts[r * columns + c]) == colour)
        c++;
      if (colour > 0)
        paths[static_cast<size_t>(colour)] += fmt::format(
            "M{}H{:.2f}V{:.2f}H{:.2f}z",
            fmt::format("{:.2f} {:.2f}", plot.x.from + width * static_cast<double>(first),
                        plot.y.from + height * static_cast<double>(r)),
            plot.x.from + width * static_cast<double>(c), plot.y.from + height * static_cast<double>(r + 1),
            plot.x.from + width * static_cast<double>(first));
    }
  for (int colour = 1; colour <= heat_classes; colour++)
    DrawPath(svg, paths[static_cast<size_t>(colour)], fmt::format("h{}", colour));
}

void DrawHeatLegend(Svg *svg, double x, double y, const Heat &heat, const std::string &title)
{
  constexpr double width = 22.0;

  if (!(heat.most > 0.0))
    return;
  DrawText(svg, x, y - 13.0, title + (heat.log ? ", logarithmic" : ""), "start", "axis");
  for (int colour = 1; colour <= heat_classes; colour++)
    DrawBox(svg, x + width * (colour - 1), y - 8.0, width, 9.0, fmt::format("h{}", colour));
  const auto rounded = [](double value) { return ShortNumber(std::stod(fmt::format("{:.3g}", value))); };
  DrawText(svg, x, y + 13.0, rounded(heat.log ? heat.least : 0.0), "start");
  DrawText(svg, x + width * heat_classes, y + 13.0, rounded(heat.most), "end");
}

} // namespace kapris_report
