// cli/solve/terminals.h - parts for terminals by where they lie.
// SPDX-License-Identifier: MIT
#pragma once

#include "libraries.h"

#include "formats/names.h"

#include <string>
#include <vector>

namespace kapris_cli
{

// Columns and rows of the fields that the place of all terminals is divided into, field 0 at the lower left, then to
// the right.
struct Fields {
  int columns, rows;
};

// From a text such as 2x2; as many fields as there are parts.
Fields FieldsNamed(const std::string &text, int nparts);

// Fixes each terminal that is still free to the part of the field that it lies in.
void FixTerminals(const std::string &name, const Details &details, const Fields &fields, int ncells,
                  std::vector<int> *fixed);

} // namespace kapris_cli
