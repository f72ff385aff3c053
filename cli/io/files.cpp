// cli/io/files.cpp - whole files in and out.
// SPDX-License-Identifier: MIT
//
// A regular file is written under a temporary name in its own directory and then renamed, so that a reader
// sees the old contents or the new, never a part. Devices and pipes cannot be renamed over; they are written
// as they are.

#include "io/files.h"

#include "failure.h"

#include "io/gzip.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace kapris_cli
{

[[noreturn]] static void FailWithErrno(const char *action, const std::string &path, int error)
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

std::string ReadFile(const std::string &path)
{
  return ReadAndClose(OpenToRead(path), path);
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

static bool WriteAll(int fd, std::string_view text)
{
  while (!text.empty()) {
    const ssize_t put = write(fd, text.data(), text.size());
    if (put < 0 && errno == EINTR)
      continue;
    if (put < 0)
      return false;
    text.remove_prefix(static_cast<size_t>(put));
  }
  return true;
}

static std::string DirectoryOf(const std::string &path)
{
  const size_t slash = path.rfind('/');

  if (slash == std::string::npos)
    return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

// The file behind symbolic links: the link shall stay and its target change. A dangling link is replaced.
static std::string ResolveLinks(const std::string &path)
{
  char *resolved = realpath(path.c_str(), nullptr);

  if (!resolved)
    return path;
  std::string target = resolved;
  std::free(resolved);
  return target;
}

void CheckOutput(const std::string &path, const std::string &input)
{
  struct stat out, in;

  if (path == "-")
    return;
  if (stat(path.c_str(), &out) != 0) {
    const std::string directory = DirectoryOf(path);
    if (errno != ENOENT || path.empty())
      FailWithErrno("write", path, errno);
    if (access(directory.c_str(), W_OK | X_OK) != 0)
      FailWithErrno("write", path, errno);
    return;
  }
  if (S_ISDIR(out.st_mode))
    FailWithErrno("write", path, EISDIR);
  // A rename needs no right to write the file that it replaces; a write-protected file shall stay all the
  // same.
  if (access(path.c_str(), W_OK) != 0)
    FailWithErrno("write", path, errno);
  if (S_ISREG(out.st_mode)) {
    if (access(DirectoryOf(ResolveLinks(path)).c_str(), W_OK | X_OK) != 0)
      FailWithErrno("write", path, errno);
    const bool known = input == "-" ? fstat(STDIN_FILENO, &in) == 0 : stat(input.c_str(), &in) == 0;
    if (known && in.st_dev == out.st_dev && in.st_ino == out.st_ino)
      throw Failure{EXIT_USAGE, fmt::format("the output {} is the input itself", path)};
  }
}

static void WriteInPlace(const std::string &path, std::string_view text)
{
  const int fd = path == "-" ? STDOUT_FILENO : open(path.c_str(), O_WRONLY | O_CLOEXEC);

  if (fd < 0)
    FailWithErrno("write", path, errno);
  bool ok = WriteAll(fd, text);
  int error = errno;
  if (fd != STDOUT_FILENO && close(fd) != 0 && ok) {
    ok = false;
    error = errno;
  }
  if (!ok)
    FailWithErrno("write", path == "-" ? "standard output" : path, error);
}

void WriteFile(const std::string &path, std::string_view text)
{
  struct stat info;
  const bool exists = path != "-" && stat(path.c_str(), &info) == 0;

  if (path == "-" || (exists && !S_ISREG(info.st_mode))) {
    WriteInPlace(path, text);
    return;
  }

  const std::string target = ResolveLinks(path);
  const std::string temporary = fmt::format("{}.{}.tmp", target, getpid());
  const int fd = open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  if (fd < 0)
    FailWithErrno("write", temporary, errno);

  bool ok = WriteAll(fd, text) && (!exists || fchmod(fd, info.st_mode & 07777) == 0);
  int error = errno;
  // Some file systems report a full disk only now.
  if (close(fd) != 0 && ok) {
    ok = false;
    error = errno;
  }
  if (ok && rename(temporary.c_str(), target.c_str()) != 0) {
    ok = false;
    error = errno;
  }
  if (!ok) {
    unlink(temporary.c_str());
    FailWithErrno("write", path, error);
  }
}

} // namespace kapris_cli
