// cli/report/order.cpp - the order of cells and nets that a partition gives.
// SPDX-License-Identifier: MIT

#include "report/order.h"

#include <algorithm>
#include <numeric>

namespace kapris_report
{

namespace
{

struct Span {
  int first, last; // parts
};

struct CutRow {
  int first, last, net;

  auto operator<=>(const CutRow &) const = default;
};

} // namespace

// Stable, so that what was close within a part stays close. key[i] < nkeys.
static std::vector<int> PlacesByKey(const std::vector<int> &keys, size_t nkeys, std::vector<int> *ends)
{
  std::vector<int> next(nkeys + 1), places;

  for (const int key : keys)
    next[static_cast<size_t>(key) + 1]++;
  std::partial_sum(next.begin(), next.end(), next.begin());
  ends->assign(next.begin() + 1, next.end());
  places.reserve(keys.size());
  for (const int key : keys)
    places.push_back(next[static_cast<size_t>(key)]++);
  return places;
}

static Span SpanOf(const Hgr &hgr, const std::vector<int> &part, size_t net, int nparts)
{
  const auto begin = hgr.netind.begin() + hgr.netptr[net], end = hgr.netind.begin() + hgr.netptr[net + 1];
  Span span = {nparts - 1, 0};

  for (auto pin = begin; pin != end; ++pin) {
    const int p = part[static_cast<size_t>(*pin)];
    span = {std::min(span.first, p), std::max(span.last, p)};
  }
  return begin == end ? Span{nparts - 1, nparts - 1} : span;
}

Order OrderByPart(const Hgr &hgr, const std::vector<int> &part, int nparts)
{
  const size_t k = static_cast<size_t>(nparts);
  std::vector<CutRow> cut;
  std::vector<int> keys;
  Order order;

  order.cells = PlacesByKey(part, k, &order.cellends);
  keys.reserve(static_cast<size_t>(hgr.nnets));
  for (int net = 0; net < hgr.nnets; net++) {
    const Span span = SpanOf(hgr, part, static_cast<size_t>(net), nparts);
    keys.push_back(span.first == span.last ? span.first : nparts);
    if (span.first != span.last)
      cut.push_back({span.first, span.last, net});
  }
  order.nets = PlacesByKey(keys, k + 1, &order.netends);
  std::sort(cut.begin(), cut.end());
  int row = order.netends[k - 1];
  for (const CutRow &each : cut)
    order.nets[static_cast<size_t>(each.net)] = row++;
  return order;
}

} // namespace kapris_report
