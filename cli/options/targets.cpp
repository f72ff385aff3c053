// cli/options/targets.cpp - relative weights that parts should get, from the command line or a file.
// SPDX-License-Identifier: MIT

#include "options/targets.h"

#include "libraries.h"

#include "formats/failure.h"
#include "formats/files.h"

#include <charconv>
#include <fmt/core.h>

namespace kapris_cli
{

[[noreturn]] static void Refuse(const std::string &text)
{
  throw Failure{EXIT_USAGE, text};
}

std::string TargetFile(const std::string &argument)
{
  return argument.starts_with('@') ? argument.substr(1) : "";
}

std::vector<double> LoadTargetWeights(const std::string &argument, int nparts)
{
  const std::string file = TargetFile(argument);
  const std::string text(file.empty() ? argument : OpenText(file).bytes);
  const std::string name = file.empty() ? "--target-weights" : InputName(file);
  static const char separators[] = ", \t\r\n";
  constexpr double least_share = 1e-9;
  std::vector<double> shares;
  double sum = 0.0;

  for (size_t at = text.find_first_not_of(separators); at != std::string::npos;) {
    const size_t end = std::min(text.find_first_of(separators, at), text.size());
    double weight = 0.0;
    const auto read = std::from_chars(text.data() + at, text.data() + end, weight);
    if (read.ec != std::errc() || read.ptr != text.data() + end || !(weight > 0.0) || weight > 1e15)
      Refuse(fmt::format("{}: '{}' is not a weight; give {} positive numbers", name,
                         text.substr(at, end - at), nparts > 0 ? std::to_string(nparts) : "only"));
    shares.push_back(weight);
    sum += weight;
    at = text.find_first_not_of(separators, end);
  }
  if (nparts == 0 ? shares.empty() : shares.size() != static_cast<size_t>(nparts))
    Refuse(fmt::format("{}: {} weights for {} parts", name, shares.size(), nparts));
  for (double &share : shares) {
    share /= sum;
    if (share < least_share)
      Refuse(fmt::format("{}: a part would get less than {} of the total", name, least_share));
  }
  return shares;
}

} // namespace kapris_cli
