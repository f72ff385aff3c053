// formats/text.cpp - lists in texts, and characters that cannot be seen.
// SPDX-License-Identifier: MIT

#include "formats/text.h"

#include <algorithm>
#include <fmt/core.h>

namespace kapris_formats
{

// The formatting library has the same, but takes seconds to compile.
template <typename Item>
static std::string JoinAll(const std::vector<Item> &items, const char *separator)
{
  std::string text;

  for (size_t i = 0; i < items.size(); i++)
    text += fmt::format("{}{}", i == 0 ? "" : separator, items[i]);
  return text;
}

std::string Join(const std::vector<std::string> &items, const char *separator)
{
  return JoinAll(items, separator);
}

std::string Join(const std::vector<int> &items, const char *separator)
{
  return JoinAll(items, separator);
}

std::string Join(const std::vector<std::int64_t> &items, const char *separator)
{
  return JoinAll(items, separator);
}

std::string Join(const std::vector<double> &items, const char *separator)
{
  return JoinAll(items, separator);
}

static unsigned char ByteAt(std::string_view text, size_t at)
{
  return at < text.size() ? static_cast<unsigned char>(text[at]) : 0;
}

size_t ReadCharacter(std::string_view text, size_t at, unsigned long *character)
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

bool IsHidden(unsigned long c)
{
  return c < 0x20 || (c >= 0x7f && c < 0xa0) || (c >= 0x200b && c <= 0x200f) ||
         (c >= 0x2028 && c <= 0x202e) || (c >= 0x2060 && c <= 0x206f) || c == 0x061c || c == 0xfeff ||
         (c >= 0xfff0 && c <= 0xfffb) || (c & 0xfffe) == 0xfffe || (c >= 0xfdd0 && c <= 0xfdef);
}

bool IsVisible(std::string_view word)
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

std::string Escape(std::string_view text)
{
  std::string escaped;

  for (size_t at = 0; at < text.size();) {
    unsigned long c = 0;
    const size_t read = ReadCharacter(text, at, &c), length = std::max<size_t>(read, 1);
    if (read > 0 && !IsHidden(c))
      escaped += text.substr(at, length);
    else if (c == '\n' || c == '\t' || c == '\r')
      escaped += c == '\n' ? "\\n" : c == '\t' ? "\\t" : "\\r";
    else
      for (const char byte : text.substr(at, length))
        escaped += fmt::format("\\x{:02x}", static_cast<unsigned char>(byte));
    at += length;
  }
  return escaped;
}

std::string Shown(const std::string &name)
{
  return IsVisible(name) ? name : fmt::format("'{}'", Escape(name));
}

} // namespace kapris_formats
