// fuzz/safe.cpp - kapris_partition, kapris_refine and kapris_combine: figures and limits by the definitions, nothing
// worse than what was given, and a broken problem is refused with a message.
// SPDX-License-Identifier: MIT

#include "fuzz.h"

#include "api/call.h"

static Call DecodeCall(Bytes *bytes)
{
  static const std::vector<int> divisions[] = {{},        {5, 7},       {1, 11},
                                               {1, 3, 8}, {2, 1, 4, 5}, {1, 1, 1, 1, 2, 6}};
  const std::vector<int> &twelfths = divisions[bytes->Below(6)];
  const int nparts =
      twelfths.empty() ? 2 + bytes->Below(bytes->Below(16) < 15 ? 9 : 70) : static_cast<int>(twelfths.size());
  kapris_options options;

  kapris_init_options(&options);
  const int percent = bytes->Below(60);
  options.scheme = static_cast<kapris_scheme>(bytes->Below(2));
  options.objective = static_cast<kapris_objective>(bytes->Below(3));
  options.coarsening = static_cast<kapris_coarsening>(bytes->Below(5));
  options.refinement = static_cast<kapris_refinement>(bytes->Below(3));
  options.vcycle = static_cast<kapris_vcycle>(bytes->Below(4));
  options.runs = 1 + bytes->Below(2);
  options.members = bytes->Below(4);
  options.combinations = bytes->Below(4);
  options.reconst = bytes->Below(2);
  options.seed = bytes->Below(65536);
  options.starts = 1 + bytes->Below(2);
  options.threads = bytes->Below(16) == 1 ? 2 : 1;
  options.log_level = bytes->Flag() ? 511 : 0;
  Call call = MakeCall(DecodeInstance(bytes), nparts);
  call.options = options;
  // Every fourth call has weights for the engine of 64 bits.
  if (options.seed % 4 == 3)
    for (Weights *weights : {&call.instance.cellwgt, &call.instance.netwgt})
      for (std::int64_t &weight : *weights)
        weight <<= 36;
  call.twelfths = twelfths;
  call.percent = percent;
  if (bytes->Flag())
    call.fixed = DecodeParts(bytes, call.instance.ncells, nparts, -1);
  return call;
}

// Something is wrong, or only strange. The call stays small.
static void CorruptCall(Bytes *bytes, Call *call)
{
  const int value = DecodeExtreme(bytes);
  kapris_options *options = &call->options;
  int *const enumerators[] = {reinterpret_cast<int *>(&options->scheme),
                              reinterpret_cast<int *>(&options->objective),
                              reinterpret_cast<int *>(&options->coarsening),
                              reinterpret_cast<int *>(&options->refinement),
                              reinterpret_cast<int *>(&options->vcycle),
                              &options->reconst,
                              &options->first_start,
                              &call->percent};

  switch (bytes->Below(5)) {
  case 0:
    *enumerators[bytes->Below(8)] = value;
    break;
  case 1:
    call->problem.nparts = std::min(value, 70);
    call->twelfths.clear();
    break;
  case 2:
    if (!call->fixed.empty())
      call->fixed[static_cast<std::size_t>(bytes->Below(call->instance.ncells))] = value;
    break;
  case 3:
    if (!call->twelfths.empty())
      call->twelfths[0] = std::min(value, 1000);
    break;
  default:
    Corrupt(bytes, &call->instance);
    call->netptr = call->instance.NetPtr();
    call->netind = call->instance.NetInd();
  }
}

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
  Bytes bytes = {data, data + size};
  const bool corrupt = bytes.Below(4) == 0;
  Call call = DecodeCall(&bytes);

  if (corrupt)
    CorruptCall(&bytes, &call);
  Connect(&call);
  const ResultPtr made = SolveConnected(call);
  Expect(CurrentLedger()->blocks == 0 ? "" : "memory was not released");
  if (made->part == nullptr) {
    Expect(corrupt && made->status == KAPRIS_INVALID_ARGUMENT ? "" : made->message);
    return 0;
  }
  Expect(call.percent < 0 || call.percent > 10000 ? "" : WrongIn(call, made));

  // Any partition that keeps to the fixed cells; a call in which every cell is fixed tells its figures.
  const Call problem = call;
  std::vector<int> given = DecodeParts(&bytes, call.instance.ncells, call.problem.nparts, 0);
  for (std::size_t i = 0; i < call.fixed.size(); i++)
    if (call.fixed[i] >= 0)
      given[i] = call.fixed[i];
  const ResultPtr better = Refine(call, given), again = Refine(call, PartOf(made)),
                  both = Combine(call, {given, PartOf(made)});
  call.fixed = given;
  const ResultPtr worse = Solve(call);
  Expect(PartOf(worse) == given ? "" : "fixed cells have moved");
  Expect(call.percent > 10000 ? "" : WrongIn(problem, better));
  Expect(call.percent > 10000 ? "" : WrongIn(problem, both));
  Expect(RankOf(call, better) <= RankOf(call, worse) ? "" : "refinement made a partition worse");
  Expect(RankOf(call, again) <= RankOf(call, made) ? "" : "refinement made a result worse");
  Expect(RankOf(call, both) <= std::min(RankOf(call, made), RankOf(call, worse))
             ? ""
             : "a combination is worse than what it was made of");
  return 0;
}
