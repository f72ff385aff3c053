// fuzz/fuzz.cpp - hypergraphs out of bytes.
// SPDX-License-Identifier: MIT

#include "fuzz.h"

#include <cstdio>
#include <cstdlib>

// An expectation of the test helpers that fails is a finding.
static const bool breaks = (testing::GTEST_FLAG(break_on_failure) = true);

void Expect(const std::string &flaw)
{
  if (flaw.empty() && breaks)
    return;
  std::fprintf(stderr, "FLAW: %s\n", flaw.c_str());
  std::abort();
}

int Bytes::Below(int n)
{
  int value = at != end ? *at++ : 0;

  if (n > 256)
    value = 256 * value + (at != end ? *at++ : 0);
  return value % n;
}

bool Bytes::Flag()
{
  return Below(2) == 1;
}

// A few weights in turn, so that long arrays cost few bytes.
static Weights DecodeWeights(Bytes *bytes, std::size_t n)
{
  const int period = bytes->Below(9);
  Weights turn, weights;

  for (int i = 0; i < period; i++)
    turn.push_back(bytes->Flag() ? bytes->Below(8) : bytes->Below(5000));
  for (std::size_t i = 0; period > 0 && i < n; i++)
    weights.push_back(turn[i % turn.size()]);
  return weights;
}

Instance DecodeInstance(Bytes *bytes)
{
  const int shape = bytes->Below(16);
  const bool israndom = shape >= 8;
  // Coarsening begins above 100 cells.
  const int ncells = shape == 15 ? 101 + bytes->Below(50) : bytes->Below(33);
  Instance instance = {ncells, {}, {}, {}};

  if (israndom) {
    const int oddities = bytes->Below(ODD_ALL + 1) & ~ODD_WEIGHTS, nnets = bytes->Below(2 * ncells + 1);
    TestRandom random = {static_cast<std::uint64_t>(bytes->Below(65536))};
    instance = RandomInstance(&random, ncells, nnets, oddities);
  }
  for (int nnets = bytes->Below(israndom ? 4 : 40); nnets > 0; nnets--) {
    std::vector<int> net;
    for (int npins = ncells == 0 ? 0 : bytes->Below(7); npins > 0; npins--)
      net.push_back(bytes->Below(ncells));
    instance.nets.push_back(net);
  }
  instance.cellwgt = DecodeWeights(bytes, static_cast<std::size_t>(ncells));
  instance.netwgt = DecodeWeights(bytes, instance.nets.size());
  return instance;
}

std::vector<int> DecodeParts(Bytes *bytes, int ncells, int nparts, int lowest)
{
  std::vector<int> turn, parts;

  for (int period = 1 + bytes->Below(40); period > 0; period--)
    turn.push_back(lowest + bytes->Below(nparts - lowest));
  for (int i = 0; i < ncells; i++)
    parts.push_back(turn[static_cast<std::size_t>(i) % turn.size()]);
  return parts;
}

int DecodeExtreme(Bytes *bytes)
{
  static const int values[] = {-1, INT_MIN, INT_MAX, 1 << 30, 715827883, 214748365, 0, 50, 4};

  return bytes->Flag() ? values[bytes->Below(9)] : bytes->Below(600) - 100;
}

void Corrupt(Bytes *bytes, Instance *instance)
{
  const int what = bytes->Below(3), nnets = static_cast<int>(instance->nets.size());
  const auto corrupt = [bytes](auto *list) {
    if (!list->empty())
      (*list)[static_cast<std::size_t>(bytes->Below(static_cast<int>(list->size())))] = DecodeExtreme(bytes);
  };

  if (what == 0 && nnets > 0)
    corrupt(&instance->nets[static_cast<std::size_t>(bytes->Below(nnets))]);
  else
    corrupt(what == 1 ? &instance->cellwgt : &instance->netwgt);
}
