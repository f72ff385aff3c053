// cli/solve/groups.cpp - cells that stay together.
// SPDX-License-Identifier: MIT

#include "solve/groups.h"

#include "libraries.h"

#include "formats/failure.h"
#include "formats/files.h"
#include "formats/scan.h"

#include <algorithm>
#include <fmt/core.h>

namespace kapris_cli
{

// The line of each cell's group, 0 for none.
static std::vector<long long> ReadLines(const std::string &name, std::string_view text,
                                        const NameIndex &index)
{
  std::vector<long long> lines(static_cast<size_t>(index.ncells));
  Scan scan = StartScan(name, text);

  while (NextFilledLine(&scan)) {
    while (NextInLine(&scan)) {
      const char *place = scan.at;
      long long &line = lines[static_cast<size_t>(ReadCell(&scan, index))];
      if (line > 0)
        FailAt(scan, place, fmt::format("{} is in the group of line {} already", Quoted(scan, place), line));
      line = scan.line;
    }
    EndLine(&scan, "the group");
  }
  return lines;
}

Grouping ReadGroups(const std::string &name, std::string_view text, const NameIndex &index)
{
  const std::vector<long long> lines = ReadLines(name, text, index);
  long long last = 0;
  Grouping groups = {name, 0, {}, {}};

  for (const long long line : lines)
    last = std::max(last, line);
  std::vector<int> of_line(static_cast<size_t>(last) + 1, -1);
  for (const long long line : lines) {
    int fresh = -1, &merged = line == 0 ? fresh : of_line[static_cast<size_t>(line)];
    if (merged < 0) {
      merged = groups.count++;
      groups.lines.push_back(line);
    }
    groups.merged.push_back(merged);
  }
  return groups;
}

Grouping LoadGroups(const std::string &path, const NameIndex &index)
{
  return ReadGroups(InputName(path), OpenText(path).bytes, index);
}

Hgr MergeCells(const Hgr &hgr, const Grouping &groups)
{
  std::vector<int> last_net(static_cast<size_t>(groups.count), -1);
  Hgr merged;

  merged.ncells = groups.count;
  merged.nnets = hgr.nnets;
  merged.netwgts = hgr.netwgts;
  merged.cellwgts.assign(static_cast<size_t>(groups.count), 0);
  for (int cell = 0; cell < hgr.ncells; cell++)
    merged.cellwgts[static_cast<size_t>(groups.merged[static_cast<size_t>(cell)])] += CellWeight(hgr, cell);
  merged.netptr.push_back(0);
  for (int net = 0; net < hgr.nnets; net++) {
    for (int i = hgr.netptr[static_cast<size_t>(net)]; i < hgr.netptr[static_cast<size_t>(net) + 1]; i++) {
      const int cell = groups.merged[static_cast<size_t>(hgr.netind[static_cast<size_t>(i)])];
      if (last_net[static_cast<size_t>(cell)] != net)
        merged.netind.push_back(cell);
      last_net[static_cast<size_t>(cell)] = net;
    }
    merged.netptr.push_back(static_cast<int>(merged.netind.size()));
  }
  return merged;
}

std::vector<int> MergeParts(const std::vector<int> &part, const Grouping &groups, const Details &details,
                            bool whole)
{
  const size_t count = static_cast<size_t>(groups.count);
  std::vector<int> merged(part.empty() ? 0 : count, -1), decider(count, -1);

  for (size_t cell = 0; cell < part.size(); cell++) {
    const size_t m = static_cast<size_t>(groups.merged[cell]);
    if (part[cell] < 0)
      continue;
    if (merged[m] >= 0 && merged[m] != part[cell])
      throw Failure{
          EXIT_MALFORMED,
          fmt::format("{}:{}:1: the group cannot stay together: cell {} {} part {}, cell {} {} part {}",
                      groups.name, groups.lines[m], ShortName(CellName(details, decider[m])),
                      whole ? "is in" : "is fixed to", merged[m],
                      ShortName(CellName(details, static_cast<int>(cell))), whole ? "is in" : "is fixed to",
                      part[cell])};
    merged[m] = part[cell];
    decider[m] = static_cast<int>(cell);
  }
  return merged;
}

std::vector<int> UnfoldParts(const std::vector<int> &merged, const Grouping &groups)
{
  std::vector<int> part;

  for (const int m : groups.merged)
    part.push_back(merged[static_cast<size_t>(m)]);
  return part;
}

} // namespace kapris_cli
