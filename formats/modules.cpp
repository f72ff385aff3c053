// formats/modules.cpp - the modules in the JSON text of a netlist.
// SPDX-License-Identifier: MIT
//
// The text is read event by event: a tree of it would take many times its size, and would have lost the places and the
// repeated keys. What an event means depends on what it is in and on its key; the table steps says so.

#include "formats/modules.h"

#include "formats/names.h"
#include "formats/text.h"

#include <algorithm>
#include <climits>
#include <fmt/core.h>
#include <iterator>
#include <nlohmann/json.hpp>

namespace kapris_formats
{

namespace
{

// What a value is in, or is.
enum State {
  OUTSIDE,
  FILE_KEYS,
  MODULES,
  MODULE,
  ATTRIBUTES,
  PORTS,
  PORT,
  CELLS,
  CELL,
  CONNECTIONS,
  NETS,
  NET,
  BITS,
  BIT,
  TOP,
  BLACKBOX,
  TYPE,
  HIDDEN,
  OFFSET,
  UPTO,
  OTHER // passed over, with all that is in it
};

enum Kind { OBJECT, ARRAY, STRING, NUMBER, SCALAR };

struct Step {
  State in;
  const char *key; // nullptr: any
  State state;
  Kind kind;
};

constexpr Step steps[] = {
    {OUTSIDE, nullptr, FILE_KEYS, OBJECT},
    {FILE_KEYS, "modules", MODULES, OBJECT},
    {MODULES, nullptr, MODULE, OBJECT},
    {MODULE, "attributes", ATTRIBUTES, OBJECT},
    {MODULE, "ports", PORTS, OBJECT},
    {MODULE, "cells", CELLS, OBJECT},
    {MODULE, "netnames", NETS, OBJECT},
    {ATTRIBUTES, "top", TOP, SCALAR},
    {ATTRIBUTES, "blackbox", BLACKBOX, SCALAR},
    {ATTRIBUTES, "whitebox", BLACKBOX, SCALAR},
    {PORTS, nullptr, PORT, OBJECT},
    {PORT, "bits", BITS, ARRAY},
    {CELLS, nullptr, CELL, OBJECT},
    {CELL, "type", TYPE, STRING},
    {CELL, "connections", CONNECTIONS, OBJECT},
    {CONNECTIONS, nullptr, BITS, ARRAY},
    {NETS, nullptr, NET, OBJECT},
    {NET, "bits", BITS, ARRAY},
    {NET, "hide_name", HIDDEN, NUMBER},
    {NET, "offset", OFFSET, NUMBER},
    {NET, "upto", UPTO, NUMBER},
    {BITS, nullptr, BIT, SCALAR},
};

const char *NameOfKind(Kind kind)
{
  switch (kind) {
  case OBJECT:
    return "an object";
  case ARRAY:
    return "an array";
  case STRING:
    return "a string";
  case NUMBER:
    return "a number";
  case SCALAR:
    break;
  }
  return "a number or a string";
}

// Tells how far the JSON library has read.
struct Cursor {
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char *;
  using reference = const char &;

  const char *at;
  const char **read;

  reference operator*() const
  {
    return *at;
  }
  Cursor &operator++()
  {
    *read = ++at;
    return *this;
  }
  Cursor operator++(int)
  {
    const Cursor before = *this;
    ++*this;
    return before;
  }
  bool operator==(const Cursor &other) const
  {
    return at == other.at;
  }
  bool operator!=(const Cursor &other) const
  {
    return at != other.at;
  }
};

struct Level {
  State state;
  std::string key; // the last
};

// What the JSON library calls.
struct Handler {
  const JsonPlaces *places;
  const char *read;      // behind the last token
  const char *token;     // begin of the current one
  const char *last_read; // behind the one before it
  const char *key_token; // begin of the last key that counts
  std::vector<Level> levels = {{OUTSIDE, ""}};
  long long passed = 0; // depth below a value that is passed over
  std::vector<Module> modules;

  // The names of the members are the library's.
  bool null()
  {
    return Value(nullptr, nullptr);
  }
  bool boolean(bool)
  {
    return Value(nullptr, nullptr);
  }
  bool number_integer(std::int64_t value)
  {
    return Value(&value, nullptr);
  }
  bool number_unsigned(std::uint64_t value)
  {
    const std::int64_t number = static_cast<std::int64_t>(std::min<std::uint64_t>(value, INT64_MAX));
    return Value(&number, nullptr);
  }
  bool number_float(double, const std::string &)
  {
    return Value(nullptr, nullptr);
  }
  bool string(std::string &text)
  {
    return Value(nullptr, &text);
  }
  bool binary(std::vector<std::uint8_t> &)
  {
    return true;
  }
  bool start_object(size_t)
  {
    return Start(OBJECT);
  }
  bool start_array(size_t)
  {
    return Start(ARRAY);
  }
  bool end_object()
  {
    return End();
  }
  bool end_array()
  {
    return End();
  }
  bool key(std::string &text);
  bool parse_error(size_t, const std::string &, const nlohmann::detail::exception &error);

  void FindToken();
  std::string Path() const;
  [[noreturn]] void Fail(const std::string &message) const;
  void Expect(Kind kind, const Step &step) const;
  const Step *NextStep() const;
  bool Value(const std::int64_t *number, const std::string *text);
  void AddBit(const std::int64_t *number, const std::string *text);
  void Open(State state);
  void Close(State state);
  bool Start(Kind kind);
  bool End();
  Slice *Bits();
};

} // namespace

Scan ScanAt(const JsonPlaces &places, size_t at)
{
  Scan scan = StartScan(places.name, places.text, places.problems);

  // What is only counted needs no place, and to find one takes long.
  if (places.problems != nullptr && places.problems->kept.size() >= most_kept)
    return scan;
  scan.at = scan.start + at;
  scan.line += std::count(scan.start, scan.at, '\n');
  const size_t end = at == 0 ? places.text.npos : places.text.rfind('\n', at - 1);
  scan.start += end == places.text.npos ? 0 : end + 1;
  return scan;
}

// Between two tokens there are only these.
void Handler::FindToken()
{
  const char *end = read;

  token = last_read;
  while (token < end && (IsBlank(*token) || *token == '\n' || *token == ',' || *token == ':'))
    token++;
  last_read = read;
}

std::string Handler::Path() const
{
  std::string path;

  for (const Level &level : levels)
    if (!level.key.empty())
      path += (path.empty() ? "" : ".") + level.key;
  constexpr size_t longest = 120;
  if (path.size() > longest)
    path = "..." + path.substr(path.size() - longest);
  return Escape(path);
}

void Handler::Fail(const std::string &message) const
{
  const size_t at = static_cast<size_t>(token - places->text.data());
  const std::string path = Path();

  FailAt(ScanAt(*places, at), token, path.empty() ? message : fmt::format("{}: {}", path, message));
}

bool Handler::parse_error(size_t, const std::string &, const nlohmann::detail::exception &error)
{
  // "[json...] parse error at line 1, column 2: what is wrong"
  const std::string_view what = error.what();
  const size_t end = places->text.size(), at = static_cast<size_t>(read - places->text.data());
  const size_t text = what.find("column") == what.npos ? what.npos : what.find(": ", what.find("column"));
  constexpr size_t longest = 160;

  token = places->text.data() + (at == 0 ? 0 : std::min(at, end) - 1);
  Fail(fmt::format("no JSON: {}", Escape(what.substr(text == what.npos ? 0 : text + 2, longest))));
}

// The meaning of a value here; none if it is passed over.
const Step *Handler::NextStep() const
{
  for (const Step &step : steps)
    if (step.in == levels.back().state && (step.key == nullptr || step.key == levels.back().key))
      return &step;
  return nullptr;
}

void Handler::Expect(Kind kind, const Step &step) const
{
  if (kind != step.kind && !(step.kind == SCALAR && (kind == STRING || kind == NUMBER)))
    Fail(fmt::format("{} is expected, not {}", NameOfKind(step.kind), NameOfKind(kind)));
}

bool Handler::key(std::string &text)
{
  FindToken();
  if (passed > 0)
    return true;
  levels.back().key = text;
  key_token = token;
  return true;
}

static bool IsTrue(const std::int64_t *number, const std::string *text)
{
  return number != nullptr ? *number != 0 : text != nullptr && text->find('1') != text->npos;
}

// The bits that are being read.
Slice *Handler::Bits()
{
  Module &module = modules.back();

  switch (levels[levels.size() - 2].state) {
  case PORT:
    return &module.ports.back().bits;
  case NET:
    return &module.nets.back().bits;
  default:
    return &module.connections.back().bits;
  }
}

void Handler::AddBit(const std::int64_t *number, const std::string *text)
{
  if (text != nullptr) {
    if (*text != "0" && *text != "1" && *text != "x" && *text != "z")
      Fail(fmt::format("the bit {} is neither a number nor \"0\", \"1\", \"x\" or \"z\"", ShortName(*text)));
    modules.back().bits.push_back(constant_bit);
    return;
  }
  if (*number < 0 || *number > INT_MAX)
    Fail(fmt::format("the bit {} is not in 0 to {}", *number, INT_MAX));
  modules.back().bits.push_back(static_cast<int>(*number));
}

bool Handler::Value(const std::int64_t *number, const std::string *text)
{
  FindToken();
  const Step *step = passed > 0 ? nullptr : NextStep();
  if (step == nullptr)
    return true;
  if (number == nullptr && text == nullptr)
    Fail(fmt::format("{} is expected", NameOfKind(step->kind)));
  Expect(number != nullptr ? NUMBER : STRING, *step);
  switch (step->state) {
  case BIT:
    AddBit(number, text);
    break;
  case TOP:
    modules.back().top = IsTrue(number, text);
    break;
  case BLACKBOX:
    modules.back().blackbox |= IsTrue(number, text);
    break;
  case TYPE:
    modules.back().cells.back().type = *text;
    break;
  case HIDDEN:
    modules.back().nets.back().hidden = *number != 0;
    break;
  case UPTO:
    modules.back().nets.back().upto = *number != 0;
    break;
  case OFFSET:
    if (*number < -INT_MAX || *number > INT_MAX)
      Fail(fmt::format("the offset {} is not in -{} to {}", *number, INT_MAX, INT_MAX));
    modules.back().nets.back().offset = static_cast<int>(*number);
    break;
  default:
    break;
  }
  return true;
}

// An item whose name is the last key.
void Handler::Open(State state)
{
  const std::string &key = levels.back().key;
  const size_t at = static_cast<size_t>(key_token - places->text.data());

  if (state == MODULE) {
    modules.emplace_back();
    modules.back().name = key;
    modules.back().at = at;
  } else if (state == PORT) {
    modules.back().ports.push_back({key, {}});
  } else if (state == CELL) {
    modules.back().cells.push_back({key, "", at, {}});
  } else if (state == NET) {
    modules.back().nets.emplace_back();
    modules.back().nets.back().name = key;
  } else if (state == CONNECTIONS) {
    Slice &connections = modules.back().cells.back().connections;
    if (connections.end > connections.first)
      Fail("the key stands twice in its cell");
    connections.first = connections.end = modules.back().connections.size();
  } else if (state == BITS) {
    if (levels.back().state == CONNECTIONS)
      modules.back().connections.push_back({key, at, {}});
    levels.push_back({BITS, ""});
    Slice *bits = Bits();
    levels.pop_back();
    bits->first = bits->end = modules.back().bits.size();
  }
}

void Handler::Close(State state)
{
  if (state == BITS)
    Bits()->end = modules.back().bits.size();
  else if (state == CONNECTIONS)
    modules.back().cells.back().connections.end = modules.back().connections.size();
}

bool Handler::Start(Kind kind)
{
  FindToken();
  const Step *step = passed > 0 ? nullptr : NextStep();
  if (step == nullptr) {
    passed++;
    return true;
  }
  Expect(kind, *step);
  Open(step->state);
  levels.push_back({step->state, ""});
  return true;
}

bool Handler::End()
{
  FindToken();
  if (passed > 0) {
    passed--;
    return true;
  }
  const State state = levels.back().state;
  Close(state);
  levels.pop_back();
  if (state == CELL && modules.back().cells.back().type.empty())
    Fail("the cell has no type");
  return true;
}

// Sorts what a name finds; a fault for names that stand twice.
template <typename Item, typename PlaceOf>
static void CheckRepeats(const JsonPlaces &places, const char *what, const std::vector<Item> &items,
                         PlaceOf place_of)
{
  std::vector<const Item *> sorted;

  for (const Item &item : items)
    sorted.push_back(&item);
  std::stable_sort(sorted.begin(), sorted.end(),
                   [](const Item *a, const Item *b) { return a->name < b->name; });
  for (size_t i = 1; i < sorted.size(); i++)
    if (sorted[i]->name == sorted[i - 1]->name) {
      const Scan scan = ScanAt(places, place_of(*sorted[i]));
      FaultAt(scan, scan.at, fmt::format("the {} {} stands twice", what, ShortName(sorted[i]->name)));
    }
}

std::vector<Module> ReadModules(const JsonPlaces &places)
{
  const char *first = places.text.data(), *end = first + places.text.size();
  Handler handler = {.places = &places,
                     .read = first,
                     .token = first,
                     .last_read = first,
                     .key_token = first,
                     .modules = {}};

  nlohmann::json::sax_parse(Cursor{first, &handler.read}, Cursor{end, &handler.read}, &handler);
  std::vector<Module> modules = std::move(handler.modules);
  CheckRepeats(places, "module", modules, [](const Module &module) { return module.at; });
  for (const Module &module : modules)
    CheckRepeats(places, "cell", module.cells, [](const ModuleCell &cell) { return cell.at; });
  for (const Module &module : modules)
    CheckRepeats(places, fmt::format("port of module {}", ShortName(module.name)).c_str(), module.ports,
                 [&module](const ModulePort &) { return module.at; });
  std::stable_sort(modules.begin(), modules.end(),
                   [](const Module &a, const Module &b) { return a.name < b.name; });
  return modules;
}

} // namespace kapris_formats
