// cli/report/repeat.cpp - the command line that gives the same result.
// SPDX-License-Identifier: MIT

#include "formats/text.h"
#include "report/data.h"
#include "report/library.h"

#include <algorithm>
#include <fmt/core.h>

namespace kapris_report
{

// A name that cannot be taken for an option or for standard input.
static std::string FileWord(const std::string &path)
{
  if (path == "stdin")
    return "-";
  return path.starts_with('-') && path != "-" ? "./" + path : path;
}

static void AddStarts(const ReportData &data, std::vector<std::string> *words)
{
  int first = data.starts.empty() ? 0 : data.starts[0].number, last = first;

  for (const ReportStart &start : data.starts) {
    first = std::min(first, start.number);
    last = std::max(last, start.number);
  }
  if (first > 0)
    words->insert(words->end(), {"--start-range", fmt::format("{}:{}", first, last)});
  else
    words->insert(words->end(), {"--starts", fmt::format("{}", static_cast<long long>(last) + 1)});
}

// What combine decides on its own.
static void AddMethod(const ReportData &data, std::vector<std::string> *words)
{
  words->insert(words->end(), {"--scheme", data.scheme});
  if (data.command != "refine")
    words->insert(words->end(), {"--coarsening", data.coarsening});
  words->insert(words->end(), {"--refinement", data.refinement, "--vcycle", data.vcycle, "--runs",
                               fmt::format("{}", data.runs), "--members", fmt::format("{}", data.members)});
  if (data.reconst && data.command != "refine")
    words->push_back("--reconst");
}

// How the file was read.
static std::vector<std::string> ReadingWords(const Input &input)
{
  std::vector<std::string> words;
  const auto add = [&words](const char *option, const std::string &value) {
    if (!value.empty())
      words.insert(words.end(), {option, value});
  };

  add("--format", NameOfFormat(input.format));
  add("--model", NameOfModel(input.model));
  if (input.unit_weights)
    words.push_back("--unit-weights");
  add("--module", input.module);
  add("--depth", input.depth ? std::to_string(*input.depth) : "");
  add("--weights", input.types);
  add("--weight-by", input.column);
  add("--ignore-nets-above", input.ignore_above ? std::to_string(*input.ignore_above) : "");
  for (const std::string &pattern : input.ignore)
    add("--ignore-nets", pattern);
  return words;
}

std::vector<std::string> RepeatCommand(const ReportData &data)
{
  const bool refine = data.command == "refine";
  std::vector<std::string> words = {"kapris", data.command, FileWord(data.file)};
  const auto add = [&words](const char *option, const std::string &value) {
    words.insert(words.end(), {option, value});
  };

  if (refine)
    words.push_back(FileWord(data.given.path));
  for (const ReportFile &file : data.combined)
    words.push_back(FileWord(file.path));
  if (data.records) {
    const std::vector<std::string> reading = ReadingWords(data.records->input);
    words.insert(words.end(), reading.begin(), reading.end());
  }
  add("-k", fmt::format("{}", data.parts));
  add("--epsilon", fmt::format("{}", data.epsilon));
  if (data.min_epsilon < 1.0)
    add("--min-epsilon", fmt::format("{}", data.min_epsilon));
  if (data.allow_empty)
    words.push_back("--allow-empty");
  if (!data.shares.empty())
    add("--target-weights", Join(data.shares, ","));
  if (!data.fixed.path.empty())
    add("--fixed", FileWord(data.fixed.path));
  if (!data.groups.path.empty())
    add("--groups", FileWord(data.groups.path));
  if (!data.terminals.empty())
    add("--terminals", data.terminals);
  add("--objective", data.objective);
  if (data.command != "combine")
    AddMethod(data, &words);
  if (data.members > 0)
    add("--combinations", fmt::format("{}", data.combinations));
  AddStarts(data, &words);
  add("--seed", fmt::format("{}", data.seed));
  add("--threads", fmt::format("{}", data.threads));
  if (data.limit_seconds)
    add("--time-limit", fmt::format("{}", *data.limit_seconds));
  if (data.limit_bytes)
    add("--memory-limit", fmt::format("{}", *data.limit_bytes));
  return words;
}

} // namespace kapris_report
