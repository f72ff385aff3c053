// cli/io/files.h - whole files in and out.
// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace kapris_cli
{

// The name for messages: "stdin" for "-".
std::string InputName(const std::string &path);

// The bytes of a file; path "-" reads standard input.
std::string ReadFile(const std::string &path);

// Fails if WriteFile could not write path, or would replace the file that input names. Saves a user the run.
void CheckOutput(const std::string &path, const std::string &input);

// Makes text the contents of path, all of it or nothing: a failure leaves an older file as it was. Path "-"
// writes to standard output.
void WriteFile(const std::string &path, std::string_view text);

} // namespace kapris_cli
