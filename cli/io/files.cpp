// cli/io/files.cpp - whole files in.
// SPDX-License-Identifier: MIT

#include "io/files.h"

#include "failure.h"

#include "io/gzip.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace kapris_cli
{

void FailWithErrno(const char *action, const std::string &path, int error)
{
  throw Failure{EXIT_FILES, fmt::format("cannot {} {}: {}", action, path, std::strerror(error))};
}

std::string InputName(const std::string &path)
{
  return path == "-" ? "stdin" : path;
}

// Reads to the end of fd; false with errno set on failure.
static bool ReadAll(int fd, std::string *text)
{
  struct stat info;
  size_t used = 0;

  if (fstat(fd, &info) != 0)
    return false;
  // One byte more than the size, so that the read which finds the end needs no growth.
  text->resize(S_ISREG(info.st_mode) ? static_cast<size_t>(info.st_size) + 1 : 65536);
  for (;;) {
    if (used == text->size())
      text->resize(2 * used);
    const ssize_t got = read(fd, text->data() + used, text->size() - used);
    if (got < 0 && errno == EINTR)
      continue;
    if (got < 0)
      return false;
    if (got == 0)
      break;
    used += static_cast<size_t>(got);
  }
  text->resize(used);
  return true;
}

static int OpenToRead(const std::string &path)
{
  const int fd = path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC);

  if (fd < 0)
    FailWithErrno("open", path, errno);
  return fd;
}

static std::string ReadAndClose(int fd, const std::string &path)
{
  std::string text;
  const bool ok = ReadAll(fd, &text);
  const int error = errno;

  if (fd != STDIN_FILENO)
    close(fd);
  if (!ok)
    FailWithErrno("read", InputName(path), error);
  return text;
}

static Text TextOf(std::string bytes)
{
  const auto owner = std::make_shared<const std::string>(std::move(bytes));

  return {*owner, owner};
}

// Without bytes if fd cannot be mapped, as a pipe or an empty file.
static Text MapText(int fd)
{
  struct stat info;

  if (fstat(fd, &info) != 0 || !S_ISREG(info.st_mode) || info.st_size == 0)
    return {};
  const size_t size = static_cast<size_t>(info.st_size);
  void *bytes = mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_POPULATE, fd, 0);
  if (bytes == MAP_FAILED)
    return {};
  return {std::string_view(static_cast<const char *>(bytes), size),
          std::shared_ptr<const void>(bytes, [size](void *mapped) { munmap(mapped, size); })};
}

Text OpenText(const std::string &path)
{
  const int fd = OpenToRead(path);
  // Standard input may have been read in part, which a mapping would not know.
  Text text = fd == STDIN_FILENO ? Text{} : MapText(fd);

  if (text.owner == nullptr)
    text = TextOf(ReadAndClose(fd, path));
  else
    close(fd);
  if (IsGzip(text.bytes))
    return TextOf(Decompress(InputName(path), text.bytes));
  return text;
}

bool IsRegularFile(const std::string &path)
{
  struct stat info;

  return stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
}

} // namespace kapris_cli
