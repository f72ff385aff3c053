// fuzz/checked.cpp - one small hypergraph on all roads: with the internal checks on, every gain, cut and k-way record
// is compared with its definition on the way; traces must not change a result.
// SPDX-License-Identifier: MIT

#include "fuzz.h"

#include "base/random.h"
#include "property/run.h"

static Result Run(Call call, int dbglvl)
{
  std::string printed;

  call.options[8] = dbglvl;
  InitRandom__(1);
  const Result result = RunTraced(call, &printed);
  Expect(WrongIn(call, result, printed));
  return result;
}

static void Try(const Call &call)
{
  const Result silent = Run(call, 0), loud = Run(call, 511 & ~32);

  Expect(silent.part == loud.part && silent.cut == loud.cut ? "" : "traces changed the result");
}

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
  Bytes bytes = {data, data + size};
  Call call = {};
  call.nparts = 2 + bytes.Below(4);
  const int ub = bytes.Below(45), seed = bytes.Below(65536), ctype = 1 + bytes.Below(5),
            vcycle = bytes.Below(4), reconst = bytes.Below(2);
  call.instance = DecodeInstance(&bytes);
  const std::vector<int> part = DecodeParts(&bytes, call.instance.ncells, call.nparts, 0);
  const std::vector<int> fixed = DecodeParts(&bytes, call.instance.ncells, call.nparts, -1);

  for (int rtype = 1; rtype <= 3; rtype++) {
    const int isfixed = (ctype + rtype) % 2;
    call.options = {1, 1, ctype, rtype, vcycle, reconst, isfixed, seed, 0};
    call.UBfactor = 1 + ub;
    call.part = isfixed ? fixed : std::vector<int>();
    for (const Entry entry : {PART_RECURSIVE, PART_RECURSIVE_INTERNAL}) {
      call.entry = entry;
      Try(call);
    }
    Call two = call;
    two.entry = REFINE_2WAY;
    two.nparts = 2;
    two.part = part;
    for (int &p : two.part)
      p %= 2;
    Try(two);
    if (rtype == 3)
      continue;
    call.UBfactor = 5 + ub;
    call.entry = REFINE_KWAY;
    call.part = part;
    Try(call);
    call.entry = PART_KWAY;
    call.part.clear();
    Try(call);
  }
  Expect(CurrentLedger()->blocks == 0 ? "" : "memory was not released");
  return 0;
}
