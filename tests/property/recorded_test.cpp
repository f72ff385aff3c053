// tests/property/recorded_test.cpp - the same call gives the same bits on every machine and in every version.
// SPDX-License-Identifier: MIT
//
// Results are a promise to users, so a difference here is a change of results and not of the test: part vector,
// objective and the whole trace are compared, the latter two as a hash. Run with KAPRIS_RECORD=1 to print the table.

#include "base/random.h"
#include "property/run.h"

#include <cstdlib>
#include <string>

namespace
{

struct Recorded {
  Entry entry;
  int ncells, oddities; // of the hypergraph; it has as many nets as cells
  int nparts, UBfactor;
  std::vector<int> options; // 1 .. 6: Nruns, Ctype, Rtype, Vcycle, Reconst, Fixed
  int cut;
  std::uint64_t hash;
};

const Recorded recorded[] = {
    {PART_RECURSIVE, 900, ODD_ALL, 2, 5, {3, 1, 1, 1, 0, 0}, 8091, 0x52cd1cff8868ed9a},
    {PART_RECURSIVE, 900, ODD_LARGE, 7, 1, {2, 4, 2, 2, 1, 0}, 231, 0x7f6f1908799836e8},
    {PART_RECURSIVE, 700, ODD_WEIGHTS, 3, 10, {2, 5, 3, 3, 0, 1}, 20489, 0x7dc518714ffbe403},
    {PART_RECURSIVE, 700, ODD_ISLANDS | ODD_WEIGHTS, 66, 20, {1, 3, 1, 0, 1, 0}, 8331, 0x70edd99a00f5143d},
    {PART_RECURSIVE_INTERNAL, 600, ODD_DUPLICATES, 5, 3, {2, 2, 3, 1, 0, 1}, 210, 0x30638c1dabce994f},
    {PART_KWAY, 1500, ODD_LARGE | ODD_TINY, 4, 5, {3, 1, 1, 1, 0, 0}, 298, 0xf48d70f65425ec0f},
    {PART_KWAY, 1500, ODD_ALL, 3, 8, {2, 4, 2, 3, 0, 0}, 20357, 0xafd47f84624be5a9},
    {PART_KWAY, 200, 0, 9, 20, {11, 5, 2, 2, 0, 0}, 199, 0x8c6ef126b9dcde27},
    {REFINE_2WAY, 500, ODD_ALL, 2, 10, {1, 1, 1, 1, 0, 0}, 300, 0x99cd5c369783b9b1},
    {REFINE_KWAY, 1300, ODD_ISLANDS, 6, 10, {1, 1, 1, 1, 0, 0}, 517, 0x7e912bf9f77a93e3},
    {REFINE_KWAY, 1300, ODD_ALL, 12, 30, {1, 1, 2, 1, 0, 0}, 25264, 0xa55bcdf9fc207bae},
};

} // namespace

static Call CallOf(const Recorded &record)
{
  TestRandom random = {static_cast<std::uint64_t>(record.ncells + 1000 * record.oddities)};
  Call call = {record.entry,   RandomInstance(&random, record.ncells, record.ncells, record.oddities),
               record.nparts,  record.UBfactor,
               record.options, {}};

  call.options.insert(call.options.begin(), 1);
  call.options.push_back(41);  // seed
  call.options.push_back(159); // every trace but moves and times
  if (record.entry == REFINE_2WAY || record.entry == REFINE_KWAY)
    call.part = RandomParts(&random, record.ncells, record.nparts, 0);
  else if (record.options[5])
    call.part = RandomParts(&random, record.ncells, record.nparts, 90);
  return call;
}

// FNV-1a.
static std::uint64_t Hash(std::uint64_t hash, const std::string &text)
{
  for (unsigned char c : text)
    hash = (hash ^ c) * 1099511628211u;
  return hash;
}

// Machines differ in the sign that they print for what is not a number, as the balance of a hypergraph without weight.
static std::string WithoutSignsOfNan(const std::string &text)
{
  std::string plain;

  for (std::size_t i = 0; i < text.size(); i++) {
    if (text.compare(i, 3, "nan") == 0) {
      if (!plain.empty() && plain.back() == '-')
        plain.pop_back();
      while (!plain.empty() && plain.back() == ' ')
        plain.pop_back();
      plain.push_back(' ');
    }
    plain.push_back(text[i]);
  }
  return plain;
}

TEST(recorded, results_and_traces_are_the_same_to_the_bit)
{
  const bool print = std::getenv("KAPRIS_RECORD") != nullptr;

  for (const Recorded &record : recorded) {
    const Call call = CallOf(record);
    InitRandom__(1); // what a refine entry finds in a fresh thread
    testing::internal::CaptureStdout();
    const Result result = RunCall(call);
    std::uint64_t hash =
        Hash(14695981039346656037u, WithoutSignsOfNan(testing::internal::GetCapturedStdout()));
    for (int part : result.part)
      hash = Hash(hash, std::to_string(part) + " ");

    if (print)
      std::printf("%d, 0x%016llx\n", result.cut, static_cast<unsigned long long>(hash));
    SCOPED_TRACE("record " + std::to_string(&record - recorded));
    EXPECT_EQ(result.cut, record.cut);
    EXPECT_EQ(hash, record.hash);
  }
}
