// fuzz/gzip.cpp - gzip data from anyone: a text or a fault; and every text comes back from its compressed form, which
// is no text once a piece is missing, and no other one once a byte is wrong.
// SPDX-License-Identifier: MIT

#include "formats/gzip.h"

#include "fuzz.h"

#include "formats/failure.h"

#include <algorithm>

using namespace kapris_formats;

// Nothing if the data are at fault, and said to be.
static std::string TextOrFault(const std::string &bytes)
{
  try {
    return Decompress("x", bytes);
  } catch (const Failure &failure) {
    Expect(failure.status == EXIT_MALFORMED && failure.text.starts_with("x:1:1: ") ? "" : failure.text);
    return "";
  }
}

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
  const std::string bytes(data, data + size);

  const std::string packed = Compress(bytes);

  Expect(Decompress("x", packed) == bytes ? "" : "the text does not come back");
  Expect(Decompress("x", packed + Compress("more")) == bytes + "more" ? "" : "a second member is lost");
  for (std::size_t at = 2; at < std::min<std::size_t>(packed.size(), 40); at++) {
    // Only the header has bytes without a checksum, such as the time.
    std::string wrong = packed;
    wrong[at] = static_cast<char>(wrong[at] ^ (1 << at % 8));
    const std::string text = TextOrFault(wrong);
    Expect(text.empty() || text == bytes ? "" : "damage changes the text");
    bool failed = false;
    try {
      Decompress("x", packed.substr(0, at));
    } catch (const Failure &) {
      failed = true;
    }
    Expect(failed ? "" : "data that are cut off give a text");
  }
  // 1032 is the largest ratio of the format.
  if (IsGzip(bytes))
    Expect(TextOrFault(bytes).size() <= 1032 * size ? "" : "more text than the data can hold");
  return 0;
}
