// fuzz/sound.cpp - what every reader of hypergraphs keeps to.
// SPDX-License-Identifier: MIT

#include "sound.h"

namespace kapris_cli
{

Hgr TryHgr(std::string_view text, Problems *problems)
{
  return ReadHgr("x", text, problems);
}

Hgr TryPatoh(std::string_view text, Problems *problems)
{
  return ReadPatoh("x", text, problems);
}

Hgr TryMtx(std::string_view text, Problems *problems)
{
  return ReadMtx("x", text, Model::ROW_NET, false, problems);
}

Hgr TryCnf(std::string_view text, Problems *problems)
{
  return ReadCnf("x", text, Model::DUAL, problems);
}

std::string FirstFlaw(const Hgr &hgr)
{
  if (hgr.ncells < 0 || hgr.nnets < 0 || hgr.netptr.size() != static_cast<size_t>(hgr.nnets) + 1)
    return "counts";
  if (hgr.netptr.front() != 0 || hgr.netptr.back() != static_cast<int>(hgr.netind.size()))
    return "ends of netptr";
  for (size_t n = 0; n + 1 < hgr.netptr.size(); n++)
    if (hgr.netptr[n] > hgr.netptr[n + 1])
      return "order of netptr";
  for (const int pin : hgr.netind)
    if (pin < 0 || pin >= hgr.ncells)
      return "pin";
  if (!hgr.netwgts.empty() && hgr.netwgts.size() != static_cast<size_t>(hgr.nnets))
    return "number of net weights";
  if (!hgr.cellwgts.empty() && hgr.cellwgts.size() != static_cast<size_t>(hgr.ncells))
    return "number of cell weights";
  for (const std::vector<std::int64_t> *weights : {&hgr.netwgts, &hgr.cellwgts}) {
    std::int64_t left = most_weight;
    for (const std::int64_t weight : *weights) {
      if (weight < 0 || weight > left)
        return "weight";
      left -= weight;
    }
  }
  return "";
}

std::string FirstFault(Reader reader, std::string_view text, Problems *problems, Hgr *hgr)
{
  try {
    *hgr = reader(text, problems);
  } catch (const Failure &failure) {
    if (failure.status != EXIT_MALFORMED)
      throw;
    if (problems == nullptr)
      return failure.text;
    AddProblem(problems, false, failure.text);
  }
  if (problems != nullptr)
    for (const Problem &problem : problems->kept)
      if (!problem.warning)
        return problem.text;
  return "";
}

} // namespace kapris_cli
