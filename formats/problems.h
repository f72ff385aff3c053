// formats/problems.h - what a reader finds wrong with a text, or only odd.
// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace kapris_formats
{

struct Problem {
  bool warning;
  std::string text; // begins with "file:line:column: "
};

struct Problems {
  std::vector<Problem> kept; // the first most_kept; the others are only counted
  long long nerrors = 0;
  long long nwarnings = 0;
};

inline constexpr size_t most_kept = 1000;

inline void AddProblem(Problems *problems, bool warning, std::string text)
{
  (warning ? problems->nwarnings : problems->nerrors)++;
  if (problems->kept.size() < most_kept)
    problems->kept.push_back({warning, std::move(text)});
}

} // namespace kapris_formats
