// formats/cnf.cpp - the readers of DIMACS formulas, without and with weights of clauses.
// SPDX-License-Identifier: MIT
//
//   header   comments, then "p cnf", variables and clauses; bounded   ReadHeader
//   clauses  numbers until 0, over any number of lines                ReadClauses
//
// Entries are read as (clause, literal): variable v is 2v-2, its negation 2v-1, and the models follow from that.

#include "formats/entries.h"
#include "formats/formats.h"
#include "formats/nets.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <fmt/core.h>
#include <utility>

namespace kapris_formats
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

// What the formula becomes; the weights, if there are any, are those of clauses.
static Hgr HgrOfFormula(const Scan &header, const Formula &formula, Model model, std::vector<Entry> entries,
                        std::vector<std::int64_t> weights, size_t length)
{
  Hgr hgr;

  if (formula.nvariables > INT_MAX / 2)
    FailAt(header, header.at, fmt::format("more than {} variables", INT_MAX / 2));
  if (model == Model::DUAL) {
    CheckProportion(header, "nets", formula.nvariables, length);
    for (Entry &entry : entries)
      entry = {entry.cell / 2, entry.net};
    hgr = HgrOfEntries(header, formula.nvariables, formula.nclauses, entries);
    hgr.cellwgts = std::move(weights);
    return hgr;
  }
  if (model != Model::LITERAL)
    for (Entry &entry : entries)
      entry.cell /= 2;
  hgr =
      HgrOfEntries(header, formula.nclauses, (model == Model::LITERAL ? 2 : 1) * formula.nvariables, entries);
  hgr.netwgts = std::move(weights);
  return hgr;
}

Hgr ReadCnf(const std::string &name, std::string_view text, Model model, Problems *problems)
{
  Scan scan = StartScan(name, text, problems, 'c');
  NextFilledLine(&scan);
  const Scan header = scan;
  const Formula formula = ReadHeader(&scan);

  if (formula.nvariables > INT_MAX / 2)
    FailAt(header, header.at, fmt::format("more than {} variables", INT_MAX / 2));
  return HgrOfFormula(header, formula, model, ReadClauses(&scan, formula), {}, text.size());
}

// ----------------------------------------------------------------------------------------------------------
// With weights: the old form has a header, the new one neither header nor counts, and "h" for a hard clause

namespace
{

struct WeightedClauses {
  Formula formula = {0, 0};
  std::vector<Entry> entries;
  std::vector<std::int64_t> weights;
  std::vector<size_t> hard; // whose weight is that of all soft ones, and 1
  std::int64_t total = 0;   // of all soft ones
};

} // namespace

// "p wcnf VARIABLES CLAUSES", then perhaps the weight that hard clauses have. False if the text does not begin so.
static bool ReadWeightedHeader(Scan *scan, Formula *formula, std::string_view *hard)
{
  Scan ahead = *scan;

  if (NextWord(&ahead) != "p")
    return false;
  NextInLine(&ahead);
  if (NextWord(&ahead) != "wcnf")
    FailAt(*scan, scan->at, "the header must be 'p wcnf VARIABLES CLAUSES', or none");
  *scan = ahead;
  formula->nvariables = ReadCount(scan, "the number of variables");
  formula->nclauses = ReadCount(scan, "the number of clauses");
  NextInLine(scan);
  const char *place = scan->at;
  *hard = NextWord(scan);
  if (!std::all_of(hard->begin(), hard->end(), IsDigit))
    FailAt(*scan, place,
           fmt::format("the weight of hard clauses: {} is not a whole number", Quoted(*scan, place)));
  EndLine(scan, "the header");
  return true;
}

// The literals up to 0; faults name those above the variables if their number is known.
static void ReadLiterals(Scan *scan, int nvariables, WeightedClauses *clauses)
{
  const int clause = clauses->formula.nclauses;

  for (;;) {
    if (!NextInLine(scan) && !NextFilledLine(scan)) {
      FaultAt(*scan, scan->at, fmt::format("clause {} does not end with 0", clause + 1));
      return;
    }
    NextInLine(scan);
    const char *place = scan->at;
    const int literal = ReadSigned(scan, "literal");
    if (literal == 0)
      return;
    if (literal == no_number)
      continue;
    const int variable = std::abs(literal), most = nvariables < 0 ? INT_MAX / 2 : nvariables;
    if (variable > most) {
      FaultAt(*scan, place,
              fmt::format("literal {} in clause {} (line {}): there are only {} variables", literal,
                          clause + 1, scan->line, most));
      continue;
    }
    clauses->formula.nvariables = std::max(clauses->formula.nvariables, variable);
    clauses->entries.push_back({clause, literal > 0 ? 2 * (literal - 1) : 2 * (-literal - 1) + 1});
  }
}

// hard: the word for a hard clause; empty: none is.
static WeightedClauses ReadWeightedClauses(Scan *scan, int nvariables, std::string_view hard)
{
  WeightedClauses clauses;

  while (NextFilledLine(scan)) {
    do {
      const Scan word = *scan;
      if (NextWord(scan) == hard) {
        clauses.hard.push_back(clauses.weights.size());
        clauses.weights.push_back(0);
      } else {
        *scan = word;
        const std::int64_t weight = ReadWeight(scan, "clause weight", &clauses.total);
        clauses.weights.push_back(std::max<std::int64_t>(weight, 0));
      }
      ReadLiterals(scan, nvariables, &clauses);
      clauses.formula.nclauses++;
    } while (NextInLine(scan));
  }
  return clauses;
}

// A hard clause weighs more than all soft ones together.
static void WeighHardClauses(const Scan &header, WeightedClauses *clauses)
{
  const std::int64_t weight = clauses->total + 1;

  for (const size_t clause : clauses->hard)
    clauses->weights[clause] = weight;
  if (!clauses->hard.empty() &&
      weight > (most_weight - clauses->total) / static_cast<std::int64_t>(clauses->hard.size()))
    FaultAt(header, header.at,
            fmt::format(
                "{} hard clauses, each heavier than all soft ones, which weigh {}, take the total above {}: "
                "--unit-weights reads all as weight 1",
                clauses->hard.size(), clauses->total, most_weight));
}

Hgr ReadWcnf(const std::string &name, std::string_view text, Model model, bool unit_weights,
             Problems *problems)
{
  Scan scan = StartScan(name, text, problems, 'c');
  Formula declared = {-1, 0};
  std::string_view hard = "h";

  if (!NextFilledLine(&scan))
    FailAt(scan, scan.at, "there is neither a header nor a clause");
  const Scan header = scan;
  const bool counted = ReadWeightedHeader(&scan, &declared, &hard);
  WeightedClauses clauses = ReadWeightedClauses(&scan, declared.nvariables, hard);
  if (counted && declared.nclauses != clauses.formula.nclauses)
    FaultAt(header, header.at,
            fmt::format("the header says {} clauses, but there are {}", declared.nclauses,
                        clauses.formula.nclauses));
  if (counted)
    clauses.formula.nvariables = declared.nvariables;
  if (unit_weights)
    clauses.weights.clear();
  else
    WeighHardClauses(header, &clauses);
  return HgrOfFormula(header, clauses.formula, model, std::move(clauses.entries), std::move(clauses.weights),
                      text.size());
}

} // namespace kapris_formats
