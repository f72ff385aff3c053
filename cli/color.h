// cli/color.h - colours in messages, where they are wanted.
// SPDX-License-Identifier: MIT
#pragma once

namespace kapris_cli
{

enum class ColorWhen { AUTO, ALWAYS, NEVER };

// What turns red on and off, empty unless colours are wanted on standard error: with AUTO on a terminal, unless
// NO_COLOR is set. Static text, for messages when memory is short.
struct Ink {
  const char *on, *off;
};
Ink Red(ColorWhen when);

} // namespace kapris_cli
