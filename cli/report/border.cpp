// cli/report/border.cpp - the heaviest cut nets and the cells on them, by name.
// SPDX-License-Identifier: MIT

#include "measure/border.h"

#include "formats/text.h"
#include "report/library.h"
#include "report/pictures.h"

#include <algorithm>
#include <fmt/core.h>

namespace kapris_report
{

static constexpr size_t most_rows = 100;

static std::string Shortened(const std::string &name)
{
  constexpr size_t longest = 200;

  return name.size() <= longest ? name : name.substr(0, longest) + "...";
}

static std::string NoteOf(size_t count)
{
  return count > most_rows
             ? fmt::format("The heaviest {} of {}; 'kapris eval --nets' prints all.", most_rows, count)
             : "";
}

static Table NetTable(const std::vector<CutNet> &nets, const Hgr &hgr, const Details &details)
{
  constexpr size_t most_listed = 16;
  Table table = {"cut-nets", {"net", "weight", "in parts"}, {}, NoteOf(nets.size())};

  for (size_t i = 0; i < std::min(nets.size(), most_rows); i++) {
    const std::vector<int> &parts = nets[i].parts;
    const std::vector<int> listed(
        parts.begin(), parts.begin() + static_cast<std::ptrdiff_t>(std::min(parts.size(), most_listed)));
    table.rows.push_back(
        {Shortened(NetName(details, nets[i].net)), fmt::format("{}", NetWeight(hgr, nets[i].net)),
         fmt::format("{}{}", Join(listed, ", "),
                     parts.size() > most_listed ? fmt::format(" and {} more", parts.size() - most_listed)
                                                : "")});
  }
  return table;
}

static Table CellTable(const std::vector<BorderCell> &cells, const std::vector<int> &part,
                       const Details &details)
{
  Table table = {"border-cells", {"cell", "part", "cut nets", "weight of these"}, {}, NoteOf(cells.size())};

  for (size_t i = 0; i < std::min(cells.size(), most_rows); i++)
    table.rows.push_back({Shortened(CellName(details, cells[i].cell)),
                          fmt::format("{}", part[static_cast<size_t>(cells[i].cell)]),
                          fmt::format("{}", cells[i].nnets), fmt::format("{}", cells[i].weight)});
  return table;
}

std::string BorderHtml(std::vector<CutNet> nets, const Hgr &hgr, const std::vector<int> &part,
                       const Details &details)
{
  const std::vector<BorderCell> cells = BorderCells(hgr, nets);

  SortCutNets(hgr, &nets);
  return fmt::format("<section class=\"card\" id=\"border\"><h2>What is cut</h2>\n"
                     "<p>{} of {} cells are on the {} cut nets.</p>\n{}{}</section>\n",
                     cells.size(), hgr.ncells, nets.size(),
                     FoldedTable("Cut nets", NetTable(nets, hgr, details)),
                     FoldedTable("Cells at the border", CellTable(cells, part, details)));
}

} // namespace kapris_report
