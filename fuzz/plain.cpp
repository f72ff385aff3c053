// fuzz/plain.cpp - the five entry points of kapris.h: a valid call keeps every property of the sweep, a broken one is
// refused or keeps them too, and either way no memory stays behind.
// SPDX-License-Identifier: MIT

#include "fuzz.h"

#include "base/random.h"
#include "property/run.h"

static Call DecodeCall(Bytes *bytes)
{
  Call call = {};

  call.entry = Entry(bytes->Below(NENTRIES));
  const bool kway = call.entry == PART_KWAY || call.entry == REFINE_KWAY;
  const bool recursive = call.entry == PART_RECURSIVE || call.entry == PART_RECURSIVE_INTERNAL;
  call.nparts = call.entry == REFINE_2WAY ? 2
                : bytes->Below(16) < 15   ? 2 + bytes->Below(9)
                                          : 2 + bytes->Below(70);
  call.UBfactor = kway ? 5 + bytes->Below(100) : 1 + bytes->Below(49);
  call.options = {bytes->Below(8) > 0,
                  1 + bytes->Below(3),
                  1 + bytes->Below(5),
                  1 + bytes->Below(kway ? 2 : 3),
                  bytes->Below(4),
                  bytes->Below(2),
                  recursive && bytes->Flag(),
                  bytes->Below(65536),
                  bytes->Flag() ? bytes->Below(512) & ~32 : 0}; // times would cost a call of the clock each
  call.instance = DecodeInstance(bytes);
  if (!recursive && call.entry != PART_KWAY)
    call.part = DecodeParts(bytes, call.instance.ncells, call.nparts, 0);
  else if (call.options[0] && call.options[6])
    call.part = DecodeParts(bytes, call.instance.ncells, call.nparts, -1);
  return call;
}

// Neither the runs nor the parts become many: that is valid, and only takes its time.
static void CorruptCall(Bytes *bytes, Call *call)
{
  const int value = DecodeExtreme(bytes);

  switch (bytes->Below(4)) {
  case 0:
    call->options[static_cast<std::size_t>(bytes->Below(9))] = value;
    call->options[1] = std::min(call->options[1], 3);
    // Without options, or this one, the parts are no longer pre-assigned.
    if (call->entry <= PART_RECURSIVE_INTERNAL && (call->options[0] == 0 || call->options[6] == 0))
      call->part.clear();
    break;
  case 1:
    (call->entry != REFINE_2WAY && bytes->Flag() ? call->nparts : call->UBfactor) = value;
    call->nparts = std::min(call->nparts, 70);
    break;
  case 2:
    if (!call->part.empty())
      call->part[static_cast<std::size_t>(bytes->Below(call->instance.ncells))] = value;
    break;
  default:
    Corrupt(bytes, &call->instance);
  }
}

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
  Bytes bytes = {data, data + size};
  const bool corrupt = bytes.Below(4) == 0;
  Call call = DecodeCall(&bytes);
  const std::uint64_t serial = CurrentLedger()->serial;

  if (corrupt)
    CorruptCall(&bytes, &call);
  InitRandom__(1);
  try {
    Expect(Broken(call));
  } catch (const FatalError &error) {
    Expect(corrupt && error.kind == FATAL_INPUT ? "" : error.message);
    ReleaseLedger(serial);
  }
  Expect(CurrentLedger()->blocks == 0 ? "" : "memory was not released");
  return 0;
}
