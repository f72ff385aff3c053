// cli/solve/journal.cpp - a file that keeps each start of a run as it ends.
// SPDX-License-Identifier: MIT
//
// JSON, an object a line. The first one describes the run by all that its partitions depend on; each other one is a
// start: its number, seed, figures, time, and its partition: one, two or four bytes a cell, lowest first, compressed by
// gzip, as base64, with the hash that the part file would have. A line is written at once and is on the disk before the
// next start is looked at, so that a crash can tear only the last one.

#include "solve/journal.h"

#include "libraries.h"

#include "formats/failure.h"
#include "formats/files.h"
#include "formats/hash.h"
#include "formats/output.h"
#include "formats/packed.h"
#include "formats/text.h"
#include "json/json.h"
#include "solve/part_bytes.h"

#include <cerrno>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <fmt/core.h>
#include <functional>
#include <nlohmann/json.hpp>
#include <optional>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace kapris_cli
{

Journal::~Journal()
{
  if (fd >= 0)
    close(fd);
}

// ----------------------------------------------------------------------------------------------------------
// Partitions as text

static const std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

static std::string Base64(std::string_view bytes)
{
  std::string text;

  for (size_t i = 0; i < bytes.size(); i += 3) {
    const std::string_view group = bytes.substr(i, 3);
    unsigned long bits = 0;
    for (size_t k = 0; k < 3; k++)
      bits = bits << 8 | (k < group.size() ? static_cast<unsigned char>(group[k]) : 0u);
    for (size_t k = 0; k < 4; k++)
      text += k <= group.size() ? digits[bits >> (18 - 6 * k) & 63] : '=';
  }
  return text;
}

// Nothing where the text is none that Base64 gives.
static std::optional<std::string> FromBase64(std::string_view text)
{
  std::string bytes;
  unsigned long bits = 0, nbits = 0;

  for (const char c : text.substr(0, std::min(text.size(), text.find('=')))) {
    const size_t digit = digits.find(c);
    if (digit == std::string_view::npos)
      return std::nullopt;
    bits = (bits << 6 | digit) & 0xffff;
    if ((nbits += 6) >= 8)
      bytes += static_cast<char>(bits >> (nbits -= 8) & 255);
  }
  if (Base64(bytes) != text)
    return std::nullopt;
  return bytes;
}

static std::string PartText(std::span<const int> part, int nparts)
{
  return Base64(Pack(Packing::GZIP, BytesOfPart(part, nparts)));
}

// Nothing where the text holds no partition.
static std::optional<std::vector<int>> PartOfText(std::string_view text, int ncells, int nparts)
{
  const std::optional<std::string> packed = FromBase64(text);
  if (!packed || PackingOf(*packed) != Packing::GZIP)
    return std::nullopt;
  try {
    return PartOfBytes(Unpack("", Packing::GZIP, *packed), ncells, nparts);
  } catch (const Failure &) {
    return std::nullopt;
  }
}

// ----------------------------------------------------------------------------------------------------------
// Lines

namespace
{

struct SavedStart {
  int number;
  std::int64_t seed;
  double seconds;
  std::vector<int> part;
};

} // namespace

static std::string LineOf(const kapris::Start &start, std::span<const int> part, int nparts)
{
  const Json json = {{"start", start.number},
                     {"seed", start.seed},
                     {"cut", start.cut},
                     {"soed", start.soed},
                     {"excess", start.excess},
                     {"seconds", start.seconds},
                     {"hash", HashOf(std::vector<int>(part.begin(), part.end()))},
                     {"part", PartText(part, nparts)}};

  return json.dump() + "\n";
}

// Nothing where the line is no start.
static std::optional<SavedStart> StartOf(std::string_view line, int ncells, int nparts)
{
  const Json json = ParseJson(line);

  if (!json.is_object() || !json.contains("start") || !json["start"].is_number_integer() ||
      !json.contains("seed") || !json["seed"].is_number_integer() || !json.contains("seconds") ||
      !json["seconds"].is_number() || !json.contains("hash") || !json["hash"].is_string() ||
      !json.contains("part") || !json["part"].is_string())
    return std::nullopt;
  const std::int64_t number = json["start"].get<std::int64_t>();
  std::optional<std::vector<int>> part =
      PartOfText(json["part"].get_ref<const std::string &>(), ncells, nparts);
  if (number < 0 || number >= INT_MAX || !part ||
      HashOf(*part) != json["hash"].get_ref<const std::string &>())
    return std::nullopt;
  return SavedStart{static_cast<int>(number), json["seed"].get<std::int64_t>(), json["seconds"].get<double>(),
                    std::move(*part)};
}

[[noreturn]] static void FailDamaged(const Journal *journal, std::int64_t line)
{
  throw Failure{EXIT_MALFORMED,
                fmt::format("{}:{}:1: this line of the journal is damaged; delete it, and its start is made "
                            "anew",
                            Shown(journal->path), line)};
}

static std::string ReadAt(const Journal *journal, const JournalLine &line)
{
  std::string text(static_cast<size_t>(line.length), '\0');
  size_t used = 0;

  while (used < text.size()) {
    const ssize_t got =
        pread(journal->fd, text.data() + used, text.size() - used, line.begin + static_cast<off_t>(used));
    if (got < 0 && errno == EINTR)
      continue;
    if (got < 0)
      FailWithErrno("read", journal->path, errno);
    if (got == 0)
      break;
    used += static_cast<size_t>(got);
  }
  text.resize(used);
  return text;
}

// Calls take(text, line) for each line; the last one may lack its end, which the others have in text.
static void ForEachLine(const Journal *journal, std::int64_t size,
                        const std::function<void(const std::string &, JournalLine)> &take)
{
  constexpr std::int64_t step = 1 << 16;
  std::string text;
  JournalLine line = {1, 0, 0};

  for (std::int64_t at = 0; at < size; at += step) {
    const std::string more = ReadAt(journal, {0, at, std::min(step, size - at)});
    for (size_t begin = 0; begin < more.size();) {
      const size_t found = more.find('\n', begin), end = found == std::string::npos ? more.size() : found + 1;
      text.append(more, begin, end - begin);
      begin = end;
      if (text.back() != '\n')
        continue;
      line.length = static_cast<std::int64_t>(text.size());
      take(text, line);
      line = {line.number + 1, line.begin + line.length, 0};
      text.clear();
    }
  }
  line.length = static_cast<std::int64_t>(text.size());
  if (!text.empty())
    take(text, line);
}

// ----------------------------------------------------------------------------------------------------------
// Opening

static void CheckSame(const std::string &path, const std::string &what, const Json &there, const Json &here)
{
  if (there.is_object() && here.is_object()) {
    for (const auto &[key, value] : here.items())
      CheckSame(path, what.empty() ? key : what + "." + key, there.value(key, Json()), value);
    return;
  }
  if (there != here)
    throw Failure{EXIT_USAGE,
                  fmt::format("the journal {} belongs to another run: {} is {} there and {} here",
                              Shown(path), what, there.dump(-1, ' ', false, Json::error_handler_t::replace),
                              here.dump())};
}

static void OpenFile(Journal *journal)
{
  struct stat info;

  journal->fd = open(journal->path.c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC | O_NONBLOCK, 0666);
  if (journal->fd < 0 || fstat(journal->fd, &info) != 0)
    FailWithErrno("write", journal->path, errno);
  if (!S_ISREG(info.st_mode))
    throw Failure{EXIT_USAGE, fmt::format("the journal {} is no regular file", Shown(journal->path))};
  if (flock(journal->fd, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK)
    throw Failure{EXIT_FILES, fmt::format("another run is writing the journal {}", Shown(journal->path))};
}

// Makes text the end of the file, all of it or nothing; false with errno set.
static bool Append(Journal *journal, const std::string &text)
{
  if (WriteAll(journal->fd, text) && fsync(journal->fd) == 0) {
    journal->end += static_cast<std::int64_t>(text.size());
    return true;
  }
  const int error = errno;
  // What cannot be cut off either is dropped by whoever reads it.
  if (ftruncate(journal->fd, journal->end) != 0)
    journal->failed = true;
  errno = error;
  return false;
}

// The name of a new file is on the disk when its folder is.
static void SyncFolder(const std::string &path)
{
  const std::string folder = path.substr(0, path.rfind('/') + 1) + ".";
  const int fd = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);

  if (fd < 0)
    return;
  fsync(fd);
  close(fd);
}

static void CutOff(Journal *journal, const JournalLine &line)
{
  fmt::print(stderr, "kapris: note: {}:{}: the last line is torn and left out\n", Shown(journal->path),
             line.number);
  if (ftruncate(journal->fd, line.begin) != 0)
    FailWithErrno("write", journal->path, errno);
  journal->end = line.begin;
}

// Returns whether the journal begins with this line; a part of it is what a crash can leave.
static bool TakeHeader(Journal *journal, const std::string &text, const JournalLine &line,
                       const std::string &header)
{
  const Json there = ParseJson(text), here = ParseJson(header);

  if (text.size() < header.size() && header.starts_with(text)) {
    CutOff(journal, line);
    return false;
  }
  if (!there.is_object() || there.value("schema", Json()) != here["schema"])
    throw Failure{EXIT_MALFORMED,
                  fmt::format("{}:1:1: not a journal of 'kapris partition --journal'", Shown(journal->path))};
  CheckSame(journal->path, "", there, here);
  journal->end = line.length;
  return true;
}

static void TakeLine(Journal *journal, const std::string &text, const JournalLine &line, bool last)
{
  const std::optional<SavedStart> start =
      text.back() == '\n' ? StartOf(text, journal->ncells, journal->nparts) : std::nullopt;

  if (!start && !last)
    FailDamaged(journal, line.number);
  if (!start) {
    CutOff(journal, line);
    return;
  }
  journal->starts.insert({start->number, line});
  journal->end = line.begin + line.length;
}

std::unique_ptr<Journal> OpenJournal(const std::string &path, const std::string &fingerprint, int ncells,
                                     int nparts)
{
  auto journal = std::make_unique<Journal>();
  const std::string header = fingerprint + "\n";
  bool begun = false;

  journal->path = path;
  journal->ncells = ncells;
  journal->nparts = nparts;
  journal->end = 0;
  OpenFile(journal.get());
  const std::int64_t size = lseek(journal->fd, 0, SEEK_END);
  ForEachLine(journal.get(), size, [&](const std::string &text, JournalLine line) {
    if (line.number == 1)
      begun = TakeHeader(journal.get(), text, line, header);
    else
      TakeLine(journal.get(), text, line, line.begin + line.length == size);
  });
  if (begun)
    return journal;
  if (!Append(journal.get(), header))
    FailWithErrno("write", path, errno);
  SyncFolder(path);
  return journal;
}

// ----------------------------------------------------------------------------------------------------------
// Starts

bool RecallStart(const Journal *journal, kapris::Start *start, std::span<int> part)
{
  const auto found = journal->starts.find(start->number);

  if (found == journal->starts.end())
    return false;
  const std::optional<SavedStart> saved =
      StartOf(ReadAt(journal, found->second), journal->ncells, journal->nparts);
  if (!saved || saved->number != start->number || saved->seed != start->seed)
    FailDamaged(journal, found->second.number);
  std::copy(saved->part.begin(), saved->part.end(), part.begin());
  start->seconds = saved->seconds;
  return true;
}

void NoteStart(Journal *journal, const kapris::Start &start, std::span<const int> part)
{
  if (journal->failed || Append(journal, LineOf(start, part, journal->nparts)))
    return;
  const int error = errno;
  journal->failed = true;
  fmt::print(stderr, "kapris: warning: cannot write {}: {}; the run goes on without a journal\n",
             Shown(journal->path), std::strerror(error));
}

} // namespace kapris_cli
