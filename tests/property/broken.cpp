// tests/property/broken.cpp - what must hold for every valid call of an entry point.
// SPDX-License-Identifier: MIT

#include "property/run.h"

static bool HasRepeatedPin(const Instance &instance)
{
  for (const std::vector<int> &net : instance.nets)
    for (std::size_t a = 0; a < net.size(); a++)
      for (std::size_t b = 0; b < a; b++)
        if (net[a] == net[b])
          return true;
  return false;
}

static bool HasSinglePinNet(const Instance &instance)
{
  for (const std::vector<int> &net : instance.nets)
    if (net.size() == 1)
      return true;
  return false;
}

// What is wrong with the reported objective, or nothing. Two-way refinement counts a moved single-pin net as if it
// were cut, so on such nets it may report too much; on repeated pins its running cut is not exact at all. With
// Reconst and without the polish, a net counts once per bisection that cuts a piece of it.
static std::string WrongObjective(const Call &call, const Result &result)
{
  const bool kway = call.entry == PART_KWAY || call.entry == REFINE_KWAY;
  const bool polished = call.entry == PART_RECURSIVE && call.nparts > 2 && call.nparts <= 64;
  const bool pieces = call.entry <= PART_RECURSIVE_INTERNAL && call.options[0] && call.options[5] &&
                      call.nparts > 2 && !polished;
  const bool bysoed = call.entry == PART_KWAY && call.options[0] && call.options[3] == 2;
  const long value = bysoed ? SoedOf(call.instance, result.part) : CutOf(call.instance, result.part);

  if (HasRepeatedPin(call.instance))
    return "";
  if (result.cut < value)
    return "reported too little: " + std::to_string(result.cut) + " for " + std::to_string(value);
  if (result.cut > value && !pieces && (kway || polished || !HasSinglePinNet(call.instance)))
    return "reported too much: " + std::to_string(result.cut) + " for " + std::to_string(value);
  return "";
}

std::string WrongIn(const Call &call, const Result &result, const std::string &printed)
{
  for (std::size_t i = 0; i < result.part.size(); i++) {
    if (result.part[i] < 0 || result.part[i] >= call.nparts)
      return "a cell is in no part";
    if (call.entry <= PART_RECURSIVE_INTERNAL && !call.part.empty() && call.part[i] != -1 &&
        call.part[i] != result.part[i])
      return "a fixed cell is in another part";
  }
  if (call.options[8] == 0 && !printed.empty() && !HasRepeatedPin(call.instance) &&
      !HasSinglePinNet(call.instance))
    return "printed: " + printed;
  return WrongObjective(call, result);
}

std::string Broken(const Call &call)
{
  const std::size_t blocks = CurrentLedger()->blocks;
  std::string printed;
  const Result result = RunTraced(call, &printed);

  return CurrentLedger()->blocks != blocks ? "memory was not released" : WrongIn(call, result, printed);
}
