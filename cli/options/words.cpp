// cli/options/words.cpp - command lines as people type them.
// SPDX-License-Identifier: MIT

#include "options/words.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace kapris_cli
{

// Other names of options.
static constexpr std::string_view others[][2] = {
    {"--k", "--parts"}, {"--imbalance", "--epsilon"}, {"--part-shares", "--target-weights"}};

std::vector<std::string> NamesOfOption(const std::string &name)
{
  std::vector<std::string> names = {name};

  for (const auto &[other, own] : others)
    if (own == name)
      names.emplace_back(other);
  return names;
}

void ExpandWords(std::vector<std::string> *args)
{
  if (!args->empty() && (*args)[0] == "help") {
    args->erase(args->begin());
    args->push_back("--help");
  }
  for (std::string &arg : *args) {
    if (arg == "--")
      return;
    for (const auto &[other, name] : others)
      if (arg.starts_with(other) && (arg.size() == other.size() || arg[other.size()] == '='))
        arg.replace(0, other.size(), name);
  }
}

// The letters that have to be changed, put in, left out or exchanged with their neighbours.
static size_t Distance(const std::string &a, const std::string &b)
{
  std::vector<std::vector<size_t>> cost(a.size() + 1, std::vector<size_t>(b.size() + 1));

  for (size_t i = 0; i <= a.size(); i++)
    for (size_t j = 0; j <= b.size(); j++) {
      if (i == 0 || j == 0) {
        cost[i][j] = i + j;
        continue;
      }
      const bool same = a[i - 1] == b[j - 1];
      cost[i][j] = std::min({cost[i - 1][j] + 1, cost[i][j - 1] + 1, cost[i - 1][j - 1] + !same});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
        cost[i][j] = std::min(cost[i][j], cost[i - 2][j - 2] + 1);
    }
  return cost[a.size()][b.size()];
}

std::string NearestWord(const std::string &given, const std::vector<std::string> &words)
{
  constexpr size_t longest = 40; // of what can be a mistyped word
  std::string nearest;
  size_t least = std::min(given.size(), longest) / 3 + 1; // a third of the letters may be wrong

  for (const std::string &word : words) {
    if (given.size() > longest)
      break;
    // The beginning of a word is as good as it is long.
    const size_t distance = given.size() > 3 && word.starts_with(given) ? 1 : Distance(given, word);
    if (distance < least) {
      least = distance;
      nearest = word;
    }
  }
  return nearest;
}

} // namespace kapris_cli
