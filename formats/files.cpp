// formats/files.cpp - whole files in.
// SPDX-License-Identifier: MIT

#include "formats/files.h"

#include "formats/failure.h"
#include "formats/packed.h"
#include "formats/text.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <fmt/core.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace kapris_formats
{

void FailWithErrno(const char *action, const std::string &path, int error)
{
  throw Failure{EXIT_FILES, fmt::format("cannot {} {}: {}", action, Shown(path), std::strerror(error))};
}

std::string InputName(const std::string &path)
{
  return path == "-" ? "stdin" : Shown(path);
}

// Reads to the end of fd; without bytes and with errno set on failure. A copy, since a mapped file that another program
// shortens or rewrites meanwhile would end this one.
static Text ReadAll(int fd)
{
  struct stat info;
  size_t used = 0;

  if (fstat(fd, &info) != 0)
    return {};
  // One byte more than the size, so that the read which finds the end needs no growth.
  size_t size = S_ISREG(info.st_mode) ? static_cast<size_t>(info.st_size) + 1 : 65536;
  auto bytes = std::make_unique_for_overwrite<char[]>(size);
  for (;;) {
    if (used == size) {
      auto larger = std::make_unique_for_overwrite<char[]>(2 * size);
      std::memcpy(larger.get(), bytes.get(), used);
      bytes = std::move(larger);
      size *= 2;
    }
    const ssize_t got = read(fd, bytes.get() + used, size - used);
    if (got < 0 && errno == EINTR)
      continue;
    if (got < 0)
      return {};
    if (got == 0)
      break;
    used += static_cast<size_t>(got);
  }
  const std::shared_ptr<const char[]> owner = std::move(bytes);
  return {std::string_view(owner.get(), used), owner};
}

static int OpenToRead(const std::string &path)
{
  const int fd = path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC);

  if (fd < 0)
    FailWithErrno("open", path, errno);
  return fd;
}

// Editors put a byte order mark before the text, and some write two bytes for each character.
static Text WithoutMark(const std::string &path, Text text)
{
  using namespace std::string_view_literals;
  const bool isutf16 =
      text.bytes.starts_with("\xff\xfe"sv) || text.bytes.starts_with("\xfe\xff"sv) ||
      (text.bytes.size() >= 4 && ((text.bytes[1] == 0 && text.bytes[3] == 0 && text.bytes[0] != 0) ||
                                  (text.bytes[0] == 0 && text.bytes[2] == 0 && text.bytes[1] != 0)));

  if (isutf16)
    throw Failure{
        EXIT_MALFORMED,
        fmt::format("{}:1:1: this looks like UTF-16; save the file as plain text or UTF-8", InputName(path))};
  if (text.bytes.starts_with("\xef\xbb\xbf"sv))
    text.bytes.remove_prefix(3);
  return text;
}

Text OpenText(const std::string &path)
{
  const int fd = OpenToRead(path);
  const Text text = ReadAll(fd);
  const int error = errno;

  if (fd != STDIN_FILENO)
    close(fd);
  if (text.owner == nullptr)
    FailWithErrno("read", path == "-" ? "stdin" : path, error);
  const Packing packing = PackingOf(text.bytes);
  if (packing == Packing::NONE)
    return WithoutMark(path, text);
  const auto owner = std::make_shared<const std::string>(Unpack(InputName(path), packing, text.bytes));
  return WithoutMark(path, {*owner, owner});
}

bool IsRegularFile(const std::string &path)
{
  struct stat info;

  return stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
}

} // namespace kapris_formats
