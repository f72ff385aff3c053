// tests/support/build.h - hypergraphs for tests: literal nets, and seeded random ones.
// SPDX-License-Identifier: MIT
#pragma once

#include "base/memory.h"
#include "base/output.h"

#include <algorithm>
#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <vector>

// The names of the library, which tests look into.
using namespace kapris::engine::base;

typedef std::vector<std::vector<int>> Nets;
typedef std::vector<std::int64_t> Weights;

// A hypergraph as data, so that a failing one can be printed and passed to the entry points.
struct Instance {
  int ncells;
  Nets nets;
  Weights cellwgt, netwgt; // empty = all 1

  std::vector<int> NetPtr() const;
  std::vector<int> NetInd() const;
  std::string Literal() const; // as the source text of this record
};

// Of 32 bits; they must fit.
std::vector<int> Narrow(const Weights &weights);

// What the environment sets for a test that can be made longer.
long Setting(const char *name, long usual);

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
  ODD_ALL = 63,
  ODD_WIDE = 64 // weights that fit in no 32 bits; with ODD_WEIGHTS
};

// Mostly local nets of 2 to 6 pins.
Instance RandomInstance(TestRandom *random, int ncells, int nnets, int oddities);

// Objectives by the definition, from data only.
std::int64_t CutOf(const Instance &instance, const std::vector<int> &part);
std::int64_t SoedOf(const Instance &instance, const std::vector<int> &part);

#define EXPECT_VALID(validator) EXPECT_STREQ(validator, nullptr)

// Expects what the validator says of a record while the field has that value; without it, the record is valid.
template <class Field, class Value, class Validator>
void ExpectNamed(Field *field, Value value, const char *message, Validator validator)
{
  Field damaged = static_cast<Field>(value);

  EXPECT_VALID(validator());
  std::swap(*field, damaged);
  EXPECT_STREQ(validator(), message);
  std::swap(*field, damaged);
}

// Runs the statement with an error handler and expects this message; everything that it allocated is released.
#define EXPECT_FATAL(statement, text)                                                                        \
  do {                                                                                                       \
    const std::uint64_t serial_ = CurrentLedger()->serial;                                                   \
    std::string message_ = "no error";                                                                       \
    PushErrorHandler();                                                                                      \
    try {                                                                                                    \
      statement;                                                                                             \
    } catch (const FatalError &error) {                                                                      \
      message_ = error.message;                                                                              \
    }                                                                                                        \
    PopErrorHandler();                                                                                       \
    ReleaseLedger(serial_);                                                                                  \
    EXPECT_EQ(message_, text);                                                                               \
  } while (0)
