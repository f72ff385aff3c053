// tests/control/entries_test.cpp - what the entry points promise about the partitions that they return.
// SPDX-License-Identifier: MIT

#include "control/kapris.h"
#include "support/build.h"

#include <tuple>

namespace
{

typedef std::vector<int> Ints;
typedef decltype(&KAPRIS_PartRecursive) Entry;

void TwoWayRefine(int ncells, int nnets, const int *cellwgts, const int *netptr, const int *netind,
                  const int *netwgts, int, int UBfactor, const int *options, int *part, int *cut)
{
  KAPRIS_2WayRefine(ncells, nnets, cellwgts, netptr, netind, netwgts, UBfactor, options, part, cut);
}

const Entry RECURSIVE = KAPRIS_PartRecursive, INTERNAL = KAPRIS_PartRecursiveInternal, KWAY = KAPRIS_PartKway,
            REFINE2 = TwoWayRefine, REFINEK = KAPRIS_KWayRefine;

struct Result {
  Ints part;
  int cut;
  std::string text;
};

} // namespace

// Calls the entry and checks what holds for every call.
static Result Partition(Entry entry, const Instance &instance, int nparts, const Ints &options,
                        const Ints &part)
{
  const Instance data = instance;
  const Ints netptr = data.NetPtr(), netind = data.NetInd(), slots = options;
  Result result = {part, -1, ""};

  testing::internal::CaptureStdout();
  entry(data.ncells, static_cast<int>(data.nets.size()), data.cellwgt.empty() ? nullptr : data.cellwgt.data(),
        netptr.data(), netind.data(), data.netwgt.empty() ? nullptr : data.netwgt.data(), nparts, 5,
        slots.data(), result.part.data(), &result.cut);
  result.text = testing::internal::GetCapturedStdout();
  EXPECT_TRUE(netptr == instance.NetPtr() && netind == instance.NetInd() && slots == options &&
              data.cellwgt == instance.cellwgt && data.netwgt == instance.netwgt); // all are the caller's
  for (int p : result.part)
    EXPECT_TRUE(p >= 0 && p < nparts) << p;
  return result;
}

TEST(entries, use_the_defaults_when_slot_0_is_0_and_find_or_keep_the_optimum)
{
  const Instance instance = {6, {{0, 1, 2}, {3, 4, 5}, {2, 3}}, {}, {}};

  for (Entry entry : {RECURSIVE, INTERNAL, KWAY, REFINE2, REFINEK}) {
    const Result result = Partition(entry, instance, 2, {0, -5, 99, 7, -1, 3, 9, 3, 511}, {0, 0, 0, 1, 1, 1});
    EXPECT_EQ(result.cut, 1);
    EXPECT_EQ(result.text, "");
    EXPECT_TRUE((entry != REFINE2 && entry != REFINEK) || result.part == Ints({0, 0, 0, 1, 1, 1}));
  }
}

TEST(entries, take_hypergraphs_without_cells_or_nets_and_more_parts_than_cells)
{
  const Instance instances[] = {{0, {}, {}, {}},
                                {0, {{}, {}}, {}, {}},
                                {1, {}, {}, {}},
                                {1, {{0}}, {}, {}},
                                {5, {}, {}, {}},
                                {3, {{0, 1}, {1, 2}}, {}, {}},
                                {3, {{0, 1, 2}}, {0, 0, 0}, {0}}};

  for (const Instance &instance : instances)
    for (Entry entry : {RECURSIVE, INTERNAL, KWAY, REFINE2, REFINEK})
      for (int nparts : {2, 3, 9}) {
        SCOPED_TRACE(instance.Literal());
        const Ints part(static_cast<std::size_t>(instance.ncells), 0);
        const Result result = Partition(entry, instance, entry == REFINE2 ? 2 : nparts,
                                        {1, 2, 1, 1, nparts % 4, 0, 0, 3, 0}, part);
        EXPECT_EQ(result.cut, CutOf(instance, result.part));
      }
}

TEST(entries, polish_up_to_64_parts)
{
  TestRandom random = {1};
  const Instance instance = RandomInstance(&random, 130, 200, 0);

  for (auto [entry, nparts, polished] : {std::tuple(RECURSIVE, 64, true),
                                         {RECURSIVE, 65, false},
                                         {INTERNAL, 64, false},
                                         {RECURSIVE, 2, false},
                                         {RECURSIVE, 3, true}}) {
    const Result result = Partition(entry, instance, nparts, {-7, 1, 1, 1, 0, 0, 0, 3, 4}, Ints(130));
    EXPECT_EQ(result.text.find("], Balance: [") != std::string::npos, polished) << nparts;
  }
}
