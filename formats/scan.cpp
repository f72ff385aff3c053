// formats/scan.cpp - whole numbers line by line out of a text in memory, with the place of every fault.
// SPDX-License-Identifier: MIT

#include "formats/scan.h"

#include "formats/failure.h"

#include <climits>
#include <cstring>
#include <fmt/core.h>
#include <utility>

namespace kapris_formats
{

Scan StartScan(std::string name, std::string_view text, Problems *problems, char comment)
{
  const char *first = text.data();

  return Scan{std::move(name), first, first + text.size(), first, 1, problems, comment};
}

static std::string Placed(const Scan &scan, const char *place, const std::string &message)
{
  return fmt::format("{}:{}:{}: {}", scan.name, scan.line, place - scan.start + 1, message);
}

void FailAt(const Scan &scan, const char *place, const std::string &message)
{
  throw Failure{EXIT_MALFORMED, Placed(scan, place, message)};
}

void FaultAt(const Scan &scan, const char *place, const std::string &message)
{
  if (scan.problems == nullptr)
    FailAt(scan, place, message);
  AddProblem(scan.problems, false, Placed(scan, place, message));
}

void WarnAt(const Scan &scan, const char *place, const std::string &message)
{
  AddProblem(scan.problems, true, Placed(scan, place, "warning: " + message));
}

static const char *SkipBlanks(const Scan &scan, const char *at)
{
  while (at != scan.end && IsBlank(*at))
    at++;
  return at;
}

static void SkipLine(Scan *scan)
{
  const size_t left = static_cast<size_t>(scan->end - scan->at);
  const void *found = left == 0 ? nullptr : std::memchr(scan->at, '\n', left);

  if (found == nullptr) {
    scan->at = scan->end;
    return;
  }
  scan->at = static_cast<const char *>(found) + 1;
  scan->line++;
  scan->start = scan->at;
}

bool NextLine(Scan *scan)
{
  while (scan->at != scan->end) {
    const char *first = SkipBlanks(*scan, scan->at);
    if (first == scan->end || *first != scan->comment)
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

std::string_view NextWord(Scan *scan)
{
  NextInLine(scan);
  const char *word = scan->at;
  while (scan->at != scan->end && !IsBlank(*scan->at) && *scan->at != '\n')
    scan->at++;
  return {word, static_cast<size_t>(scan->at - word)};
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

std::int64_t ReadNumberSlowly(Scan *scan, const char *what, std::int64_t lowest, std::int64_t highest)
{
  const char *first = scan->at;
  const std::string_view word = NextWord(scan);
  const bool negative = word.starts_with('-');
  std::int64_t value = 0;

  const std::string_view digits = word.substr(negative ? 1 : 0);
  for (const char c : digits) {
    if (!IsDigit(c)) {
      FaultAt(*scan, first, fmt::format("{}: {} is not a whole number", what, Quoted(*scan, first)));
      return no_number;
    }
    // Stops growing once it is too large: any number of digits may follow.
    const int digit = c - '0';
    value = value > (highest - digit) / 10 ? highest + 1 : 10 * value + digit;
  }
  if (digits.empty())
    FaultAt(*scan, first, fmt::format("{}: {} is not a whole number", what, Quoted(*scan, first)));
  else if (negative && lowest == 0)
    FaultAt(*scan, first, fmt::format("{}: {} is negative", what, Quoted(*scan, first)));
  else if (value > highest)
    FaultAt(*scan, first,
            fmt::format("{}: {} is {} {}, the {} number", what, Quoted(*scan, first),
                        negative ? "below" : "above", negative ? lowest : highest,
                        negative ? "smallest" : "largest"));
  else
    return negative ? -value : value;
  return no_number;
}

int ReadCount(Scan *scan, const char *what)
{
  if (!NextInLine(scan))
    FailAt(*scan, scan->at, fmt::format("{} is missing", what));
  // Without its counts, nothing of the text makes sense: thrown even where there is a list.
  Problems *list = std::exchange(scan->problems, nullptr);
  const int count = ReadNumber(scan, what);
  scan->problems = list;
  return count;
}

void EndLine(Scan *scan, const char *what)
{
  if (NextInLine(scan))
    FaultAt(*scan, scan->at, fmt::format("{} is left over after {}", Quoted(*scan, scan->at), what));
  SkipLine(scan);
}

void EndText(Scan *scan, const char *what)
{
  if (NextFilledLine(scan))
    FaultAt(*scan, scan->at, fmt::format("{} is left over after {}", Quoted(*scan, scan->at), what));
}

} // namespace kapris_formats
