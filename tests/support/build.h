// tests/support/build.h - hypergraphs for tests: literal nets, and seeded random ones.
// SPDX-License-Identifier: MIT
#pragma once

#include "core/core.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <vector>

typedef std::vector<std::vector<int>> Nets;

// A hypergraph as data, so that a failing one can be printed and passed to the entry points.
struct Instance {
  int ncells;
  Nets nets;
  std::vector<int> cellwgt, netwgt; // empty = all 1

  std::vector<int> NetPtr() const;
  std::vector<int> NetInd() const;
  std::string Literal() const; // as the source text of this record
};

// A record on the heap with its incidence built; nfixed 0. Give it back with FreeHGraph__.
HGraph *HGraphOf(const Instance &instance);
// Cells 0 .. the largest pin, weights 1.
HGraph *HGraphOf(const Nets &nets);
void SetWhere(HGraph *graph, const std::vector<int> &where); // allocates where
std::vector<int> Where(const HGraph *graph);                 // ncells entries

// A generator of its own: tests must not depend on the one under test.
struct TestRandom {
  std::uint64_t state;
  int Below(int n); // 0 .. n-1
  bool Chance(int percent);
};

enum Oddities {    // bits: what RandomInstance may contain
  ODD_WEIGHTS = 1, // weights from 0, and a few heavy cells
  ODD_ISLANDS = 2,
  ODD_DUPLICATES = 4, // nets equal to another net
  ODD_REPEATED = 8,   // a pin listed twice
  ODD_TINY = 16,      // nets of one pin or none
  ODD_LARGE = 32,     // a net above 50 pins
  ODD_ALL = 63
};

// Mostly local nets of 2 to 6 pins.
Instance RandomInstance(TestRandom *random, int ncells, int nnets, int oddities);

// Objectives by the definition, from data only.
long CutOf(const Instance &instance, const std::vector<int> &part);
long SoedOf(const Instance &instance, const std::vector<int> &part);

#define EXPECT_VALID(validator) EXPECT_STREQ(validator, nullptr)

// What the validator says of a record while the field has that value; without it, the record is valid.
struct Damage {
  int *field;
  int value;
  const char *message;
};

template <class Validator>
void ExpectNamed(const std::vector<Damage> &damages, Validator validator)
{
  for (auto [field, value, message] : damages) {
    EXPECT_VALID(validator());
    std::swap(*field, value);
    EXPECT_STREQ(validator(), message);
    std::swap(*field, value);
  }
}

// Runs the statement with an error handler and expects this message; everything that it allocated is released.
#define EXPECT_FATAL(statement, text)                                                                        \
  do {                                                                                                       \
    const std::uint64_t serial_ = CurrentLedger()->serial;                                                       \
    std::string message_ = "no error";                                                                      \
    PushErrorHandler();                                                                                    \
    try {                                                                                                    \
      statement;                                                                                             \
    } catch (const FatalError &error) {                                                                      \
      message_ = error.message;                                                                             \
    }                                                                                                        \
    PopErrorHandler();                                                                                     \
    ReleaseLedger(serial_);                                                                               \
    EXPECT_EQ(message_, text);                                                                              \
  } while (0)
