// tests/api/call.cpp - one call of the safe interface as data.
// SPDX-License-Identifier: MIT

#include "api/call.h"

#include <cmath>

Call MakeCall(const Instance &instance, int nparts)
{
  Call call = {instance, instance.NetPtr(), instance.NetInd(), {}, {}, {}, {}, {}, 3};

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
  call->problem.part_shares = DataOf(call->shares);
  call->options.imbalance = call->percent / 100.0;
}

static ResultPtr Owned(kapris_status status, kapris_result *result)
{
  if (result != nullptr) {
    EXPECT_EQ(result->status, status);
    EXPECT_EQ(result->message[0] == '\0', status == KAPRIS_OK);
    EXPECT_EQ(result->part != nullptr, status == KAPRIS_OK || status == KAPRIS_INFEASIBLE ||
                                           status == KAPRIS_TIME_LIMIT || status == KAPRIS_CANCELLED);
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

Rank RankOf(const Call &call, const ResultPtr &result)
{
  const bool bycut = call.options.objective == KAPRIS_CUT;

  return {!result->balanced, bycut ? result->cut : result->soed, bycut ? result->soed : result->cut,
          result->imbalance};
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
    starts.emplace_back(s->seed, s->cut, s->soed, s->imbalance, s->balanced, s->completed);
  }
  return std::make_tuple(PartOf(result), result->status, result->cut, result->soed, result->imbalance,
                         result->best_start, starts);
}

// (1 + percent / 100) x num / den x total, rounded up, in whole numbers; up to 2^53 that is what the library must find.
static std::int64_t LimitOf(std::int64_t total, std::int64_t num, std::int64_t den, int percent)
{
  __extension__ typedef __int128 Wide;
  const Wide scaled = static_cast<Wide>(100 + percent) * num * total;

  return static_cast<std::int64_t>((scaled + 100 * den - 1) / (100 * den));
}

// Limits are computed in doubles: of large totals the last digits may differ.
static bool IsLimit(std::int64_t limit, std::int64_t expected)
{
  return std::abs(limit - expected) <= (expected >> 32 != 0) + (expected >> 50);
}

std::string WrongIn(const Call &call, const ResultPtr &result)
{
  const int nparts = call.problem.nparts;
  const std::vector<int> part = PartOf(result);
  std::vector<std::int64_t> weights(static_cast<std::size_t>(nparts), 0);
  std::int64_t total = 0;
  bool balanced = true;
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
    total += wgt;
  }
  for (int p = 0; p < nparts; p++) {
    const std::int64_t weight = weights[static_cast<std::size_t>(p)];
    const std::int64_t num = call.twelfths.empty() ? 1 : call.twelfths[static_cast<std::size_t>(p)];
    const std::int64_t den = call.twelfths.empty() ? nparts : 12;
    const std::int64_t limit = LimitOf(total, num, den, call.percent);
    if (result->part_weights[p] != weight || !IsLimit(result->part_limits[p], limit))
      return "weight or limit of part " + std::to_string(p);
    balanced = balanced && weight <= result->part_limits[p];
    if (total > 0)
      imbalance = std::max(imbalance, static_cast<double>(weight) * static_cast<double>(den) /
                                              (static_cast<double>(num) * static_cast<double>(total)) -
                                          1.0);
  }
  const std::int64_t cut = CutOf(call.instance, part), soed = SoedOf(call.instance, part);
  if (result->cut != cut || result->soed != soed || result->connectivity != soed - cut)
    return "objectives " + std::to_string(result->cut) + " and " + std::to_string(result->soed) + ", not " +
           std::to_string(cut) + " and " + std::to_string(soed);
  if (result->balanced != balanced || std::fabs(result->imbalance - imbalance) > 1e-12)
    return "balance";
  if ((result->status == KAPRIS_OK && !balanced) || (result->status == KAPRIS_INFEASIBLE && balanced))
    return "status";
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
  const int nparts = random.Chance(4) ? 70 : 2 + random.Below(9);
  Call call = MakeCall(instance, equal ? nparts : static_cast<int>(twelfths.size()));
  kapris_options *options = &call.options;

  call.twelfths = twelfths;
  call.percent = random.Chance(20) ? 0 : random.Below(60);
  options->scheme = random.Chance(50) ? KAPRIS_RECURSIVE : KAPRIS_KWAY;
  options->objective = random.Chance(50) ? KAPRIS_CUT : KAPRIS_SOED;
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
  return call;
}
