// formats/rescue.h - a result whose file cannot be written goes to another place.
// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kapris_formats
{

// Saves a user the run: fails if the disk that path is to be on has no room for so many bytes. Says nothing of what is
// no regular file.
void CheckRoom(const std::string &path, std::uint64_t nbytes);

// Writes text to a new file, name.rescued or, if that exists, name.rescued.2 and so on, in the working directory, in
// $TMPDIR or in /tmp, whichever is the first that takes it. name: without folders. Returns its path; empty: nowhere.
std::string Rescue(const std::string &name, std::string_view text);

} // namespace kapris_formats
