// formats/files.h - whole files in.
// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace kapris_formats
{

// The name for messages: "stdin" for "-", escaped if it cannot be shown.
std::string InputName(const std::string &path);

// Bytes for reading, and what keeps them.
struct Text {
  std::string_view bytes;
  std::shared_ptr<const void> owner;
};

// The bytes of a file, or the text if they are compressed (formats/packed.h), whatever its name, without a byte order
// mark; path "-" reads standard input.
Text OpenText(const std::string &path);

bool IsRegularFile(const std::string &path);

// Throws the failure "cannot write x: No space left on device".
[[noreturn]] void FailWithErrno(const char *action, const std::string &path, int error);

} // namespace kapris_formats
