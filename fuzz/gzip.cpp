// fuzz/gzip.cpp - gzip data from anyone: a text or a fault; and every text comes back from its compressed form.
// SPDX-License-Identifier: MIT

#include "io/gzip.h"

#include "failure.h"
#include "fuzz.h"

using namespace kapris_cli;

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
  const std::string bytes(data, data + size);

  Expect(Decompress("x", Compress(bytes)) == bytes ? "" : "the text does not come back");
  if (!IsGzip(bytes))
    return 0;
  try {
    const std::string text = Decompress("x", bytes);
    // 1032 is the largest ratio of the format.
    Expect(text.size() <= 1032 * size ? "" : "more text than the data can hold");
  } catch (const Failure &failure) {
    Expect(failure.status == EXIT_MALFORMED && failure.text.starts_with("x:1:1: ") ? "" : failure.text);
  }
  return 0;
}
