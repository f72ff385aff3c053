// cli/io/scan.cpp - whole numbers line by line out of a text in memory, with the place of every fault.
// SPDX-License-Identifier: MIT

#include "io/scan.h"

#include "failure.h"

#include <climits>
#include <fmt/format.h>
#include <utility>

namespace kapris_cli
{

static bool IsBlank(char c)
{
  return c == ' ' || c == '\t' || c == '\r';
}

static bool IsDigit(char c)
{
  return c >= '0' && c <= '9';
}

Scan StartScan(std::string name, std::string_view text)
{
  const char *first = text.data();

  return Scan{std::move(name), first, first + text.size(), first, 1};
}

void FailAt(const Scan &scan, const char *place, const std::string &message)
{
  throw Failure{EXIT_MALFORMED,
                fmt::format("{}:{}:{}: {}", scan.name, scan.line, place - scan.start + 1, message)};
}

static const char *SkipBlanks(const Scan &scan, const char *at)
{
  while (at != scan.end && IsBlank(*at))
    at++;
  return at;
}

static void SkipLine(Scan *scan)
{
  while (scan->at != scan->end && *scan->at != '\n')
    scan->at++;
  if (scan->at != scan->end) {
    scan->at++;
    scan->line++;
    scan->start = scan->at;
  }
}

bool NextLine(Scan *scan)
{
  while (scan->at != scan->end) {
    const char *first = SkipBlanks(*scan, scan->at);
    if (first == scan->end || *first != '%')
      return true;
    SkipLine(scan);
  }
  return false;
}

bool NextFilledLine(Scan *scan)
{
  while (NextLine(scan)) {
    if (NextInLine(scan))
      return true;
    SkipLine(scan);
  }
  return false;
}

bool NextInLine(Scan *scan)
{
  scan->at = SkipBlanks(*scan, scan->at);
  return scan->at != scan->end && *scan->at != '\n';
}

std::string Quoted(const Scan &scan, const char *place)
{
  constexpr int longest = 24;
  std::string word = "'";

  for (int n = 0; place != scan.end && !IsBlank(*place) && *place != '\n'; n++, place++) {
    const unsigned char c = static_cast<unsigned char>(*place);
    if (n == longest) {
      word += "...";
      break;
    }
    if (c > ' ' && c < 0x7f)
      word += *place;
    else
      word += fmt::format("\\x{:02x}", c);
  }
  return word + "'";
}

int ReadNumber(Scan *scan, const char *what)
{
  const char *word = scan->at;
  const char *at = word;
  long long value = 0;
  const bool negative = at != scan->end && *at == '-';

  if (negative)
    at++;
  const char *digits = at;
  for (; at != scan->end && IsDigit(*at); at++) {
    // Stops growing once it is too large: any number of digits may follow.
    if (value <= INT_MAX)
      value = 10 * value + (*at - '0');
  }
  if (at == digits || (at != scan->end && !IsBlank(*at) && *at != '\n'))
    FailAt(*scan, word, fmt::format("{}: {} is not a whole number", what, Quoted(*scan, word)));
  if (negative)
    FailAt(*scan, word, fmt::format("{}: {} is negative", what, Quoted(*scan, word)));
  if (value > INT_MAX)
    FailAt(*scan, word,
           fmt::format("{}: {} is above {}, the largest number", what, Quoted(*scan, word), INT_MAX));
  scan->at = at;
  return static_cast<int>(value);
}

void EndLine(Scan *scan, const char *what)
{
  if (NextInLine(scan))
    FailAt(*scan, scan->at, fmt::format("{} is left over after {}", Quoted(*scan, scan->at), what));
  SkipLine(scan);
}

} // namespace kapris_cli
