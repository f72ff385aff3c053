// fuzz/reader.cpp - one reader of hypergraphs, FUZZ_READER, on any text: a sound record or a fault with its place,
// the same with a list of problems as without, nothing read behind the text, and what is written is read again.
// SPDX-License-Identifier: MIT

#include "fuzz.h"
#include "sound.h"

#include <memory>

using namespace kapris_formats;

static std::string FlawOfFault(const std::string &fault)
{
  return fault.starts_with("x:") ? "" : "a fault without its place: " + fault;
}

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
  // A block of its own, so that the sanitizer sees the first byte behind it.
  const std::unique_ptr<char[]> block(new char[size]);
  const std::string_view text(block.get(), size);
  Hgr hgr, listed;
  Problems problems;

  std::copy_n(data, size, block.get());
  const std::string fault = FirstFault(FUZZ_READER, text, nullptr, &hgr);
  Expect(FirstFault(FUZZ_READER, text, &problems, &listed) == fault ? ""
                                                                    : "a list changed the fault " + fault);
  if (!fault.empty()) {
    Expect(FlawOfFault(fault));
    return 0;
  }
  Expect(FirstFlaw(hgr));
  Expect(hgr == listed ? "" : "a list changed the record");

  const Hgr fromhgr = TryHgr(FormatHgr(hgr), nullptr), frompatoh = TryPatoh(FormatPatoh(hgr), nullptr);
  Expect(fromhgr == hgr ? "" : ".hgr text does not give the record again");
  Expect(frompatoh == hgr ? "" : ".patoh text does not give the record again");
  if (FUZZ_READER == TryGraph)
    Expect(TryGraph(FormatGraph(hgr), nullptr) == hgr ? "" : ".graph text does not give the record again");
  if (FUZZ_READER == TryMtx) {
    const Hgr frommtx = TryMtx(FormatMtx(hgr), nullptr);
    Expect(frommtx.netptr == hgr.netptr && frommtx.netind == hgr.netind ? "" : ".mtx text changes the pins");
  }
  return 0;
}
