// formats/nets.cpp - weights, and nets as lines of text: an optional weight, then pins.
// SPDX-License-Identifier: MIT
//
// Nothing is repaired: a pin that a net names twice, a net of one pin and a net without pins stay as they are.

#include "formats/nets.h"

#include <algorithm>
#include <climits>
#include <fmt/core.h>
#include <utility>
#include <vector>

namespace kapris_formats
{

namespace
{

using PinPlaces = std::vector<std::pair<int, const char *>>;

} // namespace

// A total above most_weight stays as it is: more than one fault about it would say nothing new.
std::int64_t ReadWeight(Scan *scan, const char *what, std::int64_t *total)
{
  const char *place = scan->at;
  const std::int64_t weight = ReadNumberUpTo<most_weight>(scan, what);

  if (weight == no_number || *total > most_weight)
    return weight;
  *total += weight;
  if (*total > most_weight)
    FaultAt(*scan, place,
            fmt::format("{}: {} takes the total to {}, above {}", what, weight, *total, most_weight));
  return weight;
}

static void ReadNetWeight(Scan *scan, int net, std::int64_t *total, Hgr *hgr)
{
  const char *place = scan->at;
  std::int64_t weight = 0;

  if (NextInLine(scan)) {
    place = scan->at;
    weight = ReadWeight(scan, "net weight", total);
  } else {
    FaultAt(*scan, scan->at, fmt::format("the weight of net {} is missing", net + 1));
    weight = no_number;
  }
  if (weight == 0 && scan->problems != nullptr)
    WarnAt(*scan, place, fmt::format("net {} has the weight 0: it never counts", net + 1));
  hgr->netwgts.push_back(std::max<std::int64_t>(weight, 0));
}

static void FaultPin(const Scan &scan, const NetLines &lines, int net, int pin, const char *place)
{
  const std::string where = fmt::format("pin {} in net {} (line {}):", pin, net + 1, scan.line);

  if (pin < lines.base)
    FaultAt(scan, place, fmt::format("{} pins count from {}", where, lines.base));
  else
    FaultAt(scan, place,
            fmt::format("{} there are only {} cells, counted from {}", where, lines.ncells, lines.base));
}

static void ReadPins(Scan *scan, const NetLines &lines, int net, Hgr *hgr, PinPlaces *places)
{
  if (!NextInLine(scan) && scan->problems != nullptr)
    WarnAt(*scan, scan->start, fmt::format("net {} has no pins", net + 1));
  while (NextInLine(scan)) {
    const char *place = scan->at;
    const int pin = ReadNumber(scan, "pin");
    if (pin < lines.base || pin - lines.base >= lines.ncells) [[unlikely]] {
      if (pin == no_number)
        continue;
      FaultPin(*scan, lines, net, pin, place);
    } else if (scan->problems != nullptr) [[unlikely]] {
      places->emplace_back(pin, place);
    }
    hgr->netind.push_back(pin - lines.base);
  }
}

// Sorted instead of marked cell by cell: a line of text can claim 2^31 cells.
static void WarnRepeats(const Scan &scan, int net, PinPlaces *places)
{
  std::sort(places->begin(), places->end());
  for (size_t i = 1; i < places->size(); i++)
    if ((*places)[i].first == (*places)[i - 1].first)
      WarnAt(scan, (*places)[i].second,
             fmt::format("pin {} is repeated in net {} (line {})", (*places)[i].first, net + 1, scan.line));
  places->clear();
}

void ReadNetLines(Scan *scan, const NetLines &lines, Hgr *hgr)
{
  PinPlaces places;
  std::int64_t total = 0;

  hgr->ncells = lines.ncells;
  hgr->nnets = lines.nnets;
  hgr->netptr.reserve(static_cast<size_t>(lines.nnets) + 1);
  hgr->netptr.push_back(0);
  if (lines.weights)
    hgr->netwgts.reserve(static_cast<size_t>(lines.nnets));
  for (int net = 0; net < lines.nnets; net++) {
    if (!NextLine(scan))
      FailAt(*scan, scan->at, fmt::format("the text ends after {} of {} nets", net, lines.nnets));
    if (lines.weights)
      ReadNetWeight(scan, net, &total, hgr);
    ReadPins(scan, lines, net, hgr, &places);
    if (hgr->netind.size() > INT_MAX)
      FailAt(*scan, scan->at, fmt::format("more than {} pins, the largest number", INT_MAX));
    if (scan->problems != nullptr)
      WarnRepeats(*scan, net, &places);
    hgr->netptr.push_back(static_cast<int>(hgr->netind.size()));
    EndLine(scan, "the net");
  }
}

} // namespace kapris_formats
