// formats/modules.h - the modules in the JSON text of a netlist, as yosys writes it; private to yosys.cpp.
// SPDX-License-Identifier: MIT
#pragma once

#include "formats/scan.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kapris_formats
{

// Consecutive items of a list that a module has.
struct Slice {
  size_t first = 0, end = 0;
};

inline constexpr int constant_bit = -1;

struct ModulePort {
  std::string name;
  Slice bits;
};

struct ModuleCell {
  std::string name, type;
  size_t at; // in the text
  Slice connections;
};

struct ModuleConnection {
  std::string port;
  size_t at;
  Slice bits;
};

struct ModuleNet {
  std::string name;
  bool hidden = false, upto = false;
  int offset = 0;
  Slice bits;
};

struct Module {
  std::string name;
  size_t at;
  bool top = false, blackbox = false;
  std::vector<ModulePort> ports;
  std::vector<ModuleCell> cells;
  std::vector<ModuleConnection> connections;
  std::vector<ModuleNet> nets;
  std::vector<int> bits; // numbers of the module's own, or constant_bit
};

// Where faults of the text are.
struct JsonPlaces {
  std::string name; // of the file
  std::string_view text;
  Problems *problems;
};

// The scanner of the text at a place, for FailAt, FaultAt and WarnAt.
Scan ScanAt(const JsonPlaces &places, size_t at);

// Reads all modules, by name. Faults are those of JSON and of what the keys must hold; keys of no use here are passed
// over.
std::vector<Module> ReadModules(const JsonPlaces &places);

} // namespace kapris_formats
