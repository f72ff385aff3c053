// cli/color.h - colours in messages, where they are wanted.
// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace kapris_cli
{

enum class ColorWhen { AUTO, ALWAYS, NEVER };

// The text in red, if colours are wanted on standard error: with AUTO on a terminal, unless NO_COLOR is set.
std::string Red(ColorWhen when, const std::string &text);

} // namespace kapris_cli
