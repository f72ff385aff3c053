// lib/search/search.cpp - a population of complete partitions that are combined.
// SPDX-License-Identifier: MIT
//
//   found    families of members; a family shares its first levels   Found
//   breed    broods of combinations, each of two members             Breed
//   rework   one member with its parts made anew, a few at a time    ReworkOne
//   finish   a member is refined by minimum cuts                     Finish
//   take     a child replaces the member most like it                Take
// Members of a family, families and the children of a brood are made side by side. Each draws from a sequence of its
// own, and they are taken in the order of their numbers, so that threads and their timing change nothing.

#include "search.h"

#include "climb.h"
#include "flow.h"
#include "member.h"
#include "rework.h"
#include "sidebyside.h"

#include "base/random.h"
#include "core/constants.h"
#include "core/level.h"

#include <algorithm>
#include <mutex>
#include <set>
#include <utility>

namespace kapris::engine::KAPRIS_ENGINE
{

namespace
{

struct Entry {
  Member member;
  int number; // in the order of birth
};

struct Population {
  const Control *ctrl;
  const SearchGoal *goal;
  const SearchPlan *plan;
  HGraph *graph;
  std::vector<Entry> entries;
  std::set<std::pair<int, int>> tried; // pairs that have been combined, by their numbers
  int nborn = 0;
  std::uint64_t nseeds = 0;

  std::mutex lock; // for what follows
  bool announced = false;
  Value best = {}; // of the partition that was announced last
};

// The numbers of the parents, twice the same of a V-cycle; -1 = none.
struct Parents {
  int numbers[2];
};

} // namespace

// Sequences of their own for all members and children (splitmix64).
static std::int64_t NextSeed(Population *population)
{
  std::uint64_t z =
      static_cast<std::uint64_t>(population->ctrl->seed) + ++population->nseeds * 0x9e3779b97f4a7c15u;
  z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9u;
  z = (z ^ (z >> 27)) * 0x94d049bb133111ebu;
  return static_cast<std::int64_t>((z ^ (z >> 31)) & INT_MAX);
}

// Hands the partition to the caller if it is the best so far; on any thread.
static void Offer(Population *population, const Member *member)
{
  const std::lock_guard<std::mutex> guard(population->lock);

  if (population->announced && member->value >= population->best)
    return;
  population->announced = true;
  population->best = member->value;
  Announce(population->ctrl, member->part.data());
}

// Takes a member that has been climbed to its end further by minimum cuts, and offers it. refined: what it was made of,
// if that has come this way, or NULL.
static void Finish(Population *population, const Member *refined, Member *member)
{
  RefineByFlow(population->ctrl, population->goal, population->graph,
               refined != nullptr ? refined->part.data() : nullptr, member->part.data(), &member->value);
  Offer(population, member);
}

// ----------------------------------------------------------------------------------------------------------
// Families

static void ShareLevels(const Control *ctrl, const SearchGoal *goal, const HGraph *graph, Ladder *ladder)
{
  const int coarsento = static_cast<int>(SHARED_LEVELS * graph->ncells);
  double total = 0.0;

  if (coarsento <= std::int64_t{SHARED_PER_PART} * goal->nparts) {
    ladder->graphs.push_back(graph);
    return;
  }
  for (int i = 0; i < graph->ncells; i++)
    total += static_cast<double>(graph->cellwgt[i]);
  Coarsen(ctrl, graph, nullptr, coarsento, TruncateWeight(1.0 + SHARED_WEIGHT * total / coarsento), ladder);
}

static std::vector<Member> MakeFamily(Population *population, std::int64_t seed, int nmembers, bool direct)
{
  const Control *ctrl = population->ctrl;
  const SearchGoal *goal = population->goal;
  std::vector<Member> members(At(nmembers));
  std::vector<std::int64_t> seeds(At(nmembers));
  Ladder ladder;

  InitRandom__(seed);
  for (std::int64_t &each : seeds)
    each = RandomDraw();
  ShareLevels(ctrl, goal, population->graph, &ladder);
  // Its incidence is there, so that nobody changes it any more.
  HGraph *coarse = ladder.maps.empty() ? population->graph : ladder.own[ladder.maps.size() - 1];
  DoAll(ctrl, nmembers, [&](int i) {
    Member *member = &members[At(i)];
    *member = direct ? PartitionDirectly(ctrl, goal, seeds[At(i)], coarse)
                     : Bisect(ctrl, goal, seeds[At(i)], coarse);
    ClimbUp(ctrl, goal, &ladder, member);
    Finish(population, nullptr, member);
  });
  return members;
}

// ----------------------------------------------------------------------------------------------------------
// Taking

static bool IsNew(const Population *population, const Member *member)
{
  return std::none_of(population->entries.begin(), population->entries.end(), [&](const Entry &entry) {
    return entry.member.value == member->value && Distance(population->graph, &entry.member, member) == 0;
  });
}

// The older one of equals comes first, so that the best one is the one that was announced.
static bool ComesBefore(const Entry &a, const Entry &b)
{
  return a.member.value < b.member.value || (a.member.value == b.member.value && a.number < b.number);
}

static Entry *FindBest(Population *population)
{
  return &*std::min_element(population->entries.begin(), population->entries.end(), ComesBefore);
}

// The member most like this one, of those that are no better, but for the best where it is as good; or NULL.
static Entry *FindReplaced(Population *population, const Member *member)
{
  const Entry *best = FindBest(population);
  Entry *replaced = nullptr;
  Weight least = 0;

  for (Entry &entry : population->entries) {
    if (entry.member.value < member->value || (&entry == best && entry.member.value == member->value))
      continue;
    const Weight distance = Distance(population->graph, &entry.member, member);
    if (replaced == nullptr || distance < least) {
      replaced = &entry;
      least = distance;
    }
  }
  return replaced;
}

// Returns whether it is one that the population did not have. It grows by a member that was made on its own; any other
// one replaces one that is no better, or is lost.
static bool Take(Population *population, Member *member, Parents parents, bool grows)
{
  const int number = population->nborn++;
  const bool isnew = IsNew(population, member);
  const bool best = std::all_of(population->entries.begin(), population->entries.end(),
                                [&](const Entry &entry) { return member->value < entry.member.value; });

  RecordMember(population->ctrl, population->graph, number, parents.numbers, member->value.main,
               member->part.data(), best);
  if (!isnew)
    return false;
  if (grows)
    population->entries.push_back({std::move(*member), number});
  else if (Entry *replaced = FindReplaced(population, member))
    *replaced = {std::move(*member), number};
  else
    return false;
  return true;
}

static void DropWorst(Population *population)
{
  population->entries.erase(
      std::max_element(population->entries.begin(), population->entries.end(), ComesBefore));
}

static void ReportMembers(const Population *population, double part)
{
  const Hooks *hooks = population->ctrl->hooks;

  if (hooks->worked != nullptr)
    hooks->worked(hooks->owner, part, population->graph->ncells);
}

// Makes nmembers by families. work: what part of the whole search that is.
static void Found(Population *population, int nmembers, bool direct, double work)
{
  const int nfamilies = (nmembers + FAMILY - 1) / FAMILY;
  std::vector<std::vector<Member>> families(At(nfamilies));
  std::vector<std::int64_t> seeds(At(nfamilies));

  for (std::int64_t &seed : seeds)
    seed = NextSeed(population);
  DoAll(population->ctrl, nfamilies, [&](int f) {
    families[At(f)] = MakeFamily(population, seeds[At(f)], std::min(FAMILY, nmembers - f * FAMILY), direct);
    ReportMembers(population, work / nfamilies);
  });
  for (std::vector<Member> &family : families)
    for (Member &member : family)
      Take(population, &member, {{-1, -1}}, true);
}

// ----------------------------------------------------------------------------------------------------------
// Breeding

namespace
{

struct Pair {
  std::size_t a, b;
};

} // namespace

// Notes the pair as tried; returns whether it was not.
static bool Try(Population *population, Pair pair)
{
  const auto [first, second] =
      std::minmax(population->entries[pair.a].number, population->entries[pair.b].number);
  return first != second && population->tried.insert({first, second}).second;
}

static std::size_t DrawEntry(std::size_t n)
{
  return static_cast<std::size_t>(RandomDraw()) % n;
}

// The better one of two.
static std::size_t DrawGood(const Population *population)
{
  const std::vector<Entry> &entries = population->entries;
  const std::size_t a = DrawEntry(entries.size()), b = DrawEntry(entries.size());

  return entries[b].member.value < entries[a].member.value ? b : a;
}

// At most n pairs that have not been combined; fewer where hardly any are left.
static std::vector<Pair> DrawPairs(Population *population, int n)
{
  const std::size_t nentries = population->entries.size();
  std::vector<Pair> pairs;

  InitRandom__(NextSeed(population));
  for (int draws = 0; std::ssize(pairs) < n && draws < 8 * n; draws++) {
    const Pair pair = {DrawGood(population), DrawEntry(nentries)};
    if (Try(population, pair))
      pairs.push_back(pair);
  }
  return pairs;
}

// A brood of at most n; returns how many there were. *brought: whether any was new.
static int Breed(Population *population, int n, double work, bool *brought)
{
  const std::vector<Pair> pairs = DrawPairs(population, n);
  const int npairs = static_cast<int>(pairs.size());
  std::vector<Member> children(pairs.size());
  std::vector<std::int64_t> seeds(pairs.size());
  std::vector<Parents> parents;

  for (std::int64_t &seed : seeds)
    seed = NextSeed(population);
  for (const Pair &pair : pairs)
    parents.push_back({{population->entries[pair.a].number, population->entries[pair.b].number}});
  DoAll(population->ctrl, npairs, [&](int i) {
    const Member *a = &population->entries[pairs[At(i)].a].member;
    const Member *b = &population->entries[pairs[At(i)].b].member;
    children[At(i)] = Combine(population->ctrl, population->goal, seeds[At(i)], population->graph, a, b);
    Finish(population, b->value < a->value ? b : a, &children[At(i)]);
    ReportMembers(population, work / n);
  });
  *brought = false;
  for (int i = 0; i < npairs; i++)
    *brought = Take(population, &children[At(i)], parents[At(i)], false) || *brought;
  return npairs;
}

static Member ReworkPairs(const Control *ctrl, const SearchGoal *goal, std::int64_t seed, const HGraph *graph,
                          const Member *parent)
{
  return Rework(ctrl, goal, seed, graph, parent, SMALLEST_REWORKED);
}

// Makes the parts of the best member anew, or where that has brought nothing those of another one. Returns whether the
// best one is better now.
static bool ReworkOne(Population *population, bool best, int groupsize, double work)
{
  InitRandom__(NextSeed(population));
  const Entry *entry = best ? FindBest(population) : &population->entries[DrawGood(population)];
  const Value before = FindBest(population)->member.value;
  Member child = Rework(population->ctrl, population->goal, NextSeed(population), population->graph,
                        &entry->member, groupsize);
  Finish(population, &entry->member, &child);
  const bool better = child.value < before;
  Take(population, &child, {{entry->number, entry->number}}, false);
  ReportMembers(population, work);
  return better;
}

// At most n times.
static void ReworkParts(Population *population, int n, double work)
{
  int idle = 0;

  for (int i = 0; i < n && idle < IDLE_REWORKS; i++)
    idle = ReworkOne(population, idle == 0, SMALLEST_REWORKED, work / n) ? 0 : idle + 1;
}

// Improves the one member that there is, by V-cycles, and where it has more than two parts by turns with making them
// anew.
static void Improve(Population *population)
{
  const int ncycles = std::max(1, population->plan->combinations);
  int idle = 0;

  for (int i = 0; i < ncycles && idle < IDLE_IMPROVEMENTS; i++) {
    Entry *entry = &population->entries[0];
    const auto improve = i % 2 == 1 && population->goal->nparts > SMALLEST_REWORKED ? ReworkPairs : Cycle;
    Member child =
        improve(population->ctrl, population->goal, NextSeed(population), population->graph, &entry->member);
    Finish(population, &entry->member, &child);
    idle = child.value < entry->member.value ? 0 : idle + 1;
    Take(population, &child, {{entry->number, entry->number}}, false);
    ReportMembers(population, 1.0 / ncycles);
  }
}

// Each refined in all parts before it is combined.
static void TakeInitial(Population *population, const int *part)
{
  const Control *ctrl = population->ctrl;
  const HGraph *graph = population->graph;
  Member member = {Array<int>(part, part + graph->ncells), {}};

  member.value = Evaluate(population->goal, graph, member.part.data());
  InitRandom__(NextSeed(population));
  Climb(ctrl, population->goal, graph, member.part.data(), &member.value);
  Finish(population, nullptr, &member);
  Take(population, &member, {{-1, -1}}, true);
}

// What others have found meanwhile takes the place of what is most like it, so that there is room for own members.
static void TakeVisitors(Population *population)
{
  const HGraph *graph = population->graph;
  Member member = {Array<int>(At(graph->ncells)), {}};

  while (AskForVisitor(population->ctrl, member.part.data())) {
    member.value = Evaluate(population->goal, graph, member.part.data());
    Offer(population, &member);
    Take(population, &member, {{-1, -1}}, false);
    member.part.resize(At(graph->ncells));
  }
}

// Goes on until StopRun, or until there seems to be nothing left to find.
static void SearchOn(Population *population)
{
  int stale = 0, hopeless = 0;

  if (population->entries.empty()) {
    Member first =
        PartitionQuickly(population->ctrl, population->goal, NextSeed(population), population->graph);
    Offer(population, &first);
    Finish(population, nullptr, &first);
    Take(population, &first, {{-1, -1}}, true);
  }
  for (int round = 0; hopeless - HOPELESS_ROUNDS < population->graph->ncells; round++) {
    const Value before = FindBest(population)->member.value;
    Checkpoint(population->ctrl);
    TakeVisitors(population);
    const bool full = population->entries.size() >= At(TIMED_MEMBERS);
    bool brought = false;
    if (!full || stale >= STALE_BROODS) {
      Found(population, FAMILY, population->plan->direct || round % 2 == 1, 0.0);
      while (population->entries.size() > At(TIMED_MEMBERS))
        DropWorst(population);
      stale = 0;
    }
    Breed(population, BROOD, 0.0, &brought);
    if (population->goal->nparts > SMALLEST_REWORKED)
      brought = ReworkOne(population, round % 2 == 0, SMALLEST_REWORKED + round % 3, 0.0) || brought;
    stale = brought ? 0 : stale + 1;
    hopeless = FindBest(population)->member.value < before ? 0 : hopeless + 1;
  }
}

// whole: the work of the search, in combinations. fresh: what is left of them goes into new members where the others
// have nothing to give each other any more.
static void BreedToPlan(Population *population, bool fresh, double whole)
{
  int left = population->plan->combinations;

  while (left > 0) {
    bool brought = false;
    const int n = std::min(BROOD, left), nbred = Breed(population, n, n / whole, &brought);
    left -= nbred;
    const int nreworks = population->goal->nparts > SMALLEST_REWORKED ? std::min(REWORKS, left) : 0;
    ReworkParts(population, nreworks, nreworks / whole);
    left -= nreworks;
    if (nreworks > 0 || brought)
      continue;
    if (!fresh || left <= MEMBER_WORK)
      break;
    Found(population, 1, population->plan->direct, 1.0 * MEMBER_WORK / whole);
    left -= MEMBER_WORK;
  }
}

static void SearchToPlan(Population *population)
{
  const SearchPlan *plan = population->plan;
  const double members = 1.0 * MEMBER_WORK * plan->members, whole = members + plan->combinations;

  Found(population, plan->members, plan->direct, members / whole);
  BreedToPlan(population, true, whole);
}

Weight Search(const Control *ctrl, const SearchGoal *goal, const SearchPlan *plan, HGraph *graph, int *part)
{
  Population population;

  population.ctrl = ctrl;
  population.goal = goal;
  population.plan = plan;
  population.graph = graph;

  if (graph->incptr == nullptr)
    CreateIncidentHGraph__(graph);
  if (ctrl->initial != nullptr)
    TakeInitial(&population, part);
  for (int i = 0; i < ctrl->nothers; i++)
    TakeInitial(&population, ctrl->others[i]);
  if (population.entries.size() > 1)
    BreedToPlan(&population, false, plan->combinations);
  if (plan->endless)
    SearchOn(&population);
  else if (population.entries.size() == 1)
    Improve(&population);
  else if (population.entries.empty())
    SearchToPlan(&population);
  const Member *best = &FindBest(&population)->member;
  icopy__(graph->ncells, best->part.data(), part);
  return best->value.main;
}

} // namespace kapris::engine::KAPRIS_ENGINE
