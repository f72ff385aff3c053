// formats/kapris_formats.cpp - the C interface of the formats library: records of C around those of the readers.
// SPDX-License-Identifier: MIT

#include "formats/kapris_formats.h"

#include "formats/bookshelf.h"
#include "formats/fit.h"
#include "formats/hash.h"
#include "formats/input.h"
#include "formats/output.h"
#include "formats/records.h"
#include "include/kapris.h"

#include <cstring>
#include <exception>
#include <fmt/core.h>
#include <memory>
#include <new>
#include <utility>

namespace kapris_formats
{

namespace
{

struct NameTable {
  std::string bytes;
  std::vector<size_t> starts; // empty: no names
};

// The public record comes first: its address is that of the whole.
struct OwnedFile {
  kapris_file shown = {};
  Hgr hgr;
  NameTable cells, nets;
};

} // namespace

static NameTable TableOf(const std::vector<std::string> &names)
{
  NameTable table;

  if (names.empty())
    return table;
  table.starts.push_back(0);
  for (const std::string &name : names) {
    table.bytes += name;
    table.starts.push_back(table.bytes.size());
  }
  return table;
}

static kapris_names Show(const NameTable &table)
{
  return {table.bytes.data(), table.starts.empty() ? nullptr : table.starts.data()};
}

static std::unique_ptr<OwnedFile> Own(Hgr hgr, const Details &details)
{
  auto owned = std::make_unique<OwnedFile>();
  kapris_file &shown = owned->shown;

  owned->hgr = std::move(hgr);
  owned->cells = TableOf(details.cells);
  owned->nets = TableOf(details.nets);
  shown.ncells = owned->hgr.ncells;
  shown.nnets = owned->hgr.nnets;
  shown.net_starts = owned->hgr.netptr.data();
  shown.pins = owned->hgr.netind.data();
  shown.cell_weights = owned->hgr.cellwgts.empty() ? nullptr : owned->hgr.cellwgts.data();
  shown.net_weights = owned->hgr.netwgts.empty() ? nullptr : owned->hgr.netwgts.data();
  shown.cell_names = Show(owned->cells);
  shown.net_names = Show(owned->nets);
  return owned;
}

// ----------------------------------------------------------------------------------------------------------
// What comes in

template <typename Value>
static Value ValueOf(const Names<Value> &names, const char *what, const char *given, Value otherwise)
{
  std::string known;

  if (given == nullptr)
    return otherwise;
  for (const auto &[name, value] : names) {
    if (std::strcmp(name, given) == 0)
      return value;
    known += fmt::format("{}{}", known.empty() ? "" : ", ", name);
  }
  Refuse(fmt::format("{} is '{}', not one of {}", what, given, known));
}

static Input InputOf(const char *path, const kapris_reading *reading)
{
  Input input;

  input.path = path;
  if (reading == nullptr)
    return input;
  input.format = ValueOf(FormatNames(), "format", reading->format, Format::BY_NAME);
  input.model = ValueOf(ModelNames(), "model", reading->model, Model::BY_FORMAT);
  input.unit_weights = reading->unit_weights != 0;
  input.module = reading->module == nullptr ? "" : reading->module;
  if (reading->has_depth != 0) {
    if (reading->depth < 0)
      Refuse(fmt::format("depth is {}, below 0", reading->depth));
    input.depth = reading->depth;
  }
  return input;
}

// ----------------------------------------------------------------------------------------------------------
// Writing

static Format FormatToWrite(const char *path, const char *given)
{
  const Format format =
      given == nullptr ? FormatOfName(path) : ValueOf(FormatNames(), "format", given, Format::BY_NAME);

  if (format == Format::BY_NAME)
    Refuse(fmt::format("the name {} does not end with a format, and none is given", path));
  if (format == Format::CNF || format == Format::WCNF || format == Format::YOSYS)
    Refuse(fmt::format("{} is only read: write hgr, patoh, mtx, graph or bookshelf", NameOfFormat(format)));
  return format;
}

static void Write(const char *path, const char *given, const kapris_file &file, int drop)
{
  const Format format = FormatToWrite(path, given);
  const Drops drops = {(drop & KAPRIS_DROP_WEIGHTS) != 0, (drop & KAPRIS_DROP_REPEATS) != 0};
  Details details = DetailsOf(file);
  Hgr hgr = HgrOf(file);

  if (format != Format::BOOKSHELF && (drop & KAPRIS_DROP_NAMES) == 0 &&
      !(details.cells.empty() && details.nets.empty()))
    Refuse("the names would be lost: --drop-names leaves them out, and bookshelf holds them");
  if (format == Format::BOOKSHELF) {
    // Every cell has its area there.
    hgr.cellwgts.resize(static_cast<size_t>(hgr.ncells), 1);
    const auto files = FormatBookshelf(path, hgr, details);
    CheckFiles({}, BookshelfOutputs(path));
    for (const auto &[name, text] : files)
      WriteFile(name, text);
    return;
  }
  if (format == Format::MTX)
    hgr = FitIntoMatrix(drops, hgr);
  if (format == Format::GRAPH)
    hgr = FitIntoGraph(drops, hgr, &details);
  CheckFiles({}, {path});
  WriteHypergraph(path, format, hgr);
}

} // namespace kapris_formats

using namespace kapris_formats;

#define TEXT_OF(x)   #x
#define NUMBER_OF(x) TEXT_OF(x)

const char *kapris_formats_version(void)
{
  return NUMBER_OF(KAPRIS_VERSION_MAJOR) "." NUMBER_OF(KAPRIS_VERSION_MINOR) "." NUMBER_OF(
      KAPRIS_VERSION_PATCH);
}

kapris_file_status kapris_read_file(const char *path, const kapris_reading *reading, kapris_file **file,
                                    char *message, size_t room)
{
  if (file != nullptr)
    *file = nullptr;
  return Guard(message, room, [&] {
    if (path == nullptr || file == nullptr)
      Refuse("path and file must not be NULL");
    Details details;
    Hgr hgr = ReadHypergraph(InputOf(path, reading), nullptr, &details);
    *file = &Own(std::move(hgr), details).release()->shown;
  });
}

void kapris_free_file(kapris_file *file)
{
  delete reinterpret_cast<OwnedFile *>(file);
}

kapris_file_status kapris_write_file(const char *path, const char *format, const kapris_file *file, int drop,
                                     char *message, size_t room)
{
  return Guard(message, room, [&] {
    if (path == nullptr || file == nullptr)
      Refuse("path and file must not be NULL");
    Write(path, format, *file, drop);
  });
}

kapris_file_status kapris_hash_file(const kapris_file *file, char *digits, char *message, size_t room)
{
  return Guard(message, room, [&] { std::strcpy(digits, HashOf(HgrOf(*file)).c_str()); });
}

kapris_file_status kapris_hash_parts(const int *parts, int count, char *digits, char *message, size_t room)
{
  return Guard(message, room,
               [&] { std::strcpy(digits, HashOf(std::vector<int>(parts, parts + count)).c_str()); });
}
