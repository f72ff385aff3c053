// tests/api/call.cpp - one call of the safe interface as data.
// SPDX-License-Identifier: MIT

#include "api/call.h"

#include <cmath>
#include <cstring>
#include <numeric>
#include <set>

Call MakeCall(const Instance &instance, int nparts)
{
  Call call = {instance, instance.NetPtr(), instance.NetInd(), {}, {}, {}, {}, {}, 3, 100};

  kapris_init_problem(&call.problem);
  kapris_init_options(&call.options);
  call.problem.ncells = instance.ncells;
  call.problem.nnets = static_cast<int>(instance.nets.size());
  call.problem.nparts = nparts;
  return call;
}

template <class T>
static const T *DataOf(const std::vector<T> &array)
{
  return array.empty() ? nullptr : array.data();
}

void Connect(Call *call)
{
  call->problem.cell_weights = DataOf(call->instance.cellwgt);
  call->problem.net_weights = DataOf(call->instance.netwgt);
  call->problem.net_starts = call->netptr.data();
  call->problem.pins = DataOf(call->netind);
  call->problem.fixed = DataOf(call->fixed);
  call->shares.clear();
  for (int twelfth : call->twelfths)
    call->shares.push_back(twelfth / 12.0);
  call->problem.target_weights = DataOf(call->shares);
  call->options.epsilon = call->percent / 100.0;
  call->options.min_epsilon = call->minpercent / 100.0;
}

static ResultPtr Owned(kapris_status status, kapris_result *result)
{
  if (result != nullptr) {
    EXPECT_EQ(result->status, status);
    EXPECT_EQ(result->message[0] == '\0', status == KAPRIS_OK);
    if (status != KAPRIS_MEMORY_LIMIT && status != KAPRIS_OUT_OF_MEMORY)
      EXPECT_EQ(result->part != nullptr, status != KAPRIS_INVALID_ARGUMENT && status != KAPRIS_INTERNAL);
    else
      EXPECT_EQ(result->part != nullptr,
                std::strstr(result->message, "the best partition so far") != nullptr);
  } else {
    EXPECT_TRUE(status == KAPRIS_OUT_OF_MEMORY || status == KAPRIS_INVALID_ARGUMENT);
  }
  return ResultPtr(result);
}

ResultPtr SolveConnected(const Call &call)
{
  kapris_result *result = nullptr;
  const kapris_status status = kapris_partition(&call.problem, &call.options, &result);

  return Owned(status, result);
}

ResultPtr Refine(const Call &connected, const std::vector<int> &part)
{
  kapris_result *result = nullptr;
  const kapris_status status = kapris_refine(&connected.problem, &connected.options, part.data(), &result);

  return Owned(status, result);
}

ResultPtr Combine(const Call &connected, const std::vector<std::vector<int>> &parts)
{
  std::vector<const int *> pointers;
  kapris_result *result = nullptr;

  for (const std::vector<int> &part : parts)
    pointers.push_back(part.data());
  const kapris_status status = kapris_combine(&connected.problem, &connected.options,
                                              static_cast<int>(parts.size()), pointers.data(), &result);
  return Owned(status, result);
}

ResultPtr Evaluate(const Call &connected, const std::vector<int> &part)
{
  kapris_result *result = nullptr;
  const kapris_status status = kapris_evaluate(&connected.problem, &connected.options, part.data(), &result);

  return Owned(status, result);
}

std::vector<int> AnyPart(const Call &call, std::uint64_t seed)
{
  TestRandom random = {seed};
  std::vector<int> part;

  for (int i = 0; i < call.instance.ncells; i++) {
    const int fixed = call.fixed.empty() ? -1 : call.fixed[static_cast<std::size_t>(i)];
    part.push_back(fixed < 0 ? random.Below(call.problem.nparts) : fixed);
  }
  return part;
}

// Of a result or one of its starts.
template <class Record>
static Rank RankOfRecord(const Call &call, const Record &record, int nempty)
{
  switch (call.options.objective) {
  case KAPRIS_CUT:
    return {record.excess, nempty, record.cut, record.soed, record.imbalance};
  case KAPRIS_SOED:
    return {record.excess, nempty, record.soed, record.cut, record.imbalance};
  default:
    return {record.excess, nempty, record.soed - record.cut, record.cut, record.imbalance};
  }
}

Rank RankOf(const Call &call, const ResultPtr &result)
{
  const std::vector<int> part = PartOf(result);
  const int nused = static_cast<int>(std::set<int>(part.begin(), part.end()).size());

  return RankOfRecord(call, *result, call.options.allow_empty ? 0 : result->nparts - nused);
}

ResultPtr Solve(Call call)
{
  Connect(&call);
  return SolveConnected(call);
}

std::vector<int> PartOf(const ResultPtr &result)
{
  return std::vector<int>(result->part, result->part + result->ncells);
}

Figures FiguresOf(const ResultPtr &result)
{
  std::vector<StartFigures> starts;

  for (int i = 0; i < result->nstarts; i++) {
    const kapris_start *s = &result->starts[i];
    starts.emplace_back(s->seed, s->cut, s->soed, s->imbalance, s->excess, s->balanced, s->completed);
  }
  return std::make_tuple(PartOf(result), result->status, result->cut, result->soed, result->imbalance,
                         result->best_start, starts);
}

// num / den x total rounded up, times (1 + percent / 100) rounded down; with a negative percent the other way round.
static std::int64_t LimitOf(std::int64_t total, std::int64_t num, std::int64_t den, int percent)
{
  __extension__ typedef __int128 Wide;
  const Wide product = static_cast<Wide>(num) * total;

  if (percent < 0)
    return static_cast<std::int64_t>(((100 + percent) * (product / den) + 99) / 100);
  return static_cast<std::int64_t>((100 + percent) * ((product + den - 1) / den) / 100);
}

std::string WrongIn(const Call &call, const ResultPtr &result)
{
  const int nparts = call.problem.nparts;
  const std::vector<int> part = PartOf(result);
  std::vector<std::int64_t> weights(static_cast<std::size_t>(nparts), 0);
  std::vector<int> counts(static_cast<std::size_t>(nparts), 0);
  std::int64_t total = 0, excess = 0;
  double imbalance = 0.0;

  if (result->ncells != call.instance.ncells || result->nparts != nparts)
    return "lengths";
  for (std::size_t i = 0; i < part.size(); i++) {
    const std::int64_t wgt = call.instance.cellwgt.empty() ? 1 : call.instance.cellwgt[i];
    if (part[i] < 0 || part[i] >= nparts)
      return "a cell is in no part";
    if (!call.fixed.empty() && call.fixed[i] != -1 && call.fixed[i] != part[i])
      return "a fixed cell is in another part";
    weights[static_cast<std::size_t>(part[i])] += wgt;
    counts[static_cast<std::size_t>(part[i])]++;
    total += wgt;
  }
  for (int p = 0; p < nparts; p++) {
    const std::int64_t weight = weights[static_cast<std::size_t>(p)];
    const std::int64_t num = call.twelfths.empty() ? 1 : call.twelfths[static_cast<std::size_t>(p)];
    const std::int64_t den =
        call.twelfths.empty() ? nparts
                              : std::accumulate(call.twelfths.begin(), call.twelfths.end(), std::int64_t{0});
    const std::int64_t limit = LimitOf(total, num, den, call.percent);
    const std::int64_t minimum =
        call.minpercent > 0 ? LimitOf(total, num, den, -call.minpercent) : num * total / den;
    if (result->part_weights[p] != weight || result->part_limits[p] != limit ||
        result->part_minimums[p] != minimum)
      return "weight or limits of part " + std::to_string(p);
    excess += std::max<std::int64_t>({0, weight - limit, minimum - weight});
    if (total > 0)
      imbalance = std::max(imbalance, static_cast<double>(weight) * static_cast<double>(den) /
                                              (static_cast<double>(num) * static_cast<double>(total)) -
                                          1.0);
  }
  const std::int64_t cut = CutOf(call.instance, part), soed = SoedOf(call.instance, part);
  if (result->cut != cut || result->soed != soed || result->connectivity != soed - cut)
    return "objectives " + std::to_string(result->cut) + " and " + std::to_string(result->soed) + ", not " +
           std::to_string(cut) + " and " + std::to_string(soed);
  const bool balanced = excess == 0;
  if (result->excess != excess || result->balanced != balanced ||
      std::fabs(result->imbalance - imbalance) > 1e-12)
    return "balance";
  if ((result->status == KAPRIS_OK && !balanced) || (result->status == KAPRIS_INFEASIBLE && balanced))
    return "status";
  if (result->best_start >= 0) {
    const kapris_start *starts = result->starts, *best = starts + result->best_start;
    if (best->cut != cut || best->soed != soed)
      return "the best start has other figures";
    // How many parts of the others are empty is not known.
    for (const kapris_start *start = starts; call.options.allow_empty && start < starts + result->nstarts;
         start++)
      if (start->completed && std::make_tuple(RankOfRecord(call, *start, 0), start) <
                                  std::make_tuple(RankOfRecord(call, *best, 0), best))
        return "start " + std::to_string(start - starts) + " is better than the best";
  }
  // A part that is empty, or too light, can have no cell of another.
  for (std::size_t i = 0; i < part.size(); i++) {
    const std::size_t source = static_cast<std::size_t>(part[i]);
    const std::int64_t wgt = call.instance.cellwgt.empty() ? 1 : call.instance.cellwgt[i];
    if (call.options.allow_empty || (!call.fixed.empty() && call.fixed[i] != -1) || counts[source] < 2 ||
        weights[source] - wgt < result->part_minimums[source])
      continue;
    for (std::size_t p = 0; p < counts.size(); p++)
      if (counts[p] == 0 && wgt <= result->part_limits[p])
        return "part " + std::to_string(p) + " is empty";
  }
  return "";
}

Instance Circuit(int ncells)
{
  TestRandom random = {77};

  return RandomInstance(&random, ncells, 2 * ncells, ODD_ALL & ~ODD_WEIGHTS);
}

Call RandomCall(std::uint64_t seed)
{
  static const std::vector<std::vector<int>> divisions = {
      {5, 7}, {1, 3, 8}, {2, 1, 4, 5}, {1, 1, 1, 1, 2, 6}};
  TestRandom random = {seed};
  const int ncells = random.Chance(5) ? random.Below(4) : 4 + random.Below(random.Chance(15) ? 200 : 60);
  const Instance instance = RandomInstance(&random, ncells, random.Below(2 * ncells + 1),
                                           random.Below(ODD_ALL + 1) | (random.Chance(25) ? ODD_WIDE : 0));
  const bool equal = random.Chance(50);
  const std::vector<int> twelfths =
      equal ? std::vector<int>() : divisions[static_cast<std::size_t>(random.Below(4))];
  const int nparts = random.Chance(4) ? 70 : 1 + random.Below(10);
  Call call = MakeCall(instance, equal ? nparts : static_cast<int>(twelfths.size()));
  kapris_options *options = &call.options;

  call.twelfths = twelfths;
  call.percent = random.Chance(20) ? 0 : random.Below(60);
  options->scheme = random.Chance(50) ? KAPRIS_RECURSIVE : KAPRIS_KWAY;
  options->objective = static_cast<kapris_objective>(random.Below(3));
  options->coarsening = static_cast<kapris_coarsening>(random.Below(5));
  options->refinement = static_cast<kapris_refinement>(random.Below(3));
  options->vcycle = static_cast<kapris_vcycle>(random.Below(4));
  options->runs = random.Chance(10) ? 12 : 1 + random.Below(4);
  options->reconst = random.Below(2);
  options->seed = random.Below(1000);
  options->starts = 1 + random.Below(2);
  options->threads = 1 + random.Below(3);
  options->log_level = random.Chance(50) ? 511 : 0; // without log: for nobody
  const int freepercent = 20 * random.Below(6);
  if (random.Chance(40))
    for (int i = 0; i < ncells; i++)
      call.fixed.push_back(random.Chance(freepercent) ? -1 : random.Below(call.problem.nparts));
  options->allow_empty = random.Chance(30);
  call.minpercent = random.Chance(60) ? 100 : random.Below(60);
  options->members = random.Chance(40) ? 0 : random.Below(6);
  options->combinations = random.Below(7);
  return call;
}
