// formats/output.h - whole files out.
// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kapris_formats
{

// Saves a user the run: fails if an output cannot be written, is one of the inputs, or is another output, whatever the
// names. "-" stands for standard input or output; empty names are passed over.
void CheckFiles(const std::vector<std::string> &inputs, const std::vector<std::string> &outputs);

// Makes text the contents of path, all of it or nothing: a failure leaves an older file as it was. Compressed if the
// name ends with .gz, .xz or .bz2. Path "-" writes to standard output.
void WriteFile(const std::string &path, std::string_view text);

// Returns false with errno set if not all of the text could be written.
bool WriteAll(int fd, std::string_view text);

} // namespace kapris_formats
