// cli/io/files.h - whole files in and out.
// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace kapris_cli
{

// The name for messages: "stdin" for "-".
std::string InputName(const std::string &path);

// The bytes of a file; path "-" reads standard input.
std::string ReadFile(const std::string &path);

// Bytes for reading, and what keeps them.
struct Text {
  std::string_view bytes;
  std::shared_ptr<const void> owner;
};

// The bytes of a file as ReadFile, decompressed if they are gzip data, whatever the file's name. A plain file is mapped
// into memory instead of read: it must not shrink meanwhile.
Text OpenText(const std::string &path);

bool IsRegularFile(const std::string &path);

// Fails if WriteFile could not write path, or would replace the file that input names. Saves a user the run.
void CheckOutput(const std::string &path, const std::string &input);

// Makes text the contents of path, all of it or nothing: a failure leaves an older file as it was. Path "-"
// writes to standard output.
void WriteFile(const std::string &path, std::string_view text);

} // namespace kapris_cli
