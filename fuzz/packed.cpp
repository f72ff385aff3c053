// fuzz/packed.cpp - xz, bzip2 and zstd data from anyone: a text or a fault; and every text comes back from what is
// written of it, which is no text once a piece is missing.
// SPDX-License-Identifier: MIT

#include "formats/packed.h"

#include "fuzz.h"

#include "formats/failure.h"

#include <algorithm>
#include <optional>

using namespace kapris_formats;

// Nothing if the data are at fault, and said to be.
static std::optional<std::string> TextOrFault(Packing packing, const std::string &bytes)
{
  try {
    return Unpack("x", packing, bytes);
  } catch (const Failure &failure) {
    Expect(failure.status == EXIT_MALFORMED && failure.text.starts_with("x:1:1: ") ? "" : failure.text);
    return std::nullopt;
  }
}

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
  const std::string bytes(data, data + size);
  const Packing given = PackingOf(bytes);

  // Writing xz takes a hundred times as long as reading a few bytes.
  if (given != Packing::NONE) {
    TextOrFault(given, bytes);
    return 0;
  }
  for (const Packing packing : {Packing::XZ, Packing::BZIP2}) {
    const std::string packed = Pack(packing, bytes);
    Expect(PackingOf(packed) == packing ? "" : "what is written is not known");
    Expect(TextOrFault(packing, packed) == bytes ? "" : "the text does not come back");
    Expect(TextOrFault(packing, packed + packed) == bytes + bytes ? "" : "a second stream is lost");
    Expect(TextOrFault(packing, packed + "more") ? "what follows is lost" : "");
    for (std::size_t at = 6; at < packed.size(); at += std::max<std::size_t>(1, packed.size() / 16))
      Expect(TextOrFault(packing, packed.substr(0, at)) ? "data that are cut off give a text" : "");
  }
  return 0;
}
