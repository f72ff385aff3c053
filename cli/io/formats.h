// cli/io/formats.h - the readers of the other formats, and the texts that are written. docs/formats.md describes both.
// SPDX-License-Identifier: MIT
//
// Readers behave as ReadHgr.
#pragma once

#include "io/hgr.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace kapris_cli
{

// Which side of a matrix or formula becomes nets.
enum class Model { BY_FORMAT, ROW_NET, COLUMN_NET, PRIMAL, DUAL, LITERAL };

Hgr ReadPatoh(const std::string &name, std::string_view text, Problems *problems = nullptr);

// Cells weigh as much as they have entries, unless unit_weights.
Hgr ReadMtx(const std::string &name, std::string_view text, Model model, bool unit_weights,
            Problems *problems = nullptr);

Hgr ReadCnf(const std::string &name, std::string_view text, Model model, Problems *problems = nullptr);

std::string FormatHgr(const Hgr &hgr);
std::string FormatPatoh(const Hgr &hgr);

// The pattern of the matrix with a row per net and a column per cell; no weights.
std::string FormatMtx(const Hgr &hgr);

void AppendNumber(std::string *text, std::int64_t number, char separator);

} // namespace kapris_cli
