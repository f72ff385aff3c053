// formats/records.cpp - between the records of the C interfaces and those of the readers.
// SPDX-License-Identifier: MIT

#include "formats/records.h"

#include <cstring>
#include <fmt/core.h>

namespace kapris_formats
{

void Refuse(const std::string &text)
{
  throw Failure{EXIT_USAGE, text};
}

static std::vector<std::int64_t> Weights(const char *what, int count, const std::int64_t *weights)
{
  std::int64_t total = 0;

  if (weights == nullptr)
    return {};
  for (int i = 0; i < count; i++) {
    if (weights[i] < 0)
      Refuse(fmt::format("{}[{}] is {}, below 0", what, i, weights[i]));
    if (weights[i] > most_weight - total)
      Refuse(fmt::format("{}[{}] is {}: the sum is then above {}", what, i, weights[i], most_weight));
    total += weights[i];
  }
  return {weights, weights + count};
}

static std::vector<std::string> NamesOf(const kapris_names &names, int count)
{
  std::vector<std::string> list;

  if (names.starts == nullptr)
    return list;
  for (int i = 0; i < count; i++) {
    if (names.starts[i + 1] < names.starts[i])
      Refuse(fmt::format("starts[{}] of the names is below the one before", i + 1));
    list.emplace_back(names.bytes + names.starts[i], names.starts[i + 1] - names.starts[i]);
  }
  return list;
}

Hgr HgrOf(const kapris_file &file)
{
  Hgr hgr;

  if (file.ncells < 0 || file.nnets < 0)
    Refuse(fmt::format("there are {} cells and {} nets: neither can be below 0", file.ncells, file.nnets));
  hgr.ncells = file.ncells;
  hgr.nnets = file.nnets;
  hgr.netptr = {0};
  for (int net = 0; net < file.nnets; net++) {
    if (file.net_starts[0] != 0 || file.net_starts[net + 1] < file.net_starts[net])
      Refuse(fmt::format(
          "net_starts begins with {}, and net_starts[{}] is {}: it must begin with 0 and never fall",
          file.net_starts[0], net + 1, file.net_starts[net + 1]));
    hgr.netptr.push_back(file.net_starts[net + 1]);
  }
  for (int i = 0; i < hgr.netptr.back(); i++) {
    if (file.pins[i] < 0 || file.pins[i] >= file.ncells)
      Refuse(fmt::format("pins[{}] is {}, but cells are numbered from 0 to {}", i, file.pins[i],
                         file.ncells - 1));
    hgr.netind.push_back(file.pins[i]);
  }
  hgr.cellwgts = Weights("cell_weights", file.ncells, file.cell_weights);
  hgr.netwgts = Weights("net_weights", file.nnets, file.net_weights);
  return hgr;
}

Details DetailsOf(const kapris_file &file)
{
  return {NamesOf(file.cell_names, file.ncells), NamesOf(file.net_names, file.nnets), {}};
}

// ----------------------------------------------------------------------------------------------------------
// How a call ends

kapris_file_status StatusOf(ExitStatus status)
{
  switch (status) {
  case EXIT_MALFORMED:
    return KAPRIS_FILE_MALFORMED;
  case EXIT_USAGE:
    return KAPRIS_FILE_ARGUMENT;
  case EXIT_FILES:
    return KAPRIS_FILE_SYSTEM;
  case EXIT_OUT_OF_MEMORY:
    return KAPRIS_FILE_OUT_OF_MEMORY;
  default:
    return KAPRIS_FILE_INTERNAL;
  }
}

void NameArguments(char *text)
{
  static constexpr const char *options[] = {"--drop-weights", "--drop-repeats", "--drop-names",
                                            "--unit-weights", "--model",        "--module",
                                            "--depth",        "--weights",      "--names"};

  for (const char *option : options)
    for (char *found = text; (found = std::strstr(found, option)) != nullptr;) {
      const size_t length = std::strlen(option);
      std::memmove(found, found + 2, std::strlen(found + 2) + 1);
      for (size_t i = 0; i < length - 2; i++)
        found[i] = found[i] == '-' ? '_' : found[i];
    }
}

void Tell(char *message, size_t room, const char *text)
{
  if (room == 0)
    return;
  const size_t length = std::min(std::strlen(text), room - 1);
  std::memcpy(message, text, length);
  message[length] = '\0';
}

} // namespace kapris_formats
