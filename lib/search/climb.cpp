// lib/search/climb.cpp - refinement of all parts that climbs hills.
// SPDX-License-Identifier: MIT
//
// A search moves the cell of the largest gain to its best part, whether or not that is a gain, and then looks at the
// cells around it again; when it has gone on too long without a better value it takes back what came after the best.
// A round on a level is
//   one search from all cells at the border   long ways, in the first round
//   searches from a few of them each          what the long one does not find
// and the cells that a search has moved stay where they are until the next round, which starts around them.
// A search ends early by the rule of Osipov and Sanders (n-level graph partitioning, 2010): when what its steps have
// gained on average makes it unlikely that it comes back.

#include "climb.h"

#include "netparts.h"

#include "base/random.h"
#include "core/constants.h"

#include <algorithm>
#include <cmath>

namespace kapris::engine::KAPRIS_ENGINE
{

namespace
{

struct Climber {
  const Control *ctrl;
  const SearchGoal *goal;
  const HGraph *graph;
  int *part;
  NetParts pins;
  Array<Weight> pwgts; // [nparts]
  Array<int> counts;   // [nparts] cells

  // The best move of a cell, as it was when it was last looked at.
  Array<Gain> gains;  // [ncells]
  Array<int> targets; // [ncells]
  // Cells by gain, largest first; places holds where a cell stands, -1 = nowhere.
  Array<int> heap, places;

  Array<char> locked; // [ncells] moved in this round, or an anchor
  Array<char> moved;  // [ncells] moved for good in this round
  Array<int> marks;   // [ncells] cells that were met under the number mark
  int mark;

  // Of one move.
  Array<int> around; // cells whose gain it can have raised
  // Of one look at a cell.
  Array<Weight> connected, completed; // [nparts] see FindMove
  Array<int> parts;

  struct Step {
    int cell, from;
  };
  Array<Step> steps; // of one search
};

// When a search ends.
struct StopRule {
  int fruitless;  // steps without a better value
  bool adaptive;  // also when it is unlikely to come back
  double minimal; // steps x mean^2 must exceed variance + minimal

  int steps = 0;
  double mean = 0.0, squares = 0.0;

  void Restart()
  {
    steps = 0;
    mean = squares = 0.0;
  }

  bool Ends(double gain)
  {
    const double off = gain - mean;

    steps++;
    mean += off / steps;
    squares += off * (gain - mean);
    if (steps > fruitless)
      return true;
    return adaptive && steps > 1 && mean < 0.0 && steps * mean * mean > squares / (steps - 1) + minimal;
  }
};

} // namespace

static Weight Excess(const Climber *c, int p)
{
  return std::max<Weight>(0, c->pwgts[At(p)] - c->goal->limits[p]);
}

// ----------------------------------------------------------------------------------------------------------
// Moves

static bool MayLeave(const Climber *c, int v, int p)
{
  return c->counts[At(p)] > 1 && c->pwgts[At(p)] - c->graph->cellwgt[v] >= c->goal->minimums[p];
}

static bool HasRoom(const Climber *c, int v, int p)
{
  return c->graph->cellwgt[v] <= c->goal->limits[p] - c->pwgts[At(p)];
}

// Whether p is filled less than q, for its limit.
static bool IsEmptier(const Climber *c, int p, int q)
{
  return static_cast<double>(c->pwgts[At(p)]) * static_cast<double>(c->goal->limits[q]) <
         static_cast<double>(c->pwgts[At(q)]) * static_cast<double>(c->goal->limits[p]);
}

// Finds the best move of v within the limits, into gains and targets; returns whether there is one. Looks at the parts
// that the nets of v touch.
static bool FindMove(Climber *c, int v)
{
  const HGraph *graph = c->graph;
  const int from = c->part[v];
  Weight freed = 0; // of the nets that v alone holds in its part
  Weight whole = 0; // of the nets that lie in its part

  c->parts.clear();
  for (int i = graph->incptr[v]; i < graph->incptr[v + 1]; i++) {
    const NetHead *net = &c->pins.nets[At(graph->incind[i])];
    if (net->nparts == 1) {
      whole += net->wgt;
      continue;
    }
    const PartPins *list = &c->pins.list[At(net->first)];
    int held = 0, other = -1;
    for (int k = 0; k < net->nparts; k++) {
      const int p = list[k].part;
      if (p == from) {
        held = list[k].pins;
        continue;
      }
      other = p;
      if (c->connected[At(p)] == 0)
        c->parts.push_back(p); // twice if the net weighs nothing
      c->connected[At(p)] += net->wgt;
    }
    if (held == 1) {
      freed += net->wgt;
      if (net->nparts == 2)
        c->completed[At(other)] += net->wgt;
    }
  }

  Gain best = {0, 0};
  int target = -1;
  for (const int p : c->parts) {
    const Weight cut = c->completed[At(p)] - whole,
                 connectivity = freed + c->connected[At(p)] - graph->adjwgt[v];
    c->connected[At(p)] = c->completed[At(p)] = 0;
    if (!HasRoom(c, v, p))
      continue;
    const Gain gain = {static_cast<Weight>(c->goal->cut * cut + c->goal->connectivity * connectivity),
                       c->goal->cut ? connectivity : cut};
    if (target == -1 || gain > best || (gain == best && IsEmptier(c, p, target))) {
      best = gain;
      target = p;
    }
  }
  if (target == -1 || !MayLeave(c, v, from))
    return false;
  c->gains[At(v)] = best;
  c->targets[At(v)] = target;
  return true;
}

static void MeetAround(Climber *c, int u)
{
  if (c->marks[At(u)] == c->mark)
    return;
  c->marks[At(u)] = c->mark;
  if (!c->locked[At(u)])
    c->around.push_back(u);
}

// Collects the cells of a net for which the move of a pin can have raised a gain. Where it has only lowered gains, they
// are seen to when they come up.
static void CollectAround(Climber *c, int net, PinsBefore before, int from, int to)
{
  const HGraph *graph = c->graph;
  const int size = c->pins.nets[At(net)].size;
  const bool lastone = before.from == 2, othersone = before.to + 2 == size;

  if (size > LARGE_SEARCHED_NET || (before.to > 0 && !lastone && !othersone))
    return;
  for (int k = graph->netptr[net]; k < graph->netptr[net + 1]; k++) {
    const int u = graph->netind[k];
    if (before.to == 0 || (lastone && c->part[u] == from) || (othersone && c->part[u] != to))
      MeetAround(c, u);
  }
}

template <bool collect>
static void Move(Climber *c, int v, int to)
{
  const HGraph *graph = c->graph;
  const int from = c->part[v];

  c->part[v] = to;
  c->pwgts[At(from)] -= graph->cellwgt[v];
  c->pwgts[At(to)] += graph->cellwgt[v];
  c->counts[At(from)]--;
  c->counts[At(to)]++;
  if (collect) {
    c->around.clear();
    c->marks[At(v)] = ++c->mark;
  }
  for (int i = graph->incptr[v]; i < graph->incptr[v + 1]; i++) {
    const int net = graph->incind[i];
    const PinsBefore before = MovePin(&c->pins, net, from, to);
    if (collect)
      CollectAround(c, net, before, from, to);
  }
}

// ----------------------------------------------------------------------------------------------------------
// The heap

static void PutAt(Climber *c, int i, int v)
{
  c->heap[At(i)] = v;
  c->places[At(v)] = i;
}

static void SiftUp(Climber *c, int i)
{
  const int v = c->heap[At(i)];

  for (; i > 0 && c->gains[At(c->heap[At((i - 1) / 2)])] < c->gains[At(v)]; i = (i - 1) / 2)
    PutAt(c, i, c->heap[At((i - 1) / 2)]);
  PutAt(c, i, v);
}

static void SiftDown(Climber *c, int i)
{
  const int v = c->heap[At(i)], n = static_cast<int>(c->heap.size());

  for (;;) {
    int child = 2 * i + 1;
    if (child >= n)
      break;
    if (child + 1 < n && c->gains[At(c->heap[At(child)])] < c->gains[At(c->heap[At(child + 1)])])
      child++;
    if (c->gains[At(c->heap[At(child)])] <= c->gains[At(v)])
      break;
    PutAt(c, i, c->heap[At(child)]);
    i = child;
  }
  PutAt(c, i, v);
}

static void Insert(Climber *c, int v)
{
  c->heap.push_back(v);
  SiftUp(c, static_cast<int>(c->heap.size()) - 1);
}

static void Remove(Climber *c, int v)
{
  const int i = c->places[At(v)], last = c->heap.back();

  c->heap.pop_back();
  c->places[At(v)] = -1;
  if (last == v)
    return;
  PutAt(c, i, last);
  SiftUp(c, i);
  SiftDown(c, c->places[At(last)]);
}

// Looks at v again, and puts it where it now belongs.
static void Refresh(Climber *c, int v)
{
  const Gain before = c->gains[At(v)];
  const bool inside = c->places[At(v)] >= 0;

  if (!FindMove(c, v)) {
    if (inside)
      Remove(c, v);
    return;
  }
  if (!inside)
    Insert(c, v);
  else if (before < c->gains[At(v)])
    SiftUp(c, c->places[At(v)]);
  else
    SiftDown(c, c->places[At(v)]);
}

// ----------------------------------------------------------------------------------------------------------
// Searches

// Validator: the gain of the move that v is about to make, against the values before and after it.
static const char *CheckGain(Climber *c, int v)
{
  const int from = c->part[v], to = c->targets[At(v)];
  const Value before = Evaluate(c->goal, c->graph, c->part);

  c->part[v] = to;
  const Value after = Evaluate(c->goal, c->graph, c->part);
  c->part[v] = from;
  const bool right =
      before.main - after.main == c->gains[At(v)].main && before.tie - after.tie == c->gains[At(v)].tie;
  return right ? nullptr : "climb: the gain of a move is not the difference that it makes";
}

// Brings a cell to the top whose gain holds now; returns it, or -1 when there is none.
static int TakeBest(Climber *c)
{
  while (!c->heap.empty()) {
    const int v = c->heap[0];
    Refresh(c, v);
    if (!c->heap.empty() && c->heap[0] == v) {
      Remove(c, v);
      return v;
    }
  }
  return -1;
}

// A step takes long: a move of a cell on a coarse level changes the gains of thousands.
static void CheckpointOften(const Climber *c, std::size_t step)
{
  if (step % 16 == 0)
    Checkpoint(c->ctrl);
}

static void EndSearch(Climber *c, std::size_t nkept)
{
  for (const int v : c->heap)
    c->places[At(v)] = -1;
  c->heap.clear();
  for (std::size_t i = c->steps.size(); i > nkept; i--) {
    CheckpointOften(c, i);
    Move<false>(c, c->steps[i - 1].cell, c->steps[i - 1].from);
  }
  for (std::size_t i = 0; i < nkept; i++)
    c->moved[At(c->steps[i].cell)] = 1;
  c->steps.clear();
}

// One search from the cells in the heap.
static void RunSearch(Climber *c, StopRule rule, Value *value)
{
  Value now = *value;
  std::size_t nkept = 0;

  for (int v = TakeBest(c); v != -1; v = TakeBest(c)) {
    const int from = c->part[v], to = c->targets[At(v)];
    const Gain gain = c->gains[At(v)];
    CheckpointOften(c, c->steps.size());
    if (IsSample(static_cast<int>(c->steps.size()), c->graph->ncells))
      CHECK_VALID(CheckGain(c, v));
    now.excess -= Excess(c, from) + Excess(c, to);
    Move<true>(c, v, to);
    now.excess += Excess(c, from) + Excess(c, to);
    now.main -= gain.main;
    now.tie -= gain.tie;
    c->locked[At(v)] = 1;
    c->steps.push_back({v, from});
    if (now < *value) {
      *value = now;
      nkept = c->steps.size();
      rule.Restart();
    } else if (rule.Ends(static_cast<double>(gain.main))) {
      break;
    }
    for (const int u : c->around)
      Refresh(c, u);
  }
  EndSearch(c, nkept);
}

// ----------------------------------------------------------------------------------------------------------
// Rounds

static void MarkNeighbours(Climber *c, int v)
{
  const HGraph *graph = c->graph;

  c->marks[At(v)] = c->mark;
  for (int i = graph->incptr[v]; i < graph->incptr[v + 1]; i++) {
    const int net = graph->incind[i];
    if (NetSize(graph, net) > MAX_NET_SIZE)
      continue;
    for (int k = graph->netptr[net]; k < graph->netptr[net + 1]; k++)
      c->marks[At(graph->netind[k])] = c->mark;
  }
}

// The cells on cut nets, and all of parts above their limits, in random order.
static Array<int> FindBorder(Climber *c)
{
  const HGraph *graph = c->graph;
  Array<int> border;
  const auto meet = [&](int v) {
    if (c->marks[At(v)] != c->mark && v >= graph->nfixed)
      border.push_back(v);
    c->marks[At(v)] = c->mark;
  };

  c->mark++;
  for (int j = 0; j < graph->nnets; j++)
    if (c->pins.nets[At(j)].nparts > 1)
      for (int k = graph->netptr[j]; k < graph->netptr[j + 1]; k++)
        meet(graph->netind[k]);
  for (int i = 0; i < graph->ncells; i++)
    if (Excess(c, c->part[i]) > 0)
      meet(i);
  return border;
}

// The cells of the border around those that the round before has moved.
static void KeepChanged(Climber *c, Array<int> *border)
{
  c->mark++;
  for (int i = 0; i < c->graph->ncells; i++)
    if (c->moved[At(i)])
      MarkNeighbours(c, i);
  std::erase_if(*border, [c](int v) { return c->marks[At(v)] != c->mark; });
  std::fill(c->moved.begin(), c->moved.end(), 0);
}

static void Unlock(Climber *c)
{
  std::fill(c->locked.begin(), c->locked.end(), 0);
  std::fill_n(c->locked.begin(), c->graph->nfixed, 1);
}

static void SearchFromAll(Climber *c, const Array<int> &border, Value *value)
{
  const int n = c->graph->ncells;

  Unlock(c);
  for (std::size_t i = 0; i < border.size(); i++) {
    CheckpointOften(c, i);
    if (FindMove(c, border[i]))
      Insert(c, border[i]);
  }
  RunSearch(c, {std::max(FRUITLESS_LONG, static_cast<int>(FRUITLESS_SHARE * n)), false, 0.0}, value);
}

static void SearchFromSome(Climber *c, const Array<int> &border, Value *value)
{
  const double minimal = std::log(std::max(2.0, static_cast<double>(c->graph->ncells)));

  Unlock(c);
  for (std::size_t i = 0; i < border.size();) {
    Checkpoint(c->ctrl);
    for (; i < border.size() && c->heap.size() < SEARCH_SEEDS; i++)
      if (!c->locked[At(border[i])] && FindMove(c, border[i]))
        Insert(c, border[i]);
    RunSearch(c, {FRUITLESS_SHORT, true, minimal}, value);
  }
}

static Climber OpenClimber(const Control *ctrl, const SearchGoal *goal, const HGraph *graph, int *part)
{
  const std::size_t ncells = At(graph->ncells), nparts = At(goal->nparts);
  Climber c = {};

  c.ctrl = ctrl;
  c.goal = goal;
  c.graph = graph;
  c.part = part;
  CountPins(graph, goal->nparts, part, &c.pins);
  c.pwgts.assign(nparts, 0);
  c.counts.assign(nparts, 0);
  for (int i = 0; i < graph->ncells; i++) {
    c.pwgts[At(part[i])] += graph->cellwgt[i];
    c.counts[At(part[i])]++;
  }
  c.gains.resize(ncells);
  c.targets.resize(ncells);
  c.places.assign(ncells, -1);
  c.locked.assign(ncells, 0);
  c.moved.assign(ncells, 0);
  c.marks.assign(ncells, 0);
  c.connected.assign(nparts, 0);
  c.completed.assign(nparts, 0);
  return c;
}

static const char *CheckClimb(const Climber *c, const Value *value)
{
  if (const char *broken = CheckNetParts(c->graph, c->goal->nparts, c->part, &c->pins))
    return broken;
  return Evaluate(c->goal, c->graph, c->part) == *value ? nullptr
                                                        : "climb: the value is not the recounted one";
}

void Climb(const Control *ctrl, const SearchGoal *goal, const HGraph *graph, int *part, Value *value)
{
  EnterPhase(ctrl, PHASE_REFINE, graph->ncells);
  Climber c = OpenClimber(ctrl, goal, graph, part);
  for (int round = 0; round < SEARCH_ROUNDS; round++) {
    const Value before = *value;
    Array<int> border = FindBorder(&c);
    if (round > 0)
      KeepChanged(&c, &border);
    if (border.empty())
      break;
    RandomPermuteFine__(border.data(), static_cast<int>(border.size()), 0);
    if (round == 0)
      SearchFromAll(&c, border, value);
    SearchFromSome(&c, border, value);
    CHECK_VALID(CheckClimb(&c, value));
    if (value->excess == before.excess &&
        static_cast<double>(before.main - value->main) <= LEAST_ROUND_GAIN * static_cast<double>(before.main))
      break;
  }
}

} // namespace kapris::engine::KAPRIS_ENGINE
