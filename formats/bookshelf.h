// formats/bookshelf.h - placement problems in the files of the Bookshelf format: .aux names the others.
// SPDX-License-Identifier: MIT
#pragma once

#include "formats/hgr.h"
#include "formats/names.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kapris_formats
{

struct NamedText {
  std::string name; // for messages
  std::string_view bytes;
};

// The texts that a problem is made of; without wts nets weigh 1, without pl nothing has a place.
struct BookshelfTexts {
  NamedText nodes, nets, wts, pl;
};

// Behaves as ReadHgr. Cells weigh their area, terminals nothing. details: gets names, and terminals with their places.
Hgr ReadBookshelf(const BookshelfTexts &texts, Problems *problems = nullptr, Details *details = nullptr);

// The files that a text .aux names, in the folder of the file of that text: nodes, nets, wts, pl, of which the last two
// may be missing (empty).
struct BookshelfPaths {
  std::string nodes, nets, wts, pl;
};
BookshelfPaths ReadAux(const std::string &path, std::string_view text);

// Reads the problem that the .aux file of that text stands for.
Hgr LoadBookshelf(const std::string &path, std::string_view text, Problems *problems = nullptr,
                  Details *details = nullptr);

// The paths of all files of the problem that is written as a .aux file of that name, itself last.
std::vector<std::string> BookshelfOutputs(const std::string &path);

// The paths and texts of those that are needed, in the order in which they are to be written. Cells of no weight become
// terminals; what has no name gets one.
std::vector<std::pair<std::string, std::string>> FormatBookshelf(const std::string &path, const Hgr &hgr,
                                                                 const Details &details);

} // namespace kapris_formats
