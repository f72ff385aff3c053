// formats/scan.h - whole numbers line by line out of a text in memory, with the place of every fault.
// SPDX-License-Identifier: MIT
//
// Lines end with '\n' or with the text; blanks, tabs and carriage returns separate, which also covers "\r\n"
// ends. A line whose first byte after blanks is the comment sign is a comment.
//
// Nothing here reads the byte behind the text: it can be the first of a page that is not there.
#pragma once

#include "formats/problems.h"

#include <climits>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace kapris_formats
{

struct Scan {
  std::string name;   // of the file, for messages
  const char *at;     // the next byte
  const char *end;    // of the text
  const char *start;  // of the current line: columns count bytes from here
  long long line;     // from 1
  Problems *problems; // receives faults and warnings; without it the first fault is thrown
  char comment;
};

// The text must outlive the record.
Scan StartScan(std::string name, std::string_view text, Problems *problems = nullptr, char comment = '%');

// A fault that the reader cannot go on after: throws the failure "name:line:column: message" for the byte at the
// given place of the current line.
[[noreturn]] void FailAt(const Scan &scan, const char *place, const std::string &message);

// A fault that the reader can go on after: adds it to the list, or throws as FailAt without one.
void FaultAt(const Scan &scan, const char *place, const std::string &message);

// Adds an oddity to the list. Callers spare the search for oddities where there is no list.
void WarnAt(const Scan &scan, const char *place, const std::string &message);

// Goes to the first line from here on that is no comment; false if there is none.
bool NextLine(Scan *scan);

// As NextLine, and passes blank lines too.
bool NextFilledLine(Scan *scan);

// What ReadNumber and ReadSigned return for a word that is none, after the fault went to the list.
inline constexpr int no_number = INT_MIN;

// In lowest .. highest, of which lowest is 0 or -highest.
std::int64_t ReadNumberSlowly(Scan *scan, const char *what, std::int64_t lowest, std::int64_t highest);

// As ReadNumber, in -(2^31-1) .. 2^31-1.
inline int ReadSigned(Scan *scan, const char *what)
{
  return static_cast<int>(ReadNumberSlowly(scan, what, -INT_MAX, INT_MAX));
}

// Reads the number of the next word; fails if the line has no more.
int ReadCount(Scan *scan, const char *what);

// The next word of the line, empty at its end.
std::string_view NextWord(Scan *scan);

// Leaves the line; a fault if anything is left on it.
void EndLine(Scan *scan, const char *what);

// A fault if anything but comments and blank lines is left.
void EndText(Scan *scan, const char *what);

// The word at a place, shortened and made printable for a message.
std::string Quoted(const Scan &scan, const char *place);

inline bool IsBlank(char c)
{
  return c == ' ' || c == '\t' || c == '\r';
}

inline bool IsDigit(char c)
{
  return c >= '0' && c <= '9';
}

// Goes to the next word of the current line; false at the end of the line.
inline bool NextInLine(Scan *scan)
{
  while (scan->at != scan->end && IsBlank(*scan->at))
    scan->at++;
  return scan->at != scan->end && *scan->at != '\n';
}

// So many digits never exceed the number.
constexpr int DigitsBelow(std::int64_t number)
{
  return number < 10 ? 0 : 1 + DigitsBelow(number / 10);
}

// Reads the number here, after NextInLine. What it stands for goes into the messages. A fault unless it is in
// 0 .. highest; its type is that of highest.
template <auto highest>
auto ReadNumberUpTo(Scan *scan, const char *what)
{
  using Number = decltype(highest);
  constexpr int surely_fit = DigitsBelow(highest);
  const char *at = scan->at;
  const char *last = scan->end - at > surely_fit ? at + surely_fit : scan->end;
  Number value = 0;

  for (; at != last && IsDigit(*at); at++)
    value = 10 * value + (*at - '0');
  if (at == scan->at || (at != scan->end && !IsBlank(*at) && *at != '\n')) [[unlikely]]
    return static_cast<Number>(ReadNumberSlowly(scan, what, 0, highest));
  scan->at = at;
  return value;
}

// The same in 0 .. 2^31-1.
inline int ReadNumber(Scan *scan, const char *what)
{
  return ReadNumberUpTo<INT_MAX>(scan, what);
}

} // namespace kapris_formats
