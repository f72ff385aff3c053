// cli/report/escape.cpp - text of any origin in a page and in a command line.
// SPDX-License-Identifier: MIT

#include "report/escape.h"

#include "formats/text.h"
#include "report/library.h"

#include <algorithm>
#include <fmt/core.h>

namespace kapris_report
{

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

} // namespace kapris_report
