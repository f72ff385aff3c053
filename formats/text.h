// formats/text.h - lists in texts, and characters that cannot be seen.
// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kapris_formats
{

// The items with the separator between them.
std::string Join(const std::vector<std::string> &items, const char *separator);
std::string Join(const std::vector<int> &items, const char *separator);
std::string Join(const std::vector<std::int64_t> &items, const char *separator);
std::string Join(const std::vector<double> &items, const char *separator);

// The length of the UTF-8 character at a place and its number, or 0 if there is none: overlong forms, surrogates and
// numbers above the last are not characters.
size_t ReadCharacter(std::string_view text, size_t at, unsigned long *character);

// Control characters, those that turn the direction of text, and others that do not show.
bool IsHidden(unsigned long character);

// Whether every character can be seen.
bool IsVisible(std::string_view text);

// What cannot be seen, as \n or \x1b.
std::string Escape(std::string_view text);

// The name of a file for a message or a terminal: as it is, or escaped in quotes.
std::string Shown(const std::string &name);

} // namespace kapris_formats
