// cli/report/escape.cpp - text of any origin in a page and in a command line.
// SPDX-License-Identifier: MIT

#include "report/escape.h"

#include <algorithm>
#include <fmt/core.h>

namespace kapris_cli
{

static unsigned char ByteAt(std::string_view text, size_t at)
{
  return at < text.size() ? static_cast<unsigned char>(text[at]) : 0;
}

// The length of the UTF-8 character at a place and its number, or 0 if there is none: overlong forms, surrogates and
// numbers above the last are not characters.
static size_t ReadCharacter(std::string_view text, size_t at, unsigned long *character)
{
  static constexpr unsigned long least[] = {0, 0, 0x80, 0x800, 0x10000};
  const unsigned char first = ByteAt(text, at);
  size_t length = 1;

  if (first >= 0x80)
    length = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
  if (first >= 0xf8 || (first >= 0x80 && first < 0xc0) || length > text.size() - at)
    return 0;
  unsigned long value = length == 1 ? first : first & (0x7fu >> length);
  for (size_t i = 1; i < length; i++) {
    const unsigned char next = ByteAt(text, at + i);
    if ((next & 0xc0) != 0x80)
      return 0;
    value = value << 6 | (next & 0x3f);
  }
  if (value < least[length] || value > 0x10ffff || (value >= 0xd800 && value < 0xe000))
    return 0;
  *character = value;
  return length;
}

// Control characters, those that turn the direction of text, and others that do not show.
static bool IsHidden(unsigned long c)
{
  return c < 0x20 || (c >= 0x7f && c < 0xa0) || (c >= 0x200b && c <= 0x200f) ||
         (c >= 0x2028 && c <= 0x202e) || (c >= 0x2060 && c <= 0x206f) || c == 0x061c || c == 0xfeff ||
         (c >= 0xfff0 && c <= 0xfffb) || (c & 0xfffe) == 0xfffe || (c >= 0xfdd0 && c <= 0xfdef);
}

static std::string Entity(char c)
{
  switch (c) {
  case '&':
    return "&amp;";
  case '<':
    return "&lt;";
  case '>':
    return "&gt;";
  case '"':
    return "&quot;";
  case '\'':
    return "&#39;";
  default:
    return std::string(1, c);
  }
}

std::string EscapeHtml(std::string_view text)
{
  std::string escaped;

  for (size_t at = 0; at < text.size();) {
    unsigned long c = 0;
    const size_t length = ReadCharacter(text, at, &c);
    if (length == 1 && !IsHidden(c))
      escaped += Entity(text[at]);
    else if (length == 1 && c < 0x20)
      escaped += fmt::format("&#{};", 0x2400 + c); // the symbol for it
    else if (length == 0 || IsHidden(c))
      escaped += "\xef\xbf\xbd";
    else
      escaped += text.substr(at, length);
    at += std::max<size_t>(length, 1);
  }
  return escaped;
}

// Whether every character of the word can be seen.
static bool IsVisible(std::string_view word)
{
  for (size_t at = 0; at < word.size();) {
    unsigned long c = 0;
    const size_t length = ReadCharacter(word, at, &c);
    if (length == 0 || IsHidden(c))
      return false;
    at += length;
  }
  return true;
}

std::string QuoteForShell(std::string_view word)
{
  static constexpr std::string_view plain =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-+=./:,@%";
  std::string quoted = "'";

  if (!word.empty() && word.find_first_not_of(plain) == std::string_view::npos)
    return std::string(word);
  if (IsVisible(word)) {
    for (const char c : word)
      quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
  }
  for (const char c : word) {
    const unsigned char byte = static_cast<unsigned char>(c);
    if (c == '\'' || c == '\\')
      quoted += std::string("\\") + c;
    else if (byte >= 0x20 && byte < 0x7f)
      quoted += c;
    else
      quoted += fmt::format("\\{:03o}", byte);
  }
  return "$" + quoted + "'";
}

} // namespace kapris_cli
