// cli/io/cnf.cpp - the reader of DIMACS formulas.
// SPDX-License-Identifier: MIT
//
//   header   comments, then "p cnf", variables and clauses; bounded   ReadHeader
//   clauses  numbers until 0, over any number of lines                ReadClauses
//
// Entries are read as (clause, literal): variable v is 2v-2, its negation 2v-1, and the models follow from that.

#include "io/entries.h"
#include "io/formats.h"

#include <climits>
#include <cstdlib>
#include <fmt/core.h>
#include <utility>

namespace kapris_cli
{

namespace
{

struct Formula {
  int nvariables;
  int nclauses;
};

} // namespace

// A clause is at least its 0 and what follows it.
static Formula ReadHeader(Scan *scan)
{
  Formula formula;

  if (!NextFilledLine(scan))
    FailAt(*scan, scan->at, "the line 'p cnf VARIABLES CLAUSES' is missing");
  const Scan header = *scan;
  if (NextWord(scan) != "p" || NextWord(scan) != "cnf")
    FailAt(header, header.at, "the first line that is no comment must be 'p cnf VARIABLES CLAUSES'");
  formula.nvariables = ReadCount(scan, "the number of variables");
  formula.nclauses = ReadCount(scan, "the number of clauses");
  EndLine(scan, "the header");
  const long long left = scan->end - scan->at, needed = 2LL * formula.nclauses - 1;
  if (needed > left)
    FailAt(
        header, header.at,
        fmt::format("{} clauses need at least {} bytes, but only {} follow", formula.nclauses, needed, left));
  return formula;
}

static std::vector<Entry> ReadClauses(Scan *scan, const Formula &formula)
{
  std::vector<Entry> entries;
  int clause = 0;
  bool open = false;

  // Old collections end their clauses with a line "%" and more after it.
  while (NextFilledLine(scan) && *scan->at != '%') {
    while (NextInLine(scan)) {
      const char *place = scan->at;
      const int literal = ReadSigned(scan, "literal");
      if (clause == formula.nclauses) {
        FaultAt(*scan, place, fmt::format("{} is left over after the last clause", Quoted(*scan, place)));
        return entries;
      }
      open = literal != 0;
      if (literal == 0)
        clause++;
      else if (literal != no_number && std::abs(literal) > formula.nvariables)
        FaultAt(*scan, place,
                fmt::format("literal {} in clause {} (line {}): there are only {} variables", literal,
                            clause + 1, scan->line, formula.nvariables));
      else if (literal != no_number)
        entries.push_back({clause, literal > 0 ? 2 * (literal - 1) : 2 * (-literal - 1) + 1});
    }
  }
  if (clause < formula.nclauses)
    FaultAt(*scan, scan->at,
            open ? fmt::format("clause {} does not end with 0", clause + 1)
                 : fmt::format("the text ends after {} of {} clauses", clause, formula.nclauses));
  return entries;
}

Hgr ReadCnf(const std::string &name, std::string_view text, Model model, Problems *problems)
{
  Scan scan = StartScan(name, text, problems, 'c');
  NextFilledLine(&scan);
  const Scan header = scan;
  const Formula formula = ReadHeader(&scan);

  if (formula.nvariables > INT_MAX / 2)
    FailAt(header, header.at, fmt::format("more than {} variables", INT_MAX / 2));
  std::vector<Entry> entries = ReadClauses(&scan, formula);
  if (model == Model::LITERAL)
    return HgrOfEntries(header, formula.nclauses, 2 * formula.nvariables, entries);
  for (Entry &entry : entries)
    entry.cell /= 2;
  if (model != Model::DUAL)
    return HgrOfEntries(header, formula.nclauses, formula.nvariables, entries);
  CheckProportion(header, "nets", formula.nvariables, text.size());
  for (Entry &entry : entries)
    std::swap(entry.net, entry.cell);
  return HgrOfEntries(header, formula.nvariables, formula.nclauses, entries);
}

} // namespace kapris_cli
