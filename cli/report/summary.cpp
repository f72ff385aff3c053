// cli/report/summary.cpp - the head of the page: what came out, what was run, how to run it again.
// SPDX-License-Identifier: MIT

#include "formats/text.h"
#include "report/escape.h"
#include "report/library.h"
#include "report/pictures.h"

#include <algorithm>
#include <fmt/core.h>

namespace kapris_report
{

static std::string Percent(double ratio)
{
  return fmt::format("{:.2f} %", 100.0 * ratio);
}

// How far the parts are from their limits: the one that has the least room, or the most too much.
static std::string BalanceSentence(const ReportData &data)
{
  size_t fullest = 0, nover = 0;
  const auto room = [&](size_t p) {
    return static_cast<double>(data.limits[p]) - static_cast<double>(data.weights[p]);
  };
  const auto relative = [&](size_t p) {
    return room(p) / std::max(1.0, static_cast<double>(data.limits[p]));
  };

  for (size_t p = 0; p < data.weights.size(); p++) {
    nover += data.weights[p] > data.limits[p];
    if (relative(p) < relative(fullest))
      fullest = p;
  }
  if (nover == 0 && data.best.excess > 0)
    return fmt::format("Not balanced: parts lack {} to their minimums.", data.best.excess);
  const std::string figures =
      fmt::format("part {}, weighs {} of at most {}", fullest, data.weights[fullest], data.limits[fullest]);
  if (nover == 0)
    return fmt::format("Balanced: {} parts are within their limits; the fullest, {} ({} below).",
                       data.parts == 2 ? "both" : fmt::format("all {}", data.parts), figures,
                       Percent(relative(fullest)));
  return fmt::format("Not balanced: {} of {} parts {} above {}; the worst, {} ({} above).", nover, data.parts,
                     nover == 1 ? "is" : "are", nover == 1 ? "its limit" : "their limits", figures,
                     Percent(-relative(fullest)));
}

static std::string ObjectiveSentence(const ReportData &data)
{
  const std::int64_t value = ObjectiveOf(data, data.best);
  const std::string what = data.objective == "soed" ? "sum of external degrees" : data.objective;
  std::string from = data.command == "refine"    ? "the given partition"
                     : data.command == "combine" ? "one of the given partitions"
                                                 : "a simple partition made before the first start ended";

  if (data.best_start && data.starts.size() == 1)
    from = "the only start";
  else if (data.best_start)
    from = fmt::format("start {}, the best of {}", *data.best_start, data.starts.size());
  return fmt::format("The {} is {}, from {}.", what, value, from);
}

static Table Figures(const ReportData &data)
{
  Table table = {"figures", {"measure", "value"}, {}, ""};
  const auto add = [&table](const char *name, const std::string &value) {
    table.rows.push_back({name, value});
  };

  add("cut: weight of the nets that span several parts", fmt::format("{}", data.best.cut));
  add("SOED: the same, each net times its parts", fmt::format("{}", data.best.soed));
  add("connectivity: each net times its parts less one", fmt::format("{}", data.best.connectivity));
  add("imbalance: the heaviest part over its share, less 1", fmt::format("{:.6f}", data.best.imbalance));
  if (data.best.excess > 0)
    add("weight above the limits, or lacking to the minimums", fmt::format("{}", data.best.excess));
  if (data.nempty > 0)
    add("empty parts", fmt::format("{}", data.nempty));
  for (const std::string &warning : data.warnings)
    add("warning", warning);
  return table;
}

static std::string FileText(const ReportFile &file)
{
  return file.path.empty() ? "none" : fmt::format("{} (hash {})", file.path, file.hash);
}

static Table Facts(const ReportData &data)
{
  Table table = {"run", {}, {}, ""};
  const auto add = [&table](const char *name, const std::string &value) {
    table.rows.push_back({name, value});
  };

  add("input", fmt::format("{} (hash {})", data.file, data.hash));
  add("size", fmt::format("{} cells, {} nets, {} pins", data.cells, data.nets, data.pins));
  add("parts", fmt::format("{}, with {} target weights, epsilon {}", data.parts,
                           data.shares.empty() ? "equal" : "given", data.epsilon));
  add("method", fmt::format("{}, scheme {}, objective {}", data.command, data.scheme, data.objective));
  add("details", fmt::format("coarsening {}, refinement {}, V-cycles {}, {} runs{}", data.coarsening,
                             data.refinement, data.vcycle, data.runs, data.reconst ? ", reconst" : ""));
  if (data.members > 0)
    add("search", data.limit_seconds
                      ? fmt::format("members and combinations for {} s", *data.limit_seconds)
                      : fmt::format("{} members, up to {} combinations", data.members, data.combinations));
  add("starts", fmt::format("{}, seed {}", data.starts.size(), data.seed));
  if (!data.given.path.empty())
    add("given partition", FileText(data.given));
  for (const ReportFile &file : data.combined)
    add("given partition", FileText(file));
  if (!data.fixed.path.empty())
    add("fixed cells", FileText(data.fixed));
  if (!data.groups.path.empty())
    add("groups", FileText(data.groups));
  if (!data.terminals.empty())
    add("terminals", fmt::format("fixed by fields of {}", data.terminals));
  add("part file", FileText(data.output));
  add("time",
      fmt::format("{:.3f} s on {} thread{}: coarsening {:.2f}, initial partition {:.2f}, refining {:.2f}, "
                  "balancing {:.2f}; reading {:.2f}",
                  data.seconds, data.threads, data.threads == 1 ? "" : "s", data.seconds_coarsening,
                  data.seconds_initial, data.seconds_refining, data.seconds_balancing, data.seconds_read));
  add("memory", fmt::format("{:.1f} MB", static_cast<double>(data.peak_bytes) / 1e6));
  add("status", data.message.empty() ? data.status : fmt::format("{}: {}", data.status, data.message));
  add("version", fmt::format("kapris {}", data.version));
  return table;
}

// What the command cannot promise.
static std::string RepeatNote(const ReportData &data)
{
  const bool reads_stdin = data.file == "stdin" || data.given.path == "stdin" || data.given.path == "-" ||
                           data.fixed.path == "-" ||
                           std::any_of(data.combined.begin(), data.combined.end(),
                                       [](const auto &file) { return file.path == "-"; });
  std::string note = "The same partition on every machine and with any number of threads.";

  if (data.status != "ok" && data.status != "infeasible balance")
    note = "The run was cut short, so that how far it comes depends on the machine.";
  if (reads_stdin)
    note += " One of the inputs came from standard input.";
  if (!data.records)
    note += " Options that say how to read the input are not part of this result.";
  return note;
}

std::string SummaryHtml(const ReportData &data)
{
  std::vector<std::string> words;

  for (const std::string &word : RepeatCommand(data))
    words.push_back("<span>" + EscapeHtml(QuoteForShell(word)) + "</span>");
  return fmt::format("<header><h1>{} in {} parts</h1>\n<p class=\"soft\">{} cells, {} nets, {} pins</p>\n"
                     "<p class=\"verdict{}\" id=\"verdict\">{} {}</p></header>\n<div class=\"cards\">\n"
                     "<section class=\"card\"><h2>Result</h2>\n{}</section>\n"
                     "<section class=\"card\"><h2>Run</h2>\n{}</section>\n"
                     "<section class=\"card wide\"><h2>To repeat it</h2>\n<pre id=\"command\">{}</pre>\n"
                     "<p class=\"soft\">{}</p></section>\n</div>\n",
                     EscapeHtml(data.file), data.parts, data.cells, data.nets, data.pins,
                     data.best.balanced ? "" : " bad", EscapeHtml(BalanceSentence(data)),
                     EscapeHtml(ObjectiveSentence(data)), TableHtml(Figures(data)), TableHtml(Facts(data)),
                     Join(words, " "), EscapeHtml(RepeatNote(data)));
}

} // namespace kapris_report
