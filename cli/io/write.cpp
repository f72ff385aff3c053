// cli/io/write.cpp - the texts of hypergraphs that are written.
// SPDX-License-Identifier: MIT

#include "io/formats.h"

#include <charconv>
#include <fmt/format.h>

namespace kapris_cli
{

void AppendNumber(std::string *text, int number, char separator)
{
  char digits[16];
  char *end = std::to_chars(digits, digits + sizeof(digits) - 1, number).ptr;

  *end++ = separator;
  text->append(digits, end);
}

// One line per net: its weight if there are weights, pins from 1.
static void AppendNets(const Hgr &hgr, std::string *text)
{
  for (size_t n = 0; n < static_cast<size_t>(hgr.nnets); n++) {
    const size_t start = text->size();
    if (!hgr.netwgts.empty())
      AppendNumber(text, hgr.netwgts[n], ' ');
    for (int i = hgr.netptr[n]; i < hgr.netptr[n + 1]; i++)
      AppendNumber(text, hgr.netind[static_cast<size_t>(i)] + 1, ' ');
    if (text->size() > start)
      text->pop_back();
    *text += '\n';
  }
}

static void AppendCellWeights(const Hgr &hgr, std::string *text)
{
  for (const int weight : hgr.cellwgts)
    AppendNumber(text, weight, '\n');
}

std::string FormatHgr(const Hgr &hgr)
{
  const int code = (hgr.cellwgts.empty() ? 0 : 10) + (hgr.netwgts.empty() ? 0 : 1);
  std::string text = fmt::format("{} {}", hgr.nnets, hgr.ncells);

  text += code > 0 ? fmt::format(" {}\n", code) : "\n";
  AppendNets(hgr, &text);
  AppendCellWeights(hgr, &text);
  return text;
}

std::string FormatPatoh(const Hgr &hgr)
{
  const int scheme = (hgr.cellwgts.empty() ? 0 : 1) + (hgr.netwgts.empty() ? 0 : 2);
  std::string text = fmt::format("1 {} {} {}", hgr.ncells, hgr.nnets, hgr.netind.size());

  text += scheme > 0 ? fmt::format(" {}\n", scheme) : "\n";
  AppendNets(hgr, &text);
  AppendCellWeights(hgr, &text);
  return text;
}

std::string FormatMtx(const Hgr &hgr)
{
  std::string text = fmt::format("%%MatrixMarket matrix coordinate pattern general\n{} {} {}\n", hgr.nnets,
                                 hgr.ncells, hgr.netind.size());

  for (int net = 0; net < hgr.nnets; net++)
    for (int i = hgr.netptr[static_cast<size_t>(net)]; i < hgr.netptr[static_cast<size_t>(net) + 1]; i++) {
      AppendNumber(&text, net + 1, ' ');
      AppendNumber(&text, hgr.netind[static_cast<size_t>(i)] + 1, '\n');
    }
  return text;
}

} // namespace kapris_cli
