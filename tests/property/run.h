// tests/property/run.h - one call of an entry point as data.
// SPDX-License-Identifier: MIT
#pragma once

#include "support/build.h"

#include <string>
#include <vector>

enum Entry { PART_RECURSIVE, PART_RECURSIVE_INTERNAL, PART_KWAY, REFINE_2WAY, REFINE_KWAY, NENTRIES };

struct Call {
  Entry entry;
  Instance instance;
  int nparts, UBfactor;
  std::vector<int> options; // 9
  std::vector<int> part;    // input of the refine entries and of fixed cells, else empty
};

struct Result {
  std::vector<int> part;
  int cut;
};

// The clock that seeds stands still in these tests, so every run can be repeated.
Result RunCall(const Call &call);
// The same; what the library prints goes to a string.
Result RunTraced(const Call &call, std::string *printed);
// What is wrong with a result and what the library printed, or nothing.
std::string WrongIn(const Call &call, const Result &result, const std::string &printed);
// The first property that the call breaks, or nothing. Throws FatalError if the library refuses the call.
std::string Broken(const Call &call);
// As the source text of a Call.
std::string Literal(const Call &call);
// A random partition, or pre-assigned parts with about the given percentage of free cells.
std::vector<int> RandomParts(TestRandom *random, int ncells, int nparts, int freepercent);
