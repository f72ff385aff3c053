// cli/io/scan.h - whole numbers line by line out of a text in memory, with the place of every fault.
// SPDX-License-Identifier: MIT
//
// Lines end with '\n' or with the text; blanks, tabs and carriage returns separate, which also covers "\r\n"
// ends. A line whose first byte after blanks is '%' is a comment.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kapris_cli
{

struct Scan {
  std::string name;  // of the file, for messages
  const char *at;    // the next byte
  const char *end;   // of the text
  const char *start; // of the current line: columns count bytes from here
  long long line;    // from 1
};

// The text must outlive the record.
Scan StartScan(std::string name, std::string_view text);

// Throws the failure "name:line:column: message" for the byte at the given place of the current line.
[[noreturn]] void FailAt(const Scan &scan, const char *place, const std::string &message);

// Goes to the first line from here on that is no comment; false if there is none.
bool NextLine(Scan *scan);

// As NextLine, and passes blank lines too.
bool NextFilledLine(Scan *scan);

// Goes to the next number of the current line; false at the end of the line.
bool NextInLine(Scan *scan);

// Reads the number here, after NextInLine. What it stands for goes into the messages. Fails unless it is in
// 0 .. 2^31-1.
int ReadNumber(Scan *scan, const char *what);

// Leaves the line; fails if anything is left on it.
void EndLine(Scan *scan, const char *what);

// The word at a place, shortened and made printable for a message.
std::string Quoted(const Scan &scan, const char *place);

} // namespace kapris_cli
