// formats/packed.cpp - compressed data in memory.
// SPDX-License-Identifier: MIT
//
// libarchive reads and writes xz and bzip2, and reads zstd. Two things it does worse than they can be done: it does not
// compare the sum at the end of gzip data, so that a damaged file would give another text, and gzip.cpp stays; and it
// writes zstd data without a sum, so those are not written.

#include "formats/packed.h"

#include "formats/failure.h"
#include "formats/gzip.h"

#include <archive.h>
#include <archive_entry.h>
#include <cerrno>
#include <fmt/core.h>
#include <memory>
#include <new>

namespace kapris_formats
{

namespace
{

struct Kind {
  Packing packing;
  std::string_view name, suffix, magic;
  int (*read)(archive *);  // nullptr: not by libarchive
  int (*write)(archive *); // nullptr: not written
};

} // namespace

using namespace std::string_view_literals;

static const Kind kinds[] = {
    {Packing::GZIP, "gzip", ".gz", "\x1f\x8b"sv, nullptr, nullptr},
    {Packing::XZ, "xz", ".xz", "\xfd\x37zXZ\0"sv, archive_read_support_filter_xz,
     archive_write_add_filter_xz},
    {Packing::BZIP2, "bzip2", ".bz2", "BZh"sv, archive_read_support_filter_bzip2,
     archive_write_add_filter_bzip2},
    {Packing::ZSTD, "zstd", ".zst", "\x28\xb5\x2f\xfd"sv, archive_read_support_filter_zstd, nullptr},
};

static const Kind &KindOf(Packing packing)
{
  for (const Kind &kind : kinds)
    if (kind.packing == packing)
      return kind;
  throw Failure{EXIT_INTERNAL, "internal failure: no kind of compressed data"};
}

Packing PackingOf(std::string_view bytes)
{
  for (const Kind &kind : kinds)
    if (bytes.starts_with(kind.magic))
      return kind.packing;
  return Packing::NONE;
}

Packing PackingOfName(std::string_view name)
{
  for (const Kind &kind : kinds)
    if (name.ends_with(kind.suffix))
      return kind.packing;
  return Packing::NONE;
}

std::string_view WithoutPacking(std::string_view name)
{
  for (const Kind &kind : kinds)
    if (name.ends_with(kind.suffix))
      return name.substr(0, name.size() - kind.suffix.size());
  return name;
}

bool CanPack(Packing packing)
{
  return packing != Packing::ZSTD;
}

typedef std::unique_ptr<archive, int (*)(archive *)> Archive;

static Archive Owned(archive *made, int (*release)(archive *))
{
  if (made == nullptr)
    throw std::bad_alloc();
  return Archive(made, release);
}

static std::string Reason(archive *reader)
{
  if (archive_errno(reader) == ENOMEM)
    throw std::bad_alloc();
  const char *reason = archive_error_string(reader);
  return reason == nullptr ? "they end too early" : reason;
}

[[noreturn]] static void FailDamaged(const std::string &name, const Kind &kind, const std::string &reason,
                                     size_t nread)
{
  throw Failure{EXIT_MALFORMED,
                fmt::format("{}:1:1: the {} data are damaged or cut off ({}), after {} bytes of "
                            "text: fetch or compress the file again",
                            name, kind.name, reason, nread)};
}

// libarchive stops where no further stream of the kind begins. Zeros fill the last block of a tape or disk.
static bool IsAllUsed(archive *reader, std::string_view bytes)
{
  const auto used = static_cast<size_t>(archive_filter_bytes(reader, -1));

  return used >= bytes.size() || bytes.find_first_not_of('\0', used) == std::string_view::npos;
}

static std::string ReadArchive(const std::string &name, const Kind &kind, std::string_view bytes)
{
  static constexpr size_t piece = 1 << 16;
  const Archive reader = Owned(archive_read_new(), archive_read_free);
  archive_entry *entry = nullptr;
  std::string text;
  const auto check = [&](la_ssize_t status) {
    if (status < ARCHIVE_OK)
      FailDamaged(name, kind, Reason(reader.get()), text.size());
  };

  check(kind.read(reader.get()));
  check(archive_read_support_format_raw(reader.get()));
  check(archive_read_support_format_empty(reader.get()));
  check(archive_read_open_memory(reader.get(), bytes.data(), bytes.size()));
  const int status = archive_read_next_header(reader.get(), &entry);
  check(status);
  // The data, and one filter on them. More are one more for each time that the text looks compressed again.
  if (const int nfilters = archive_filter_count(reader.get()); nfilters != 2)
    FailDamaged(name, kind, nfilters < 2 ? "their header is wrong" : "they are compressed twice", 0);
  for (la_ssize_t got = 1; status == ARCHIVE_OK && got > 0;) {
    const size_t before = text.size();
    text.resize(before + piece);
    got = archive_read_data(reader.get(), text.data() + before, piece);
    text.resize(before + (got > 0 ? static_cast<size_t>(got) : 0));
    check(got);
  }
  if (!IsAllUsed(reader.get(), bytes))
    FailDamaged(name, kind, "other data follow", text.size());
  return text;
}

std::string Unpack(const std::string &name, Packing packing, std::string_view bytes)
{
  return packing == Packing::GZIP ? Decompress(name, bytes) : ReadArchive(name, KindOf(packing), bytes);
}

// For libarchive, whose frames no exception may cross.
static la_ssize_t Append(archive *writer, void *data, const void *bytes, size_t size)
{
  try {
    static_cast<std::string *>(data)->append(static_cast<const char *>(bytes), size);
    return static_cast<la_ssize_t>(size);
  } catch (const std::bad_alloc &) {
    archive_set_error(writer, ENOMEM, "out of memory");
    return -1;
  }
}

static std::string WriteArchive(const Kind &kind, std::string_view text)
{
  std::string bytes;
  const Archive writer = Owned(archive_write_new(), archive_write_free);
  const std::unique_ptr<archive_entry, void (*)(archive_entry *)> entry(archive_entry_new(),
                                                                        archive_entry_free);
  const auto check = [&](la_ssize_t status) {
    if (status < ARCHIVE_OK)
      throw Failure{EXIT_INTERNAL, fmt::format("internal failure: libarchive: {}", Reason(writer.get()))};
  };

  if (entry == nullptr)
    throw std::bad_alloc();
  check(kind.write(writer.get()));
  check(archive_write_set_format_raw(writer.get()));
  check(archive_write_set_bytes_in_last_block(writer.get(), 1)); // no zeros at the end
  check(archive_write_open(writer.get(), &bytes, nullptr, Append, nullptr));
  archive_entry_set_filetype(entry.get(), AE_IFREG);
  check(archive_write_header(writer.get(), entry.get()));
  check(archive_write_data(writer.get(), text.data(), text.size()));
  check(archive_write_close(writer.get()));
  return bytes;
}

std::string Pack(Packing packing, std::string_view text)
{
  return packing == Packing::GZIP ? Compress(text) : WriteArchive(KindOf(packing), text);
}

} // namespace kapris_formats
