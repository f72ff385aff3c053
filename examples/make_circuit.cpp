// examples/make_circuit.cpp - writes a hypergraph that resembles a circuit, the same on every machine.
// SPDX-License-Identifier: MIT
//
//   make_circuit CELLS SEED OUT.hgr
//
// Cells are halved into blocks down to pairs. Each block gets nets that join its halves, about RENT *
// size^0.6 of them. The nets that leave a block then grow with the same power of its size (Rent's rule),
// which is why circuits have small cuts.
//   blocks   nets for each block of the hierarchy           AddBlockNets
//   repair   a net for each cell that got none              AddMissingNets
//   hide     random numbers for cells and order for nets    Shuffle
//   write                                                   WriteHgr
// Whole numbers only: the last bit of a floating-point power may differ between machines.

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

using Net = std::vector<int>;

struct Circuit {
  int ncells;
  std::vector<Net> nets;
  std::uint64_t random; // state of the generator
};

// The splitmix64 generator.
static std::uint64_t Draw(Circuit *circuit)
{
  std::uint64_t z = circuit->random += 0x9e3779b97f4a7c15u;

  z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9u;
  z = (z ^ (z >> 27)) * 0x94d049bb133111ebu;
  return z ^ (z >> 31);
}

static int DrawBelow(Circuit *circuit, int bound)
{
  return static_cast<int>(Draw(circuit) % static_cast<std::uint64_t>(bound));
}

// 1000 * size^0.6, linear between the powers of two; five doublings are a factor of exactly 8.
static std::int64_t RentPower(int size)
{
  constexpr std::array<std::int64_t, 5> first = {1000, 1516, 2297, 3482, 5278};
  int exponent = 0;

  while (size >> (exponent + 1) != 0)
    exponent++;
  const auto power = [&first](int e) { return first[static_cast<size_t>(e % 5)] << (3 * (e / 5)); };
  const std::int64_t low = power(exponent), high = power(exponent + 1), base = std::int64_t{1} << exponent;
  return low + (high - low) * (size - base) / base;
}

// Mostly 2 to 4 pins, then a tail that thins out up to 40.
static int DrawPinCount(Circuit *circuit)
{
  const int percent = DrawBelow(circuit, 100);

  if (percent < 47)
    return 2;
  if (percent < 69)
    return 3;
  if (percent < 82)
    return 4;
  int npins = 5;
  while (npins < 40 && DrawBelow(circuit, 6) != 0)
    npins++;
  return npins;
}

// A net of distinct cells of the block first .. first+size-1, with a pin in each half.
static Net DrawNet(Circuit *circuit, int first, int size, int npins)
{
  const int half = size / 2;
  Net net = {first + DrawBelow(circuit, half), first + half + DrawBelow(circuit, size - half)};

  while (static_cast<int>(net.size()) < std::min(npins, size)) {
    const int cell = first + DrawBelow(circuit, size);
    if (std::find(net.begin(), net.end(), cell) == net.end())
      net.push_back(cell);
  }
  return net;
}

static void AddBlockNets(Circuit *circuit, int first, int size)
{
  // In thousandths; sets the nets per cell of the whole circuit to about one.
  constexpr std::int64_t rent = 350;
  constexpr std::int64_t scale = 1000 * 1000;
  const std::int64_t expected = rent * RentPower(size);
  int nnets = static_cast<int>(expected / scale);

  if (size < 2)
    return;
  if (DrawBelow(circuit, static_cast<int>(scale)) < expected % scale)
    nnets++;
  for (int n = 0; n < nnets; n++)
    circuit->nets.push_back(DrawNet(circuit, first, size, DrawPinCount(circuit)));
  // Clocks and resets: a few nets that reach all over a large block.
  if (size >= 1000)
    circuit->nets.push_back(DrawNet(circuit, first, size, 20 + DrawBelow(circuit, 21)));
  AddBlockNets(circuit, first, size / 2);
  AddBlockNets(circuit, first + size / 2, size - size / 2);
}

// Joins each cell without a net to a cell near by.
static void AddMissingNets(Circuit *circuit)
{
  std::vector<char> on_net(static_cast<size_t>(circuit->ncells), 0);

  for (const Net &net : circuit->nets)
    for (const int cell : net)
      on_net[static_cast<size_t>(cell)] = 1;
  for (int cell = 0; cell < circuit->ncells; cell++)
    if (!on_net[static_cast<size_t>(cell)])
      circuit->nets.push_back({cell, cell == 0 ? 1 : cell - 1});
}

template <typename Item>
static void Shuffle(Circuit *circuit, std::vector<Item> *items)
{
  for (int n = static_cast<int>(items->size()); n > 1; n--)
    std::swap((*items)[static_cast<size_t>(n - 1)], (*items)[static_cast<size_t>(DrawBelow(circuit, n))]);
}

// On failure, leaves no incomplete file and returns false with errno set.
static bool WriteHgr(const Circuit &circuit, const std::vector<int> &number, const char *path)
{
  FILE *out = std::fopen(path, "w");

  if (!out)
    return false;
  std::fprintf(out, "%zu %d\n", circuit.nets.size(), circuit.ncells);
  for (const Net &net : circuit.nets) {
    for (size_t i = 0; i < net.size(); i++)
      std::fprintf(out, "%s%d", i == 0 ? "" : " ", number[static_cast<size_t>(net[i])] + 1);
    std::fputc('\n', out);
  }
  const bool failed = std::ferror(out) != 0;
  if (std::fclose(out) == 0 && !failed)
    return true;
  const int error = errno;
  if (std::filesystem::is_regular_file(path))
    std::remove(path);
  errno = error;
  return false;
}

// A whole number in low .. high, digits only; ends the program otherwise.
static long long Argument(const char *text, const char *name, long long low, long long high)
{
  char *end;

  errno = 0;
  const long long value = std::strtoll(text, &end, 10);
  if (end == text || *end != '\0' || errno != 0 || value < low || value > high) {
    std::fprintf(stderr, "make_circuit: %s is '%s', not a number from %lld to %lld\n", name, text, low, high);
    std::exit(2);
  }
  return value;
}

int main(int argc, char **argv)
{
  if (argc != 4) {
    std::fputs("usage: make_circuit CELLS SEED OUT.hgr\n", stderr);
    return 2;
  }
  Circuit circuit;
  circuit.ncells = static_cast<int>(Argument(argv[1], "CELLS", 2, 50'000'000));
  circuit.random = static_cast<std::uint64_t>(Argument(argv[2], "SEED", 0, INT64_MAX));

  AddBlockNets(&circuit, 0, circuit.ncells);
  AddMissingNets(&circuit);
  std::vector<int> number(static_cast<size_t>(circuit.ncells));
  std::iota(number.begin(), number.end(), 0);
  Shuffle(&circuit, &number);
  Shuffle(&circuit, &circuit.nets);

  if (!WriteHgr(circuit, number, argv[3])) {
    std::fprintf(stderr, "make_circuit: cannot write %s: %s\n", argv[3], std::strerror(errno));
    return 1;
  }
  return 0;
}
