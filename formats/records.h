// formats/records.h - between the records of the C interfaces and those of the readers, and how calls of C end.
// SPDX-License-Identifier: MIT
#pragma once

#include "formats/failure.h"
#include "formats/hgr.h"
#include "formats/kapris_formats.h"
#include "formats/names.h"

#include <cstddef>
#include <exception>
#include <new>
#include <string>

namespace kapris_formats
{

// An argument that cannot be used.
[[noreturn]] void Refuse(const std::string &text);

// Copies, and refuses what is no hypergraph.
Hgr HgrOf(const kapris_file &file);
Details DetailsOf(const kapris_file &file);

kapris_file_status StatusOf(ExitStatus status);

// Copies a text, cut to the room of the message. Needs no memory.
void Tell(char *message, size_t room, const char *text);

// Messages call arguments by the options of the tool: in place, "--drop-weights" becomes drop_weights. Needs no memory.
void NameArguments(char *text);

// Whatever happens in the work, nothing is thrown through frames of C.
template <typename Work>
static kapris_file_status Guard(char *message, size_t room, const Work &work)
{
  Tell(message, room, "");
  try {
    work();
    return KAPRIS_FILE_OK;
  } catch (const Failure &failure) {
    Tell(message, room, failure.text.c_str());
    if (room > 0 && failure.status == EXIT_USAGE)
      NameArguments(message);
    return StatusOf(failure.status);
  } catch (const std::bad_alloc &) {
    Tell(message, room, "out of memory");
    return KAPRIS_FILE_OUT_OF_MEMORY;
  } catch (const std::exception &other) {
    Tell(message, room, other.what());
    return KAPRIS_FILE_INTERNAL;
  }
}

} // namespace kapris_formats
