// tests/refine/moves_test.cpp - how a move changes the gains of the other pins of a net, row by row of the table in
// moves.h, and how moves are undone.
// SPDX-License-Identifier: MIT

#include "refine/twoway/moves.h"
#include "support/graph.h"

typedef std::vector<int> Ints;

namespace
{

// A bisection, one digit per cell, in the middle of a pass.
struct Pass : FMState {
  HGraph *graph;
  FMExactness exactness; // of the kind of pass

  Pass(HGraph *hypergraph, const std::string &sides, int nfixed, FMExactness ofpass)
      : FMState{}, graph(hypergraph), exactness(ofpass)
  {
    Ints where;
    for (char digit : sides)
      where.push_back(digit - '0');
    graph->nfixed = nfixed;
    FM_Alloc(graph, where.data(), this);
    FM_StartLog(this, FM_ComputeGains(graph, this, FROM_PINS));
    FM_FillQueues(graph, this, BOTH_SIDES);
    if (exactness == FREE_EXACT)
      FM_LockAnchors(graph, this);
  }
  Pass(const Pass &) = delete;
  ~Pass()
  {
    FM_Free(this);
    FreeHGraph__(graph);
  }

  Weights Gains() const
  {
    Weights gains;
    for (int c = 0; c < graph->ncells; c++)
      gains.push_back(nodes[c].gain);
    return gains;
  }

  std::string Sides() const
  {
    std::string sides;
    for (int c = 0; c < graph->ncells; c++)
      sides += static_cast<char>('0' + FM_Side(this, c));
    return sides;
  }

  // As the passes move a cell.
  void Move(int c)
  {
    const int from = FM_Side(this, c);

    if (place[c] < LOCKED)
      PQueueDelete(&queue[from], c, nodes[c].gain);
    newcut = SubWrap(newcut, nodes[c].gain);
    FM_Lock(this, c);
    swaps[nmoves++] = c;
    if (exactness == ALL_EXACT) {
      FM_MoveExactly<UPDATE_QUEUE>(this, c, from, 1 - from);
    } else {
      FM_Shift(this, c, from, 1 - from);
      FM_UpdateFree(this, c, from, 1 - from);
    }
    EXPECT_VALID(CheckMove(graph, this, exactness, 0));
  }
};

} // namespace

static std::string Swapped(std::string sides)
{
  for (char &side : sides)
    side = side == '0' ? '1' : '0';
  return sides;
}

// The changes of all gains but the moved cell's by net weights: + and - one, P and M two.
static std::string Changes(const Weights &before, const Weights &after, int moved, std::int64_t w)
{
  std::string changes;

  for (std::size_t c = 0; c < before.size(); c++) {
    const std::int64_t by = (after[c] - before[c]) / w;
    EXPECT_EQ(by * w, after[c] - before[c]);
    if (static_cast<int>(c) == moved)
      changes += '*';
    else
      changes += by >= -2 && by <= 2 ? "M-.+P"[by + 2] : '?';
  }
  return changes;
}

TEST(moves, change_the_gains_that_the_table_names_and_no_others)
{
  const struct {
    std::string sides; // of the pins of one net
    int nfixed;        // the first so many cannot move
    Ints moves;
    std::string exact; // changes by the last move: of all pins ...
    std::string free;  // ... or of free pins only; empty = the same
  } rows[] = {
      // Left on from: many, 1 or none; now on to: 1, 2 or many.
      {"0000", 0, {3}, "+++*", ""}, // the net is cut already
      {"0001", 0, {0}, "*..-", ""}, // 3 is no longer alone
      {"00011", 0, {0}, "*....", ""},
      {"0000011", 0, {4}, "....*..", ""},
      {"000", 0, {1}, "+*+", ""},
      {"001", 0, {0}, "*+-", ""}, // 1 can follow
      {"0011", 0, {1}, "+*..", ""},
      {"00111111", 0, {0}, "*+......", ""},
      {"011", 0, {0}, "*--", ""}, // moving back would cut it
      {"01111", 0, {0}, "*----", ""},
      // Two pins: both entries of the table for the one that stays.
      {"00", 0, {0}, "*P", ""},
      {"01", 0, {0}, "*M", ""},

      // Anchors have gains but no place in the queues. Without a locked pin on to, the last free one can follow; with
      // locked pins on both sides nothing is to be gained, but it is no longer alone.
      {"000", 1, {1}, "+*+", ".*+"},
      {"001", 1, {1}, "+*-", ".*-"},
      {"100", 1, {1}, "-*+", ".*+"},
      {"0111", 1, {1}, "-*..", ".*.."},
      {"00", 1, {1}, "P*", ".*"},
      {"011", 2, {2}, "-+*", "..*"},
      // Pins that have moved are locked too.
      {"0001", 0, {0, 1}, ".*+.", ".*+."},
      {"0001", 0, {0, 3}, "+..*", "...*"},
      {"0001", 0, {0, 3, 1}, "-*..", ".*.."},
      {"0001", 0, {0, 3, 1, 2}, "..*+", "..*."},
      {"00", 0, {0, 1}, "M*", ".*"},
      {"000", 0, {0, 1, 2}, "--*", "..*"},
  };

  for (const std::int64_t w : {std::int64_t{3}, std::int64_t{1000}, 3 * UNIT}) // in buckets, in a heap
    for (const auto &row : rows)
      for (bool swapped : {false, true})
        for (FMExactness exactness : {ALL_EXACT, FREE_EXACT}) {
          SCOPED_TRACE(row.sides + " " + testing::PrintToString(row.moves) + (swapped ? " swapped" : ""));
          const int npins = static_cast<int>(row.sides.size());
          Instance net = {npins, {{}}, {}, {w}};
          for (int c = 0; c < npins; c++)
            net.nets[0].push_back(c);
          Pass pass(HGraphOf(net), swapped ? Swapped(row.sides) : row.sides, row.nfixed, exactness);
          EXPECT_EQ(pass.queue[0].type, w == 3 ? PQ_BUCKETS : PQ_HEAP);

          Weights before;
          for (int c : row.moves) {
            before = pass.Gains();
            pass.Move(c);
          }
          const std::string changes = Changes(before, pass.Gains(), row.moves.back(), w);
          EXPECT_EQ(changes, exactness == ALL_EXACT || row.free.empty() ? row.exact : row.free);
        }
}

TEST(moves, are_undone_to_any_point_of_the_pass)
{
  // {0,1,2} of weight 2, {2,3} of 1, {1,3,4,5} of 3, {0,5} of 1; 0 1 2 on side 0, 3 4 5 on side 1
  const Instance drawn = {
      6, {{0, 1, 2}, {2, 3}, {1, 3, 4, 5}, {0, 5}}, {1, 2, 3, 4, 5, 6}, Units({2, 1, 3, 1})};
  const Ints moves = {0, 3, 1, 4};
  const struct {
    std::string sides;
    Weights gains, pwgts;
    std::int64_t cut;
  } points[] = {{"000111", {-1, 1, -1, 1, 0, 1}, {6, 15}, 5},
                {"100111", {1, 3, 1, 1, 0, -1}, {5, 16}, 6},
                {"100011", {1, 0, -1, -1, 0, -1}, {9, 12}, 5},
                {"110011", {-1, 0, 1, 2, 0, -1}, {7, 14}, 5},
                {"110001", {-1, 0, 1, -1, 0, -1}, {12, 9}, 5}};

  for (int best = -1; best < 4; best++) {
    SCOPED_TRACE(best);
    const auto &point = points[best + 1];
    for (FMExactness exactness : {ALL_EXACT, FREE_EXACT}) {
      Pass pass(HGraphOf(drawn), "000111", 0, exactness);
      EXPECT_EQ(pass.initcut, 5 * UNIT);
      for (std::size_t n = 0; n < moves.size(); n++) {
        pass.Move(moves[n]);
        EXPECT_EQ(pass.newcut, points[n + 1].cut * UNIT);
        if (exactness == ALL_EXACT) {
          EXPECT_EQ(pass.Gains(), Units(points[n + 1].gains)) << n;
        }
      }
      for (int n = 3; n > best; n--) {
        const int c = pass.swaps[n];
        exactness == ALL_EXACT ? FM_Undo(&pass, c)
                               : FM_Shift(&pass, c, FM_Side(&pass, c), 1 - FM_Side(&pass, c));
      }
      pass.best = best;
      // Exact gains are those of the point; the other passes compute them again from what they know of this one.
      if (exactness == FREE_EXACT) {
        EXPECT_EQ(FM_ComputeGains(pass.graph, &pass, FROM_PASS), point.cut * UNIT);
      }
      EXPECT_EQ(pass.Sides(), point.sides);
      EXPECT_EQ(pass.Gains(), Units(point.gains));
      EXPECT_EQ(WeightsOf(2, pass.pwgts), point.pwgts);
      EXPECT_VALID(CheckGains(pass.graph, &pass, ALL_EXACT));
    }
  }
}
