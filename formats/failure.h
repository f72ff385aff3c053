// formats/failure.h - how the tool ends: its exit statuses, and the record that a failing step throws.
// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace kapris_formats
{

// Users' scripts test these numbers: docs/formats.md and the help list them, and none may change its meaning.
enum ExitStatus {
  EXIT_DONE = 0,
  EXIT_INTERNAL = 1,
  EXIT_USAGE = 2,
  EXIT_MALFORMED = 3,
  EXIT_OVER_LIMIT = 4,
  EXIT_OUT_OF_MEMORY = 5,
  EXIT_FILES = 6,
  // 7 was a time limit that was reached, which is no failure.
  EXIT_INTERRUPTED = 130
};

// The text of a malformed input starts with its place, "file:line:column: "; main puts "kapris: " before
// others.
struct Failure {
  ExitStatus status;
  std::string text;
};

} // namespace kapris_formats
