// cli/report/tries.cpp - what each start and each trial gave, and what the best of more of them would give.
// SPDX-License-Identifier: MIT

#include "report/pictures.h"
#include "report/sample.h"

#include <algorithm>
#include <fmt/core.h>
#include <map>

namespace kapris_report
{

static constexpr size_t most_dots = 800, most_rows = 300, most_columns = 360, most_draws = 120,
                        fewest_sampled = 4;

namespace
{

// A start or a trial.
struct Try {
  std::string name;
  std::int64_t value;
  bool counts;         // as a balanced and complete one does, if there is any
  bool best;           // gave the result
  bool hollow = false; // drawn as a ring, as one that does not count is
};

struct Tries {
  std::string id, title, sentence, noun, axis; // noun: "starts"
  std::vector<Try> tries;
  bool alike = true; // drawn from one population, so that more of the same can be predicted
  Table table;
  const char *filled = "one", *hollow = "over a limit or cut short"; // what the marks are
};

} // namespace

static std::vector<std::int64_t> SampleOf(const Tries &all)
{
  std::vector<std::int64_t> sample;

  for (const Try &one : all.tries)
    if (one.counts)
      sample.push_back(one.value);
  std::sort(sample.begin(), sample.end());
  return sample;
}

static double HeightOf(const Plot &plot, std::int64_t value)
{
  return Position(plot.y, static_cast<double>(value));
}

// Where there are too many for dots: from the smallest to the largest of neighbours.
static void DrawRanges(Svg *svg, const Plot &plot, const std::vector<Try> &tries)
{
  const Groups groups = GroupParts(tries.size(), most_columns);

  for (size_t g = 0; g < groups.ngroups; g++) {
    const auto first = tries.begin() + static_cast<std::ptrdiff_t>(FirstOf(groups, g));
    const auto end = tries.begin() + static_cast<std::ptrdiff_t>(FirstOf(groups, g + 1));
    const auto [least, most] =
        std::minmax_element(first, end, [](const Try &a, const Try &b) { return a.value < b.value; });
    const double x = Position(plot.x, static_cast<double>(first - tries.begin())),
                 y = HeightOf(plot, most->value);
    DrawBox(svg, x, y, 1.0, std::max(1.0, HeightOf(plot, least->value) - y), "range");
  }
}

static void DrawDots(Svg *svg, const Plot &plot, const Tries &all)
{
  const double radius = all.tries.size() > 120 ? 2.2 : 3.4;
  const Try *best = nullptr;
  std::string line;
  std::int64_t least = 0;

  for (size_t i = 0; i < all.tries.size(); i++) {
    const double x = Position(plot.x, static_cast<double>(i));
    if (!all.tries[i].counts)
      continue;
    if (line.empty() || all.tries[i].value < least) {
      least = all.tries[i].value;
      line += line.empty() ? PathStep('M', x, HeightOf(plot, least))
                           : fmt::format("H{:.1f}V{:.1f}", x, HeightOf(plot, least));
    }
  }
  if (!line.empty())
    DrawPath(svg, line + fmt::format("H{:.1f}", plot.x.to), "blue");
  if (all.tries.size() > most_dots)
    DrawRanges(svg, plot, all.tries);
  for (size_t i = 0; i < all.tries.size(); i++) {
    const Try &one = all.tries[i];
    if (one.best)
      best = &one;
    else if (all.tries.size() <= most_dots)
      DrawDot(svg, Position(plot.x, static_cast<double>(i)), HeightOf(plot, one.value), radius,
              one.counts && !one.hollow ? "dot" : "ring", fmt::format("{}: {}", one.name, one.value));
  }
  if (best != nullptr)
    DrawDot(svg, Position(plot.x, static_cast<double>(best - all.tries.data())), HeightOf(plot, best->value),
            5.0, "best", fmt::format("{}: {}, the best", best->name, best->value));
}

// How many to draw: all up to a bound, then ever wider apart, and the whole sample.
static std::vector<size_t> DrawCounts(size_t size)
{
  std::vector<size_t> counts;

  for (size_t n = 1; n < size; n += 1 + n / (most_draws / 4))
    counts.push_back(n);
  counts.push_back(size);
  return counts;
}

static void DrawExpectation(Svg *svg, const Plot &plot, const std::vector<std::int64_t> &sample)
{
  std::string mean, upper, lower;

  for (const size_t n : DrawCounts(sample.size())) {
    const ExpectedBest best = ExpectBest(sample, n);
    const double x = Position(plot.x, static_cast<double>(n));
    mean += PathStep(mean.empty() ? 'M' : 'L', x, Position(plot.y, best.mean));
    upper += PathStep(upper.empty() ? 'M' : 'L', x, HeightOf(plot, best.high));
    lower = PathStep('L', x, HeightOf(plot, best.low)) + lower;
  }
  svg->body += "<path class=\"band\" style=\"fill:var(--sky)\" d=\"" + upper + lower + "z\"/>";
  DrawPath(svg, mean, "blue");
}

static Table ExpectationTable(const Tries &all, const std::vector<std::int64_t> &sample)
{
  Table table = {
      all.id + "-expected", {all.noun, "expected best", "10 of 100 below", "90 of 100 below"}, {}, ""};

  for (size_t n = 1;; n = std::min(n < 5 ? n + 1 : n < 10 ? 10 : 2 * n, sample.size())) {
    const ExpectedBest best = ExpectBest(sample, n);
    table.rows.push_back({fmt::format("{}", n), fmt::format("{:.2f}", best.mean), fmt::format("{}", best.low),
                          fmt::format("{}", best.high)});
    if (n >= sample.size())
      break;
  }
  return table;
}

// What the second half of the sample was worth.
static std::string WorthOfMore(const Tries &all, const std::vector<std::int64_t> &sample)
{
  const size_t n = sample.size();

  if (n < fewest_sampled)
    return fmt::format(" {} {} are too few to tell what more would give.", n, all.noun);
  const double half = ExpectBest(sample, n / 2).mean, whole = static_cast<double>(sample[0]);
  const double gain = half > 0.0 ? std::max(0.0, 100.0 * (half - whole) / half) : 0.0;
  return fmt::format(" Going from {} to {} {} lowered the expected best by {:.2f} %{}", n / 2, n, all.noun,
                     gain, gain < 0.1 ? ": more would hardly pay." : ".");
}

static std::string TriesHtml(Tries all)
{
  std::vector<std::int64_t> sample = SampleOf(all);
  std::int64_t lowest = all.tries[0].value, highest = lowest;
  Svg svg = {226.0, ""};

  if (sample.empty()) {
    for (Try &one : all.tries)
      one.counts = true;
    sample = SampleOf(all);
  }
  for (const Try &one : all.tries) {
    lowest = std::min(lowest, one.value);
    highest = std::max(highest, one.value);
  }
  const double low = static_cast<double>(lowest), high = static_cast<double>(highest);
  const double margin = std::max(1.0, 0.04 * (high - low));
  const Scale y = RoundScale(std::max(0.0, low - margin), high + margin, 184.0, 48.0, true);
  const double last = static_cast<double>(std::max<size_t>(all.tries.size(), 2) - 1);
  const Plot dots = {{-0.03 * last, 1.03 * last, plot_left, plot_right, false, true, 0.0}, y};
  DrawLegend(
      &svg, 2.0, 13.0,
      {{"dot dot", all.filled}, {"dot ring", all.hollow}, {"dot best", "the best"}, {"line blue", "so far"}});
  DrawYAxis(&svg, dots, all.axis);
  DrawXAxis(&svg, dots, all.noun + " in order");
  DrawDots(&svg, dots, all);

  std::string rest = FoldedTable("All as numbers", all.table);
  if (all.alike)
    all.sentence += WorthOfMore(all, sample);
  if (all.alike && sample.size() >= fewest_sampled) {
    Scale lower = y;
    lower.from += 226.0;
    lower.to += 226.0;
    const double n = static_cast<double>(sample.size());
    const Plot expected = {{1.0 - 0.03 * (n - 1.0), n + 0.03 * (n - 1.0), plot_left, plot_right, false, true},
                           lower};
    DrawYAxis(&svg, expected, "expected best of n, with the band of 80 in 100 cases");
    DrawXAxis(&svg, expected, "n " + all.noun);
    DrawExpectation(&svg, expected, sample);
    svg.height = 452.0;
    rest += FoldedTable("Expected best as numbers", ExpectationTable(all, sample));
  }
  return FigureHtml({all.id, all.title, all.sentence,
                     fmt::format("{} {} with values from {} to {}, and the best so far as a line.",
                                 all.tries.size(), all.noun, lowest, highest),
                     svg, rest});
}

static void Shorten(Table *table)
{
  if (table->rows.size() > most_rows) {
    table->note = fmt::format("The first {} of {}.", most_rows, table->rows.size());
    table->rows.resize(most_rows);
  }
}

std::string StartsHtml(const ReportData &data)
{
  static constexpr char title[] = "Starts";
  Tries all = {"starts", title, "", "starts", data.objective, {}, true, {}};

  if (data.starts.size() < 2)
    return MissingFigure(
        "starts", title,
        "There was one start. With more of them (--starts 10), this picture shows how far they differ "
        "and whether more pay.");
  all.table = {
      "starts-numbers",
      {"start", "cut", "soed", "connectivity", "imbalance", "balanced", "completed", "seconds", "seed"},
      {},
      ""};
  for (const ReportStart &start : data.starts) {
    const ReportFigures &figures = start.figures;
    all.tries.push_back({fmt::format("start {}", start.number), ObjectiveOf(data, figures),
                         figures.balanced && start.completed, data.best_start == start.number});
    all.table.rows.push_back({fmt::format("{}", start.number), fmt::format("{}", figures.cut),
                              fmt::format("{}", figures.soed), fmt::format("{}", figures.connectivity),
                              fmt::format("{:.4f}", figures.imbalance), figures.balanced ? "yes" : "no",
                              start.completed ? "yes" : "no", fmt::format("{:.3f}", start.seconds),
                              fmt::format("{}", start.seed)});
  }
  Shorten(&all.table);
  all.sentence = fmt::format("The {} of each of {} starts.", data.objective, data.starts.size());
  return TriesHtml(std::move(all));
}

// How many rounds of combinations led to each trial: 0 of a member, else one more than the later of its parents.
static std::vector<int> GenerationsOf(const std::vector<ReportTrial> &trials)
{
  std::map<std::pair<int, int>, int> known; // by start and number
  std::vector<int> generations;

  for (const ReportTrial &trial : trials) {
    int generation = 0;
    for (const int parent : trial.parents)
      if (const auto found = known.find({trial.start, parent}); found != known.end())
        generation = std::max(generation, found->second + 1);
    known[{trial.start, trial.number}] = generation;
    generations.push_back(generation);
  }
  return generations;
}

static std::string ParentsText(const ReportTrial &trial)
{
  if (trial.parents.empty())
    return "";
  return trial.parents[0] == trial.parents[1] ? fmt::format("{}", trial.parents[0])
                                              : fmt::format("{} and {}", trial.parents[0], trial.parents[1]);
}

static std::string SearchSentence(const std::vector<ReportTrial> &trials, const std::vector<int> &generations)
{
  const auto made = std::count_if(trials.begin(), trials.end(),
                                  [](const ReportTrial &trial) { return trial.parents.empty(); });
  const int last = *std::max_element(generations.begin(), generations.end());

  return fmt::format(
      "{} partitions that the starts made on their own, and {} of others, in up to {} generation{}.", made,
      std::ssize(trials) - made, last, last == 1 ? "" : "s");
}

// Of starts with members: the trials are complete partitions, made on their own or of others.
static std::string SearchHtml(const ReportData &data)
{
  const std::vector<ReportTrial> &trials = data.records->trials;
  const std::vector<int> generations = GenerationsOf(trials);
  std::map<int, std::int64_t> least; // of each start so far
  Tries all = {"trials",
               "Members and combinations",
               SearchSentence(trials, generations),
               "trials",
               TrialMeasure(data),
               {},
               false,
               {}};

  all.filled = "combination";
  all.hollow = "member";
  all.table = {"trials-numbers",
               {"start", "trial", "value", "of trials", "generation", "imbalance", "best so far", "kept"},
               {},
               ""};
  for (size_t t = 0; t < trials.size(); t++) {
    const ReportTrial &trial = trials[t];
    const bool member = trial.parents.empty(), first = !least.contains(trial.start);
    const std::string parents = ParentsText(trial);
    const std::int64_t before = first ? trial.value : least[trial.start];
    all.tries.push_back({fmt::format("start {}, trial {}{}", trial.start, trial.number,
                                     member ? "" : fmt::format(", of {}", parents)),
                         trial.value, true, trial.best && data.best_start == trial.start, member});
    all.table.rows.push_back({fmt::format("{}", trial.start), fmt::format("{}", trial.number),
                              fmt::format("{}", trial.value), parents, fmt::format("{}", generations[t]),
                              fmt::format("{:.4f}", trial.imbalance),
                              first || trial.value < before ? "yes" : "", trial.best ? "yes" : ""});
    least[trial.start] = std::min(before, trial.value);
  }
  Shorten(&all.table);
  return TriesHtml(std::move(all));
}

// The first bisection is all of the partitioning only into two parts.
static std::string TrialSentence(const ReportData &data)
{
  if (data.command == "refine")
    return "Rounds of refinement, each from the best partition of its start so far.";
  if (data.scheme == "kway")
    return "The multilevel runs of each start; the best one becomes its partition.";
  if (data.parts == 2)
    return "The multilevel runs of each start; the best bisection becomes its partition.";
  return fmt::format(
      "The multilevel runs of the first bisection of each start. The {} parts come from further "
      "bisections of its halves, which are not shown.",
      data.parts);
}

std::string TrialsHtml(const ReportData &data)
{
  const bool bisection = data.scheme == "recursive" && !(data.command == "refine" && data.parts > 2);
  static constexpr char title[] = "Trials";
  Tries all = {"trials",
               title,
               "",
               "trials",
               bisection ? "cut of the bisection" : TrialMeasure(data),
               {},
               data.command != "refine",
               {}};

  if (!data.records)
    return MissingFigure("trials", title,
                         "This result has no records of its trials: write it with 'kapris partition "
                         "--json=FILE --records', or "
                         "with --report.");
  if (data.records->trials.empty())
    return MissingFigure("trials", title, "No trial came to its end.");
  if (data.members > 0)
    return SearchHtml(data);
  all.table = {"trials-numbers", {"start", "trial", "value", "after V-cycles", "imbalance", "kept"}, {}, ""};
  for (const ReportTrial &trial : data.records->trials) {
    const std::int64_t value = std::min(trial.value, trial.cycled.value_or(trial.value));
    all.tries.push_back({fmt::format("start {}, trial {}", trial.start, trial.number), value, true,
                         trial.best && data.best_start == trial.start});
    all.table.rows.push_back({fmt::format("{}", trial.start), fmt::format("{}", trial.number),
                              fmt::format("{}", trial.value),
                              trial.cycled ? fmt::format("{}", *trial.cycled) : "",
                              fmt::format("{:.4f}", trial.imbalance), trial.best ? "yes" : ""});
  }
  Shorten(&all.table);
  all.sentence = TrialSentence(data);
  return TriesHtml(std::move(all));
}

} // namespace kapris_report
