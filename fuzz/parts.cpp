// fuzz/parts.cpp - part files and files of fixed cells: exactly the numbers that are allowed, or a fault with its
// place.
// SPDX-License-Identifier: MIT
//
// The first three bytes say how many cells and parts there should be and which of the two files it is.

#include "formats/parts.h"

#include "fuzz.h"

#include "formats/failure.h"

using namespace kapris_formats;

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
  Bytes bytes = {data, data + size};
  const int ncells = bytes.Below(20), nparts = bytes.Below(5), lowest = bytes.Flag() ? -1 : 0;
  const std::string text(bytes.at, bytes.end);
  const auto read = lowest < 0 ? ReadFixed : ReadParts;

  try {
    const std::vector<int> parts = read("x", text, ncells, nparts);
    Expect(static_cast<int>(parts.size()) == ncells ? "" : "another number of cells");
    for (const int part : parts)
      Expect(part >= lowest && (nparts == 0 || part < nparts) ? "" : "a part that is not allowed");
    Expect(read("x", FormatParts(parts), ncells, nparts) == parts ? ""
                                                                  : "the text does not give the parts again");
  } catch (const Failure &failure) {
    Expect(failure.status == EXIT_MALFORMED && failure.text.starts_with("x:") ? "" : failure.text);
  }
  return 0;
}
