// tests/support/build.cpp - hypergraphs for tests.
// SPDX-License-Identifier: MIT

#include "support/build.h"

#include <cstdlib>
#include <set>
#include <sstream>

// No test leaves a block behind. A fatal error is thrown, so that it fails its test instead of ending the program with
// status 0, which looks like success.
struct Watch : testing::EmptyTestEventListener {
  void OnTestEnd(const testing::TestInfo &) override
  {
    EXPECT_EQ(CurrentLedger()->blocks, 0u);
  }
};
static const bool watched =
    (PushErrorHandler(), testing::UnitTest::GetInstance()->listeners().Append(new Watch), true);

std::vector<int> Instance::NetPtr() const
{
  std::vector<int> netptr = {0};

  for (const std::vector<int> &net : nets)
    netptr.push_back(netptr.back() + static_cast<int>(net.size()));
  return netptr;
}

std::vector<int> Instance::NetInd() const
{
  std::vector<int> netind;

  for (const std::vector<int> &net : nets)
    netind.insert(netind.end(), net.begin(), net.end());
  netind.reserve(1); // data() is not NULL, as a caller's array would be
  return netind;
}

template <class T>
static void PutList(std::ostream &out, const std::vector<T> &list)
{
  out << '{';
  for (std::size_t i = 0; i < list.size(); i++)
    out << (i > 0 ? ", " : "") << list[i];
  out << '}';
}

std::string Instance::Literal() const
{
  std::ostringstream out;

  out << '{' << ncells << ", {";
  for (std::size_t j = 0; j < nets.size(); j++) {
    out << (j > 0 ? ", " : "");
    PutList(out, nets[j]);
  }
  out << "}, ";
  PutList(out, cellwgt);
  out << ", ";
  PutList(out, netwgt);
  out << '}';
  return out.str();
}

std::vector<int> Narrow(const Weights &weights)
{
  std::vector<int> narrow;

  for (std::int64_t weight : weights) {
    EXPECT_EQ(static_cast<int>(weight), weight);
    narrow.push_back(static_cast<int>(weight));
  }
  return narrow;
}

long Setting(const char *name, long usual)
{
  const char *text = std::getenv(name);

  return text == nullptr ? usual : std::atol(text);
}

int TestRandom::Below(int n)
{
  state = state * 6364136223846793005u + 1442695040888963407u;
  return static_cast<int>((state >> 33) % static_cast<std::uint64_t>(n));
}

bool TestRandom::Chance(int percent)
{
  return Below(100) < percent;
}

static std::vector<int> RandomNet(TestRandom *random, int ncells, int size)
{
  const int base = random->Below(ncells), reach = random->Chance(80) ? std::max(2 * size, 12) : ncells;
  std::set<int> pins;

  for (int tries = 0; static_cast<int>(pins.size()) < size && tries < 4 * size; tries++)
    pins.insert((base + random->Below(reach)) % ncells);
  return std::vector<int>(pins.begin(), pins.end());
}

Instance RandomInstance(TestRandom *random, int ncells, int nnets, int oddities)
{
  Instance instance = {ncells, {}, {}, {}};
  // Islands are the cells behind those that nets may name.
  const int named =
      (oddities & ODD_ISLANDS) ? std::max(1, ncells - 1 - random->Below(1 + ncells / 4)) : ncells;

  if (ncells > 0) {
    for (int j = 0; j < nnets; j++) {
      instance.nets.push_back(RandomNet(random, named, 2 + random->Below(5)));
      std::vector<int> &net = instance.nets.back();
      if ((oddities & ODD_TINY) && random->Chance(8))
        net.resize(static_cast<std::size_t>(std::min(random->Below(2), static_cast<int>(net.size()))));
      if ((oddities & ODD_REPEATED) && !net.empty() && random->Chance(8))
        net.push_back(net[static_cast<std::size_t>(random->Below(static_cast<int>(net.size())))]);
      if ((oddities & ODD_DUPLICATES) && random->Chance(15))
        net = instance.nets[static_cast<std::size_t>(random->Below(j + 1))];
      if ((oddities & ODD_LARGE) && named > 60 && random->Chance(2))
        net = RandomNet(random, named, 55);
    }
  }
  if (oddities & ODD_WEIGHTS) {
    for (int i = 0; i < ncells; i++)
      instance.cellwgt.push_back(random->Chance(3) ? ncells * 4 : random->Below(5));
    for (std::size_t j = 0; j < instance.nets.size(); j++)
      instance.netwgt.push_back(random->Chance(3) ? 4000 : random->Below(6));
  }
  if (oddities & ODD_WIDE) {
    for (Weights *weights : {&instance.cellwgt, &instance.netwgt})
      for (std::int64_t &weight : *weights)
        weight = weight * (std::int64_t{1} << 40) + random->Below(1000);
  }
  return instance;
}

// How many parts the net touches.
static std::size_t Spread(const std::vector<int> &net, const std::vector<int> &part)
{
  std::set<int> parts;

  for (int pin : net)
    parts.insert(part[static_cast<std::size_t>(pin)]);
  return parts.size();
}

template <class Value>
static std::int64_t SumOfCutNets(const Instance &instance, const std::vector<int> &part, Value value)
{
  std::int64_t sum = 0;

  for (std::size_t j = 0; j < instance.nets.size(); j++) {
    const std::size_t spread = Spread(instance.nets[j], part);
    if (spread > 1)
      sum += value(spread) * (instance.netwgt.empty() ? 1 : instance.netwgt[j]);
  }
  return sum;
}

std::int64_t CutOf(const Instance &instance, const std::vector<int> &part)
{
  return SumOfCutNets(instance, part, [](std::size_t) { return std::int64_t{1}; });
}

std::int64_t SoedOf(const Instance &instance, const std::vector<int> &part)
{
  return SumOfCutNets(instance, part, [](std::size_t spread) { return static_cast<std::int64_t>(spread); });
}
