// cli/solve/journal.h - a file that keeps each start of a run as it ends, from which the same command goes on.
// SPDX-License-Identifier: MIT
#pragma once

#include <kapris.hpp>
#include <map>
#include <memory>
#include <span>
#include <string>

namespace kapris_cli
{

// Where a line stands in the file.
struct JournalLine {
  std::int64_t number; // from 1
  std::int64_t begin, length;
};

struct Journal {
  std::string path;
  int fd = -1;
  int ncells, nparts;
  std::map<int, JournalLine> starts; // by their numbers
  std::int64_t end;                  // of the last whole line
  bool failed = false;               // no more can be written

  Journal() = default;
  ~Journal();
  Journal(const Journal &) = delete;
  Journal &operator=(const Journal &) = delete;
};

// Opens the journal that begins with the line fingerprint, an object, or begins it. A last line that is torn is cut off
// with a note on standard error. Fails if the journal is that of another run, if it is damaged elsewhere, or if another
// process has it open. The partitions have ncells cells.
std::unique_ptr<Journal> OpenJournal(const std::string &path, const std::string &fingerprint, int ncells,
                                     int nparts);

// Fills part, and the seconds of start, if the start is in the journal.
bool RecallStart(const Journal *journal, kapris::Start *start, std::span<int> part);

// Adds a line, which is on the disk afterwards. Where that fails the run goes on without, and a warning says so.
void NoteStart(Journal *journal, const kapris::Start &start, std::span<const int> part);

} // namespace kapris_cli
