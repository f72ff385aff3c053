// formats/names.h - names of cells and nets: how they are kept beside a hypergraph, written, and looked up.
// SPDX-License-Identifier: MIT
//
// A name is written as it is, or in quotation marks with escapes if a word cannot hold it or the eye would miss
// something: so every name is one word without blanks, tabs and line ends.
#pragma once

#include "formats/scan.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kapris_formats
{

// A cell of no weight whose place is known.
struct Terminal {
  int cell;
  double x, y;
};

// What a file says beside its hypergraph.
struct Details {
  std::vector<std::string>
      cells; // names, [ncells]; empty: the format has none, and numbers from 1 stand for them
  std::vector<std::string> nets;   // the same, [nnets]
  std::vector<Terminal> terminals; // by cell
};

// Adds a name as it is written.
void AppendName(std::string *text, std::string_view name);

// As written, or the number from 1.
std::string CellName(const Details &details, int cell);
std::string NetName(const Details &details, int net);

// For a message: as written, long ones shortened.
std::string ShortName(std::string_view name);

// Reads the name here, after NextInLine, as AppendName writes it.
std::string ReadName(Scan *scan);

// Finds cells by their names.
struct NameIndex {
  const std::vector<std::string> *names;
  std::vector<int> order; // cells by name; empty: no names
  int ncells;
  bool numbers; // stand for cells too: no name looks like one
};

// The names must outlive the index.
NameIndex IndexCells(const Details &details, int ncells);

// The places in the order that have the name, the second behind the last.
std::pair<size_t, size_t> FindName(const NameIndex &index, std::string_view name);

// Pairs of equal names, as positions in the list: the first and each later one.
std::vector<std::pair<int, int>> FindRepeats(const std::vector<std::string> &names);

// Reads the cell that the word here means, a name or a number from 1; fails if there is none, or are several.
int ReadCell(Scan *scan, const NameIndex &index);

// "name<TAB>part" for each cell.
std::string FormatNames(const Details &details, const std::vector<int> &part);

// Part files as in parts.h, or lines of a name and a part in any order, which may leave cells free (fixed) but not out
// (parts). The first line decides.
std::vector<int> LoadNamedParts(const std::string &path, const Details &details, int ncells, int nparts);
std::vector<int> LoadNamedFixed(const std::string &path, const Details &details, int ncells, int nparts);

// The lines of names alone, where a text has that form; the name is for messages.
std::vector<int> ReadNamed(const std::string &name, std::string_view text, const NameIndex &index, int nparts,
                           bool complete);

} // namespace kapris_formats
