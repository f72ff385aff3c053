// formats/named.h - words for the values of enumerations.
// SPDX-License-Identifier: MIT
#pragma once

#include <vector>

namespace kapris_formats
{

// What the values of an enumeration, none of them negative, are called.
template <typename T>
struct Named {
  const char *name;
  T value;
};
template <typename T>
using Names = std::vector<Named<T>>;

} // namespace kapris_formats
