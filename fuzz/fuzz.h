// fuzz/fuzz.h - what the fuzz targets share: decisions and hypergraphs out of bytes, and how a finding ends a run.
// SPDX-License-Identifier: MIT
//
// A target is a program with a function LLVMFuzzerTestOneInput. Linked by clang with libFuzzer it searches for bytes
// that break a property; linked with replay.cpp, by any compiler, it tries files.
#pragma once

#include "support/build.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

// Ends the program, unless there is no flaw.
void Expect(const std::string &flaw);

// Bytes taken one decision after the other. Behind the last there are only zeros, so that every prefix means
// something.
struct Bytes {
  const std::uint8_t *at, *end;

  int Below(int n); // 0 .. n-1; takes one byte, or two if n > 256
  bool Flag();
};

// A valid hypergraph: nets pin by pin, or a random one of up to 150 cells from a seed and with nets of its own; with
// weights or without.
Instance DecodeInstance(Bytes *bytes);
// Numbers lowest .. nparts-1.
std::vector<int> DecodeParts(Bytes *bytes, int ncells, int nparts, int lowest);
// Breaks one number, which may still be valid then.
void Corrupt(Bytes *bytes, Instance *instance);
// A number that is likely to be refused.
int DecodeExtreme(Bytes *bytes);
