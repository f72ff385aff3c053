// formats/write.cpp - the texts of hypergraphs that are written.
// SPDX-License-Identifier: MIT

#include "formats/formats.h"

#include <charconv>
#include <fmt/core.h>
#include <utility>

namespace kapris_formats
{

void AppendNumber(std::string *text, std::int64_t number, char separator)
{
  char digits[24];
  char *end = std::to_chars(digits, digits + sizeof(digits) - 1, number).ptr;

  *end++ = separator;
  text->append(digits, end);
}

// The header with the code of the weights unless that is 0; then one line per net, its weight if there are weights and
// pins from 1; then cell weights.
static std::string FormatLines(std::string header, int weights, const Hgr &hgr)
{
  std::string text = std::move(header);

  text += weights > 0 ? fmt::format(" {}\n", weights) : "\n";
  for (size_t n = 0; n < static_cast<size_t>(hgr.nnets); n++) {
    const size_t start = text.size();
    if (!hgr.netwgts.empty())
      AppendNumber(&text, hgr.netwgts[n], ' ');
    for (int i = hgr.netptr[n]; i < hgr.netptr[n + 1]; i++)
      AppendNumber(&text, hgr.netind[static_cast<size_t>(i)] + 1, ' ');
    if (text.size() > start)
      text.pop_back();
    text += '\n';
  }
  for (const std::int64_t weight : hgr.cellwgts)
    AppendNumber(&text, weight, '\n');
  return text;
}

std::string FormatHgr(const Hgr &hgr)
{
  return FormatLines(fmt::format("{} {}", hgr.nnets, hgr.ncells),
                     (hgr.cellwgts.empty() ? 0 : 10) + (hgr.netwgts.empty() ? 0 : 1), hgr);
}

std::string FormatPatoh(const Hgr &hgr)
{
  return FormatLines(fmt::format("1 {} {} {}", hgr.ncells, hgr.nnets, hgr.netind.size()),
                     (hgr.cellwgts.empty() ? 0 : 1) + (hgr.netwgts.empty() ? 0 : 2), hgr);
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

} // namespace kapris_formats
