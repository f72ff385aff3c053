// formats/mtx.cpp - the reader of Matrix Market text.
// SPDX-License-Identifier: MIT
//
//   banner   kind of numbers, symmetry           ReadBanner
//   sizes    rows, columns, entries; bounded     ReadSizes
//   entries  row, column, value                  ReadEntries
//   mirror   what symmetry leaves out            MirrorEntries
//   weigh    cells by their entries              WeighCells
//
// Entries are read as (row, column); the column-net model swaps them at the end.

#include "formats/entries.h"
#include "formats/formats.h"
#include "formats/text.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <fmt/core.h>
#include <string>
#include <utility>

namespace kapris_formats
{

namespace
{

struct Matrix {
  int nvalues = 0; // per entry
  bool whole = false;
  bool mirrored = false;
  bool diagonal = true; // allowed
  int nrows = 0;
  int ncolumns = 0;
  int nentries = 0;
};

} // namespace

static std::string NextLowered(Scan *scan)
{
  std::string word(NextWord(scan));

  for (char &c : word)
    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return word;
}

static std::string NextOf(Scan *scan, const char *what, const std::vector<std::string> &allowed)
{
  NextInLine(scan);
  const char *place = scan->at;
  std::string word = NextLowered(scan);

  if (std::find(allowed.begin(), allowed.end(), word) == allowed.end())
    FailAt(*scan, place,
           fmt::format("the {} is {}, not {}", what, Quoted(*scan, place), Join(allowed, ", ")));
  return word;
}

static Matrix ReadBanner(Scan *scan)
{
  Matrix matrix;

  if (NextLowered(scan) != "%%matrixmarket")
    FailAt(*scan, scan->start, "the first line must begin with %%MatrixMarket");
  NextOf(scan, "object", {"matrix"});
  NextInLine(scan);
  const char *place = scan->at;
  if (NextOf(scan, "layout", {"coordinate", "array"}) == "array")
    FailAt(*scan, place, "the layout 'array' has no pattern: write the matrix with the layout 'coordinate'");
  const std::string field = NextOf(scan, "kind of values", {"pattern", "real", "integer", "complex"});
  matrix.nvalues = field == "pattern" ? 0 : field == "complex" ? 2 : 1;
  matrix.whole = field == "integer";
  const std::string symmetry =
      NextOf(scan, "symmetry", {"general", "symmetric", "skew-symmetric", "hermitian"});
  matrix.mirrored = symmetry != "general";
  matrix.diagonal = symmetry != "skew-symmetric";
  EndLine(scan, "the first line");
  return matrix;
}

// An entry is at least two digits with what follows them.
static void ReadSizes(Scan *scan, Matrix *matrix)
{
  const Scan sizes = *scan;

  matrix->nrows = ReadCount(scan, "the number of rows");
  matrix->ncolumns = ReadCount(scan, "the number of columns");
  matrix->nentries = ReadCount(scan, "the number of entries");
  EndLine(scan, "the sizes");
  if (matrix->mirrored && matrix->nrows != matrix->ncolumns)
    FailAt(sizes, sizes.at,
           fmt::format("a symmetric matrix of {} x {} is not square", matrix->nrows, matrix->ncolumns));
  const long long left = scan->end - scan->at;
  const long long needed = (4LL + 2LL * matrix->nvalues) * matrix->nentries - 1;
  if (needed > left)
    FailAt(
        sizes, sizes.at,
        fmt::format("{} entries need at least {} bytes, but only {} follow", matrix->nentries, needed, left));
}

// The index from 0, or no_number.
static int ReadIndex(Scan *scan, const char *what, int count)
{
  if (!NextInLine(scan)) {
    FaultAt(*scan, scan->at, fmt::format("the {} of the entry is missing", what));
    return no_number;
  }
  const char *place = scan->at;
  const int index = ReadNumber(scan, what);
  if (index == no_number)
    return index;
  if (index >= 1 && index <= count)
    return index - 1;
  FaultAt(*scan, place,
          index < 1
              ? fmt::format("{} 0 (line {}): {}s count from 1", what, scan->line, what)
              : fmt::format("{} {} (line {}): there are only {} {}s", what, index, scan->line, count, what));
  return no_number;
}

template <typename Number>
static bool IsNumber(std::string_view word)
{
  Number number;

  if (word.starts_with('+'))
    word.remove_prefix(1);
  const std::from_chars_result read = std::from_chars(word.data(), word.data() + word.size(), number);
  // What leaves the range of Number is a number all the same, and only the pattern counts.
  return read.ec != std::errc::invalid_argument && read.ptr == word.data() + word.size();
}

static void ReadValues(Scan *scan, const Matrix &matrix)
{
  for (int value = 0; value < matrix.nvalues; value++) {
    if (!NextInLine(scan)) {
      FaultAt(*scan, scan->at, "the value of the entry is missing");
      return;
    }
    const char *place = scan->at;
    const std::string_view word = NextWord(scan);
    if (!(matrix.whole ? IsNumber<long long>(word) : IsNumber<double>(word)))
      FaultAt(*scan, place,
              fmt::format("value: {} is not a{} number", Quoted(*scan, place), matrix.whole ? " whole" : ""));
  }
}

static std::vector<Entry> ReadEntries(Scan *scan, const Matrix &matrix)
{
  std::vector<Entry> entries;

  entries.reserve(static_cast<size_t>(matrix.nentries));
  for (int read = 0; read < matrix.nentries; read++) {
    if (!NextFilledLine(scan))
      FailAt(*scan, scan->at, fmt::format("the text ends after {} of {} entries", read, matrix.nentries));
    const char *place = scan->at;
    const int row = ReadIndex(scan, "row", matrix.nrows);
    const int column = ReadIndex(scan, "column", matrix.ncolumns);
    ReadValues(scan, matrix);
    if (row == column && row >= 0 && !matrix.diagonal)
      FaultAt(*scan, place, "a skew-symmetric matrix has no entries on its diagonal");
    if (row >= 0 && column >= 0)
      entries.push_back({row, column});
    EndLine(scan, "the entry");
  }
  EndText(scan, "the last entry");
  return entries;
}

static void MirrorEntries(std::vector<Entry> *entries)
{
  for (size_t i = 0, n = entries->size(); i < n; i++)
    if ((*entries)[i].net != (*entries)[i].cell)
      entries->push_back({(*entries)[i].cell, (*entries)[i].net});
}

static void WeighCells(Hgr *hgr)
{
  hgr->cellwgts.assign(static_cast<size_t>(hgr->ncells), 0);
  for (const int pin : hgr->netind)
    hgr->cellwgts[static_cast<size_t>(pin)]++;
}

Hgr ReadMtx(const std::string &name, std::string_view text, Model model, bool unit_weights,
            Problems *problems)
{
  Scan scan = StartScan(name, text, problems);
  Matrix matrix = ReadBanner(&scan);

  if (!NextFilledLine(&scan))
    FailAt(scan, scan.at, "the sizes are missing: rows, columns, entries");
  const Scan sizes = scan;
  ReadSizes(&scan, &matrix);
  std::vector<Entry> entries = ReadEntries(&scan, matrix);
  if (matrix.mirrored)
    MirrorEntries(&entries);
  if (model == Model::COLUMN_NET) {
    for (Entry &entry : entries)
      std::swap(entry.net, entry.cell);
    std::swap(matrix.nrows, matrix.ncolumns);
  }
  CheckProportion(sizes, "nets", matrix.nrows, text.size());
  if (!unit_weights)
    CheckProportion(sizes, "cells with weights", matrix.ncolumns, text.size());
  Hgr hgr = HgrOfEntries(sizes, matrix.nrows, matrix.ncolumns, entries);
  if (!unit_weights)
    WeighCells(&hgr);
  return hgr;
}

} // namespace kapris_formats
