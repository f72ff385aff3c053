// formats/yosys.cpp - the reader of netlists in the JSON text of yosys.
// SPDX-License-Identifier: MIT
//
//   modules   as they stand in the text                                   ReadModules
//   link      numbers of bits without gaps; instances to their modules    LinkModules
//   top       the one asked for, or marked, or not in any other           FindTop
//   order     children first; none contains itself                        OrderModules
//   weigh     cells by their types, modules by what is in them            WeighModules
//   flatten   a slot for each bit of each dissolved instance; ports join  Flatten
//             slots, and each joined set with pins becomes a net
//   names     of cells by their path, of nets by their uppermost name     NameNets
//
// A few bytes can describe more than fits anywhere, two instances in each of many modules: everything that flattening
// makes is bounded by the length of the text (Spend).

#include "formats/yosys.h"

#include "formats/entries.h"
#include "formats/modules.h"

#include <algorithm>
#include <fmt/core.h>
#include <numeric>

namespace kapris_formats
{

namespace
{

constexpr int leaf = -1;

// What follows from the text of a module.
struct Linked {
  std::vector<int> bits;     // the numbers in use, rising
  std::vector<int> children; // per cell, the module that it is an instance of, or leaf
  std::vector<int> ports;    // by name
  std::int64_t weight = 0;   // of all that is in it
};

struct Design {
  const JsonPlaces *places;
  const YosysRules *rules;
  std::vector<Module> modules; // by name; bits from 0 without gaps once they are linked
  std::vector<Linked> linked;
};

// A dissolved module.
struct Instance {
  int module;
  int depth;
  int first_slot;
  size_t next_cell;
  std::string prefix; // of the names in it
};

struct Flat {
  std::vector<int> slots;            // joined sets: the slot before in the set, itself at the first
  std::vector<Instance> instances;   // in the order of their slots
  std::vector<std::string> names;    // of cells, if they are asked for
  std::vector<std::int64_t> weights; // of cells
  std::vector<Entry> pins;           // net: a slot
  std::int64_t total = 0;
  size_t spent = 0, letters = 0; // see Spend
};

// The slot that all constants share.
constexpr int constant_slot = 0;

// The type of notes of where a cell came from, which are no hardware.
constexpr char note_type[] = "$scopeinfo";

} // namespace

static size_t At(int i)
{
  return static_cast<size_t>(i);
}

[[noreturn]] static void FailIn(const Design &design, size_t at, const std::string &message)
{
  const Scan scan = ScanAt(*design.places, at);

  FailAt(scan, scan.at, message);
}

// ----------------------------------------------------------------------------------------------------------
// Modules

static int FindModule(const std::vector<Module> &modules, std::string_view name)
{
  const auto found =
      std::lower_bound(modules.begin(), modules.end(), name,
                       [](const Module &module, std::string_view word) { return module.name < word; });

  return found == modules.end() || found->name != name ? leaf : static_cast<int>(found - modules.begin());
}

static Linked LinkModule(const std::vector<Module> &modules, Module *module)
{
  Linked linked;

  linked.bits = module->bits;
  std::sort(linked.bits.begin(), linked.bits.end());
  linked.bits.erase(std::unique(linked.bits.begin(), linked.bits.end()), linked.bits.end());
  if (!linked.bits.empty() && linked.bits[0] == constant_bit)
    linked.bits.erase(linked.bits.begin());
  for (int &bit : module->bits)
    if (bit != constant_bit)
      bit = static_cast<int>(std::lower_bound(linked.bits.begin(), linked.bits.end(), bit) -
                             linked.bits.begin());
  for (const ModuleCell &cell : module->cells) {
    const int child = FindModule(modules, cell.type);
    linked.children.push_back(child == leaf || modules[At(child)].blackbox ? leaf : child);
  }
  linked.ports.resize(module->ports.size());
  std::iota(linked.ports.begin(), linked.ports.end(), 0);
  std::sort(linked.ports.begin(), linked.ports.end(),
            [module](int a, int b) { return module->ports[At(a)].name < module->ports[At(b)].name; });
  return linked;
}

static void LinkModules(Design *design)
{
  for (Module &module : design->modules)
    design->linked.push_back(LinkModule(design->modules, &module));
}

static std::string ListNames(const Design &design, const std::vector<int> &modules)
{
  constexpr size_t most = 5;
  std::string list;

  for (size_t i = 0; i < std::min(most, modules.size()); i++)
    list += fmt::format("{}{}", i == 0 ? "" : ", ", ShortName(design.modules[At(modules[i])].name));
  return list + (modules.size() > most ? fmt::format(" and {} more", modules.size() - most) : "");
}

static int FindTop(const Design &design)
{
  const int nmodules = static_cast<int>(design.modules.size());
  std::vector<int> marked, all, roots;
  std::vector<bool> used(At(nmodules));

  for (const Linked &linked : design.linked)
    for (const int child : linked.children)
      if (child != leaf)
        used[At(child)] = true;
  for (int m = 0; m < nmodules; m++) {
    if (design.modules[At(m)].blackbox)
      continue;
    all.push_back(m);
    if (design.modules[At(m)].top)
      marked.push_back(m);
    if (!used[At(m)])
      roots.push_back(m);
  }
  if (!design.rules->module.empty()) {
    const int named = FindModule(design.modules, design.rules->module);
    if (named == leaf)
      FailIn(design, 0,
             fmt::format("there is no module {}, only {}", ShortName(design.rules->module),
                         all.empty() ? "black boxes" : ListNames(design, all)));
    return named;
  }
  const std::vector<int> &tops = marked.empty() ? roots : marked;
  if (tops.empty())
    FailIn(design, 0,
           all.empty() ? "there is no module with cells" : "no module is the top: name one with --module");
  if (tops.size() > 1)
    FailIn(design, 0,
           fmt::format("{} modules can be the top: name one with --module: {}", tops.size(),
                       ListNames(design, tops)));
  return tops[0];
}

// The modules that the top contains, itself last.
static std::vector<int> OrderModules(const Design &design, int top)
{
  enum { NEW, OPEN, DONE };
  std::vector<char> state(design.modules.size(), NEW);
  std::vector<std::pair<int, size_t>> path = {{top, 0}}; // module, its next cell
  std::vector<int> order;

  state[At(top)] = OPEN;
  while (!path.empty()) {
    auto &[m, next] = path.back();
    const std::vector<int> &children = design.linked[At(m)].children;
    while (next < children.size() && (children[next] == leaf || state[At(children[next])] == DONE))
      next++;
    if (next == children.size()) {
      state[At(m)] = DONE;
      order.push_back(m);
      path.pop_back();
      continue;
    }
    const int child = children[next];
    if (state[At(child)] == OPEN)
      FailIn(design, design.modules[At(m)].cells[next].at,
             fmt::format("cell {}: the module {} contains itself",
                         ShortName(design.modules[At(m)].cells[next].name),
                         ShortName(design.modules[At(child)].name)));
    state[At(child)] = OPEN;
    path.emplace_back(child, 0);
  }
  return order;
}

// ----------------------------------------------------------------------------------------------------------
// Weights

static std::int64_t WeightOfCell(const Design &design, const Module &module, size_t c)
{
  const ModuleCell &cell = module.cells[c];
  const int child = design.linked[At(static_cast<int>(&module - design.modules.data()))].children[c];
  const TypeWeights *table = design.rules->weights;
  const std::optional<std::int64_t> own = table == nullptr ? std::nullopt : WeightOfType(*table, cell.type);

  if (own || cell.type == note_type)
    return own.value_or(0);
  if (child != leaf)
    return design.linked[At(child)].weight;
  if (table == nullptr)
    return 1;
  if (!table->others)
    FailIn(
        design, cell.at,
        fmt::format("cell {}: {} has no weight for the type {}; a line '* WEIGHT' gives that of all others",
                    ShortName(cell.name), table->name, ShortName(cell.type)));
  return *table->others;
}

// In case modules are not dissolved. Sums stay at the most that there can be, and one weight more is a fault later.
static void WeighModules(Design *design, const std::vector<int> &order)
{
  for (const int m : order) {
    const Module &module = design->modules[At(m)];
    std::int64_t weight = 0;
    for (size_t c = 0; c < module.cells.size(); c++)
      weight = std::min(weight + WeightOfCell(*design, module, c), most_weight + 1);
    design->linked[At(m)].weight = weight;
  }
}

// ----------------------------------------------------------------------------------------------------------
// Flattening

// Fails if more comes of the text than is in proportion to it.
static void Spend(const Design &design, size_t at, size_t pieces, size_t letters, Flat *flat)
{
  constexpr size_t per_byte = 64, pieces_allowed = 1000000, letters_allowed = 100000000;
  const size_t length = design.places->text.size();

  flat->spent += pieces;
  flat->letters += letters;
  if (flat->spent > per_byte * length + pieces_allowed || flat->letters > per_byte * length + letters_allowed)
    FailIn(
        design, at,
        fmt::format("with its modules dissolved, the design is too large for a text of {} bytes: see --depth",
                    length));
}

static int FirstOf(std::vector<int> *slots, int slot)
{
  while ((*slots)[At(slot)] != slot) {
    (*slots)[At(slot)] = (*slots)[At((*slots)[At(slot)])];
    slot = (*slots)[At(slot)];
  }
  return slot;
}

// The first slot, of the uppermost instance, stands for the set.
static void Join(std::vector<int> *slots, int a, int b)
{
  const int first = FirstOf(slots, a), second = FirstOf(slots, b);

  (*slots)[At(std::max(first, second))] = std::min(first, second);
}

static int SlotOf(const Instance &instance, int bit)
{
  return bit == constant_bit ? constant_slot : instance.first_slot + bit;
}

static Instance OpenInstance(const Design &design, int module, int depth, std::string prefix, Flat *flat)
{
  const size_t nbits = design.linked[At(module)].bits.size();
  const size_t first = flat->slots.size();

  Spend(design, design.modules[At(module)].at, nbits + 1, prefix.size(), flat);
  if (first + nbits > INT_MAX)
    FailIn(design, design.modules[At(module)].at, fmt::format("more than {} bits", INT_MAX));
  flat->slots.resize(first + nbits);
  std::iota(flat->slots.begin() + static_cast<std::ptrdiff_t>(first), flat->slots.end(),
            static_cast<int>(first));
  return {module, depth, static_cast<int>(first), 0, std::move(prefix)};
}

static const ModulePort *FindPort(const Module &module, const Linked &linked, std::string_view name)
{
  const auto found = std::lower_bound(
      linked.ports.begin(), linked.ports.end(), name,
      [&module](int port, std::string_view word) { return module.ports[At(port)].name < word; });

  return found == linked.ports.end() || module.ports[At(*found)].name != name ? nullptr
                                                                              : &module.ports[At(*found)];
}

// Joins what is connected to the ports of a dissolved cell with what is connected to them inside.
static void JoinPorts(const Design &design, const Instance &outer, const ModuleCell &cell,
                      const Instance &inner, Flat *flat)
{
  const Module &above = design.modules[At(outer.module)], &below = design.modules[At(inner.module)];

  for (size_t i = cell.connections.first; i < cell.connections.end; i++) {
    const ModuleConnection &connection = above.connections[i];
    const ModulePort *port = FindPort(below, design.linked[At(inner.module)], connection.port);
    if (port == nullptr)
      FailIn(design, connection.at,
             fmt::format("cell {}: the module {} has no port {}", ShortName(cell.name), ShortName(below.name),
                         ShortName(connection.port)));
    const size_t given = connection.bits.end - connection.bits.first, has = port->bits.end - port->bits.first;
    if (given != has && design.places->problems != nullptr) {
      const Scan scan = ScanAt(*design.places, connection.at);
      WarnAt(scan, scan.at,
             fmt::format("cell {}: port {} has {} bits, {} are connected", ShortName(cell.name),
                         ShortName(port->name), has, given));
    }
    for (size_t b = 0; b < std::min(given, has); b++)
      Join(&flat->slots, SlotOf(outer, above.bits[connection.bits.first + b]),
           SlotOf(inner, below.bits[port->bits.first + b]));
  }
}

static void AddCell(const Design &design, const Instance &instance, size_t c, bool named, Flat *flat)
{
  const Module &module = design.modules[At(instance.module)];
  const ModuleCell &cell = module.cells[c];
  const std::int64_t weight = WeightOfCell(design, module, c);
  const int number = static_cast<int>(flat->weights.size());
  size_t npins = 0;

  for (size_t i = cell.connections.first; i < cell.connections.end; i++)
    npins += module.connections[i].bits.end - module.connections[i].bits.first;
  Spend(design, cell.at, npins + 1, instance.prefix.size() + cell.name.size(), flat);
  flat->total += weight;
  if (flat->total > most_weight)
    FailIn(design, cell.at,
           fmt::format("cell {}: its weight {} takes the total above {}", ShortName(cell.name), weight,
                       most_weight));
  flat->weights.push_back(weight);
  if (named)
    flat->names.push_back(instance.prefix + cell.name);
  for (size_t i = cell.connections.first; i < cell.connections.end; i++)
    for (size_t b = module.connections[i].bits.first; b < module.connections[i].bits.end; b++)
      if (module.bits[b] != constant_bit)
        flat->pins.push_back({SlotOf(instance, module.bits[b]), number});
}

// Goes through the cells of the top in their order, and where one is dissolved through those in it.
static Flat Flatten(const Design &design, int top, bool named)
{
  Flat flat;
  std::vector<size_t> path; // of instances

  flat.slots.push_back(constant_slot);
  flat.instances.push_back(OpenInstance(design, top, 0, "", &flat));
  path.push_back(0);
  while (!path.empty()) {
    const size_t at = path.back();
    const Module &module = design.modules[At(flat.instances[at].module)];
    const size_t c = flat.instances[at].next_cell++;
    if (c >= module.cells.size()) {
      path.pop_back();
      continue;
    }
    const int child = design.linked[At(flat.instances[at].module)].children[c];
    const int depth = flat.instances[at].depth;
    if (module.cells[c].type == note_type)
      continue;
    if (child == leaf || depth >= design.rules->depth) {
      AddCell(design, flat.instances[at], c, named, &flat);
      continue;
    }
    flat.instances.push_back(OpenInstance(design, child, depth + 1,
                                          flat.instances[at].prefix + module.cells[c].name + ".", &flat));
    JoinPorts(design, flat.instances[at], module.cells[c], flat.instances.back(), &flat);
    path.push_back(flat.instances.size() - 1);
  }
  return flat;
}

// Puts the numbers of nets, by their first pins, in the place of slots; the slot of each net.
static std::vector<int> NumberNets(Flat *flat)
{
  std::vector<int> number(flat->slots.size(), -1), slots;
  size_t kept = 0;

  for (const Entry &pin : flat->pins) {
    const int slot = FirstOf(&flat->slots, pin.net);
    if (slot == constant_slot)
      continue;
    if (number[At(slot)] < 0) {
      number[At(slot)] = static_cast<int>(slots.size());
      slots.push_back(slot);
    }
    flat->pins[kept++] = {number[At(slot)], pin.cell};
  }
  flat->pins.resize(kept);
  // That a cell has several pins on a net is nothing odd here.
  const auto before = [](const Entry &a, const Entry &b) {
    return a.net != b.net ? a.net < b.net : a.cell < b.cell;
  };
  std::sort(flat->pins.begin(), flat->pins.end(), before);
  const auto same = [](const Entry &a, const Entry &b) { return a.net == b.net && a.cell == b.cell; };
  flat->pins.erase(std::unique(flat->pins.begin(), flat->pins.end(), same), flat->pins.end());
  return slots;
}

// ----------------------------------------------------------------------------------------------------------
// Names of nets

// For each bit of a module the net and the place in it that name it best, or -1: what the design's author has named
// before what a program has.
static std::vector<std::pair<int, int>> BestNames(const Module &module, const Linked &linked)
{
  std::vector<std::pair<int, int>> best(linked.bits.size(), {-1, 0});

  for (size_t n = 0; n < module.nets.size(); n++)
    for (size_t b = module.nets[n].bits.first; b < module.nets[n].bits.end; b++) {
      if (module.bits[b] == constant_bit)
        continue;
      auto &[net, place] = best[At(module.bits[b])];
      if (net >= 0 && (!module.nets[At(net)].hidden || module.nets[n].hidden))
        continue;
      net = static_cast<int>(n);
      place = static_cast<int>(b - module.nets[n].bits.first);
    }
  return best;
}

static std::string NameOfBit(const ModuleNet &net, int place)
{
  const std::int64_t width = static_cast<std::int64_t>(net.bits.end - net.bits.first);
  const std::int64_t step = net.upto ? width - 1 - place : place;

  return width == 1 && net.offset == 0 ? net.name : fmt::format("{}[{}]", net.name, net.offset + step);
}

static void NameNets(const Design &design, const std::vector<int> &slots, Flat *flat, Details *details)
{
  std::vector<std::vector<std::pair<int, int>>> best(design.modules.size());

  for (const int slot : slots) {
    const auto next =
        std::upper_bound(flat->instances.begin(), flat->instances.end(), slot,
                         [](int value, const Instance &instance) { return value < instance.first_slot; });
    const Instance &instance = *(next - 1);
    const Module &module = design.modules[At(instance.module)];
    const Linked &linked = design.linked[At(instance.module)];
    const size_t bit = At(slot - instance.first_slot);
    if (best[At(instance.module)].empty())
      best[At(instance.module)] = BestNames(module, linked);
    const auto [net, place] = best[At(instance.module)][bit];
    std::string name = instance.prefix + (net < 0 ? fmt::format("${}", linked.bits[bit])
                                                  : NameOfBit(module.nets[At(net)], place));
    Spend(design, module.at, 1, name.size(), flat);
    details->nets.push_back(std::move(name));
  }
}

static void WarnRepeatedNames(const Scan &scan, const char *what, const std::vector<std::string> &names)
{
  const std::vector<std::pair<int, int>> repeats = FindRepeats(names);

  if (!repeats.empty())
    WarnAt(scan, scan.at,
           fmt::format("names of more than one {0}: {1} repeated; the first is {2}, of {0}s {3} and {4}",
                       what, repeats.size(), ShortName(names[At(repeats[0].first)]), repeats[0].first + 1,
                       repeats[0].second + 1));
}

Hgr ReadYosys(const std::string &name, std::string_view text, const YosysRules &rules, Problems *problems,
              Details *details)
{
  const JsonPlaces places = {name, text, problems};
  Design design = {&places, &rules, ReadModules(places), {}};

  LinkModules(&design);
  const int top = FindTop(design);
  WeighModules(&design, OrderModules(design, top));
  // The list of problems asks for the names too.
  const bool named = details != nullptr || problems != nullptr;
  Flat flat = Flatten(design, top, named);
  const std::vector<int> slots = NumberNets(&flat);
  const Scan place = ScanAt(places, design.modules[At(top)].at);
  Hgr hgr =
      HgrOfEntries(place, static_cast<int>(slots.size()), static_cast<int>(flat.weights.size()), flat.pins);

  if (std::any_of(flat.weights.begin(), flat.weights.end(), [](std::int64_t weight) { return weight != 1; }))
    hgr.cellwgts = std::move(flat.weights);
  if (!named)
    return hgr;
  Details found;
  NameNets(design, slots, &flat, &found);
  found.cells = std::move(flat.names);
  if (problems != nullptr) {
    WarnRepeatedNames(place, "cell", found.cells);
    WarnRepeatedNames(place, "net", found.nets);
  }
  if (details != nullptr)
    *details = std::move(found);
  return hgr;
}

} // namespace kapris_formats
