// formats/formats.h - the readers of the other formats, and the texts that are written. docs/formats.md describes both.
// SPDX-License-Identifier: MIT
//
// Readers behave as ReadHgr.
#pragma once

#include "formats/hgr.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace kapris_formats
{

// Which side of a matrix or formula becomes nets.
enum class Model { BY_FORMAT, ROW_NET, COLUMN_NET, PRIMAL, DUAL, LITERAL };

Hgr ReadPatoh(const std::string &name, std::string_view text, Problems *problems = nullptr);

// Cells weigh as much as they have entries, unless unit_weights.
Hgr ReadMtx(const std::string &name, std::string_view text, Model model, bool unit_weights,
            Problems *problems = nullptr);

Hgr ReadCnf(const std::string &name, std::string_view text, Model model, Problems *problems = nullptr);

// With the weights of the clauses, on what they become; unit_weights leaves them out.
Hgr ReadWcnf(const std::string &name, std::string_view text, Model model, bool unit_weights,
             Problems *problems = nullptr);

// A graph of adjacency lines: each edge is a net, in the order of its first vertex, then of its second.
Hgr ReadGraph(const std::string &name, std::string_view text, Problems *problems = nullptr);

std::string FormatHgr(const Hgr &hgr);
std::string FormatPatoh(const Hgr &hgr);

// The pattern of the matrix with a row per net and a column per cell; no weights.
std::string FormatMtx(const Hgr &hgr);

// The graph whose edges are the nets: each of two cells, and no two of the same.
std::string FormatGraph(const Hgr &hgr);

void AppendNumber(std::string *text, std::int64_t number, char separator);

} // namespace kapris_formats
