// cli/measure/bounds.cpp - what the library can add up, and how heavy a part may be.
// SPDX-License-Identifier: MIT
//
// The library refuses sums that are too large, in its own words; the tool finds out first and names the file.
// kapris_api.h states the limits.

#include "measure/bounds.h"

#include "failure.h"

#include "measure/sums.h"

#include <algorithm>
#include <fmt/core.h>

namespace kapris_cli
{

void CheckSums(const std::string &name, const Hgr &hgr, int nparts)
{
  std::int64_t sum = 0;

  for (int net = 0; net < hgr.nnets; net++) {
    const size_t n = static_cast<size_t>(net);
    const int span = std::min(hgr.netptr[n + 1] - hgr.netptr[n], nparts);
    if (!AddProduct(&sum, NetWeight(hgr, net), span) || sum > most_weight)
      throw Failure{
          EXIT_MALFORMED,
          fmt::format("{}: weights too large: net {}, of weight {}, takes the total of net weight x "
                      "parts that a net can span, {} of {}, above {}",
                      name, net + 1, NetWeight(hgr, net), span, nparts, most_weight)};
  }
}

static std::int64_t DivideUp(std::int64_t value, std::int64_t by)
{
  return value / by + (value % by != 0);
}

// Share by share, since the product of total and factor may leave 64 bits.
std::int64_t ShareLimit(std::int64_t total, long long nparts, long long millionths)
{
  constexpr std::int64_t million = 1000 * 1000;
  const std::int64_t factor = million + millionths;
  const std::int64_t share = total / nparts, rest = total % nparts;

  return factor * (share / million) +
         DivideUp(factor * (share % million) + DivideUp(factor * rest, nparts), million);
}

int CountOver(const Measures &measures, const Limits &limits)
{
  int nover = 0;

  for (const UsedPart &used : measures.used)
    if (limits && used.weight > limits(used.number))
      nover++;
  return nover;
}

} // namespace kapris_cli
