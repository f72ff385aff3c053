// fuzz/sound.cpp - what every reader of hypergraphs keeps to.
// SPDX-License-Identifier: MIT

#include "sound.h"

#include "formats/bookshelf.h"
#include "formats/yosys.h"

#include <algorithm>

namespace kapris_formats
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

Hgr TryWcnf(std::string_view text, Problems *problems)
{
  return ReadWcnf("x", text, Model::PRIMAL, false, problems);
}

Hgr TryGraph(std::string_view text, Problems *problems)
{
  return ReadGraph("x", text, problems);
}

// The names must be as many as what they name, and survive being written.
static void CheckDetails(const Hgr &hgr, const Details &details)
{
  if (details.cells.size() != static_cast<size_t>(hgr.ncells) ||
      details.nets.size() != static_cast<size_t>(hgr.nnets))
    throw Failure{EXIT_INTERNAL, "the number of names"};
  const std::vector<int> part(details.cells.size(), 1);
  if (!part.empty() && FindRepeats(details.cells).empty() &&
      ReadNamed("x", FormatNames(details, part), IndexCells(details, hgr.ncells), 2, true) != part)
    throw Failure{EXIT_INTERNAL, "the names are not read as they were written"};
}

Hgr TryYosys(std::string_view text, Problems *problems)
{
  Details details;
  Hgr hgr = ReadYosys("x", text, {}, problems, &details);

  CheckDetails(hgr, details);
  return hgr;
}

Hgr TryBookshelf(std::string_view text, Problems *problems)
{
  NamedText pieces[4] = {{"x", {}}, {"x", {}}, {"", {}}, {"", {}}};
  Details details;

  for (NamedText &piece : pieces) {
    const size_t end = std::min(text.find('\0'), text.size());
    piece.bytes = text.substr(0, end);
    if (end > 0)
      piece.name.assign(1, 'x');
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  Hgr hgr = ReadBookshelf({pieces[0], pieces[1], pieces[2], pieces[3]}, problems, &details);
  CheckDetails(hgr, details);
  return hgr;
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

} // namespace kapris_formats
