// tests/refine/pqueue_test.cpp - the gain queue: the order in which buckets and heap give their items.
// SPDX-License-Identifier: MIT

#include "base/sort.h"
#include "refine/twoway/pqueue.h"
#include "support/graph.h"

#include <algorithm>

namespace
{

typedef std::vector<int> Ints;

const int HEAP = 200; // a bound on the gains that makes a heap of any queue below

// Items 0, 1, 2, ... with these gains, inserted in this order.
struct Queue : PQueue {
  std::vector<CellNode> links;

  Queue(int maxgain, const Ints &gains) : links(gains.size() + 1)
  {
    PQueueInit__(this, links.data(), static_cast<int>(gains.size()), maxgain);
    for (int item = 0; item < maxnodes; item++)
      PQueueInsert__(this, item, gains[static_cast<std::size_t>(item)]);
  }
  Queue(const Queue &) = delete;
  ~Queue()
  {
    PQueueFree__(this);
  }
  Ints TakeAll()
  {
    Ints items;
    for (int item = PQueueGetMax__(this); item != -1; item = PQueueGetMax__(this))
      items.push_back(item);
    return items;
  }
};

} // namespace

TEST(pqueue, a_weight_limit_above_1000_finds_a_fitting_item_of_positive_gain)
{
  const std::vector<Weight> wgts = {2000, 1002, 1500, 1001, 1, 1001};
  const auto find = [&](int maxgain, const Ints &gains, int limit) {
    Queue queue(maxgain, gains);
    return PQueueSeeConstraintMax(&queue, limit, wgts.data());
  };

  for (auto [limit, item] : {KeyVal{1000, 0}, {1001, 3}, {1002, 1}, {1500, 2}})
    EXPECT_EQ(find(5, {3, 2, 2, 1, 0}, limit), item) << limit;
  EXPECT_EQ(find(5, {3, 2, 2, 0, 0}, 1001), 0); // a gain of 0 does not count
  EXPECT_EQ(find(5, {3, 2, 2, 0, 1}, 1000), 0); // weights do not count yet
  // The heap's array here has the items in their order. The walk goes by position ...
  EXPECT_EQ(find(HEAP, {9, 2, 5}, 1500), 1);
  EXPECT_EQ(find(HEAP, {9, -1, 5}, 1500), 2);            // past a gain that is not positive below one that is
  EXPECT_EQ(find(HEAP, {9, -1, 5, -2, -3, 4}, 1001), 0); // ends at item 3, before item 5
}

TEST(pqueue, agrees_with_a_list_over_random_operations)
{
  for (int maxgain : {3, HEAP}) { // buckets that grow, heap
    Queue queue(maxgain, Ints(30, 0));
    std::vector<KeyVal> list; // the newest first
    TestRandom random = {7};
    PQueueReset__(&queue);
    for (int step = 0; step < 4000; step++) {
      const int gain = random.Below(31) - 15, choice = random.Below(4), seen = PQueueSeeMax__(&queue);
      const int item = choice == 0 ? PQueueGetMax__(&queue) : random.Below(30);
      const auto at = std::find_if(list.begin(), list.end(), [&](KeyVal entry) { return entry.val == item; });
      const auto top =
          std::max_element(list.begin(), list.end(), [](KeyVal a, KeyVal b) { return a.key < b.key; });
      const bool known = at != list.end(), remove = choice < 2, same = known && !remove && at->key == gain;
      if (choice == 0) // a heap may give any item of the highest gain
        ASSERT_TRUE(item == seen && (maxgain == HEAP && known ? at->key == top->key : at == top)) << step;
      else if (known && remove)
        PQueueDelete(&queue, item, at->key);
      else if (known)
        PQueueUpdate__(&queue, item, at->key, gain);
      else if (!remove)
        PQueueInsert__(&queue, item, gain);
      if (known && !same)
        list.erase(at);
      if (!remove && !same)
        list.insert(list.begin(), {gain, item});
      ASSERT_STREQ(CheckQueue(&queue), nullptr) << step;
      ASSERT_EQ(queue.nnodes, static_cast<int>(list.size())) << step;
    }
  }
}
