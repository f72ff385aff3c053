// formats/output.cpp - whole files out.
// SPDX-License-Identifier: MIT
//
// A regular file is written under a temporary name in its own directory and then renamed, so that a reader
// sees the old contents or the new, never a part. Devices and pipes cannot be renamed over; they are written
// as they are, and so is the file that standard output goes to, which others may have written to.

#include "formats/output.h"

#include "formats/failure.h"
#include "formats/files.h"
#include "formats/packed.h"
#include "formats/text.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <fmt/core.h>
#include <optional>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

namespace kapris_formats
{

bool WriteAll(int fd, std::string_view text)
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

static bool IsSame(const struct stat &a, const struct stat &b)
{
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

// The open stream that the file is the target of, or -1.
static int StreamOf(const struct stat &info)
{
  struct stat stream;

  for (const int fd : {STDOUT_FILENO, STDERR_FILENO})
    if (fstat(fd, &stream) == 0 && IsSame(stream, info))
      return fd;
  return -1;
}

static void CheckWritable(const std::string &path)
{
  struct stat info;

  if (path == "-")
    return;
  if (stat(path.c_str(), &info) != 0) {
    if (errno != ENOENT || access(DirectoryOf(path).c_str(), W_OK | X_OK) != 0)
      FailWithErrno("write", path, errno);
    const long longest = pathconf(DirectoryOf(path).c_str(), _PC_NAME_MAX);
    if (longest > 0 && path.size() - path.rfind('/') - 1 > static_cast<size_t>(longest))
      FailWithErrno("write", path, ENAMETOOLONG);
    return;
  }
  if (S_ISDIR(info.st_mode))
    FailWithErrno("write", path, EISDIR);
  // A rename needs no right to write the file that it replaces; a write-protected file shall stay all the
  // same.
  if (access(path.c_str(), W_OK) != 0)
    FailWithErrno("write", path, errno);
  if (S_ISREG(info.st_mode) && StreamOf(info) == -1 &&
      access(DirectoryOf(ResolveLinks(path)).c_str(), W_OK | X_OK) != 0)
    FailWithErrno("write", path, errno);
}

// Two names of one file give the same text; devices and pipes none, as they can be used twice.
static std::string IdentityOf(const std::string &path, int stream)
{
  struct stat info;
  const bool exists = path == "-" ? fstat(stream, &info) == 0 : stat(path.c_str(), &info) == 0;

  if (exists && S_ISREG(info.st_mode))
    return fmt::format("{}:{}", info.st_dev, info.st_ino);
  if (exists)
    return path == "-" ? "-" : "";
  return fmt::format("{}/{}", ResolveLinks(DirectoryOf(path)), path.substr(path.rfind('/') + 1));
}

void CheckFiles(const std::vector<std::string> &inputs, const std::vector<std::string> &outputs)
{
  std::set<std::string> read, written;

  for (const std::string &path : inputs)
    if (!path.empty())
      read.insert(IdentityOf(path, STDIN_FILENO));
  for (const std::string &path : outputs) {
    if (path.empty())
      continue;
    if (!CanPack(PackingOfName(path)))
      throw Failure{EXIT_USAGE,
                    fmt::format("cannot write {}: files of this kind are only read; choose .gz, .xz or "
                                ".bz2",
                                Shown(path))};
    CheckWritable(path);
    const std::string identity = IdentityOf(path, STDOUT_FILENO);
    if (identity.empty())
      continue;
    if (identity != "-" && read.count(identity) > 0)
      throw Failure{EXIT_USAGE,
                    fmt::format("the output {} is the input itself", path == "-" ? "stdout" : Shown(path))};
    if (!written.insert(identity).second)
      throw Failure{EXIT_USAGE, path == "-" ? "two results go to standard output; give one of them a file"
                                            : fmt::format("two results are both to be {}", Shown(path))};
  }
}

static void WriteToStream(int fd, const std::string &path, std::string_view text)
{
  // What was printed before comes first.
  if (std::fflush(fd == STDERR_FILENO ? stderr : stdout) != 0 || !WriteAll(fd, text))
    FailWithErrno("write", path == "-" ? "standard output" : path, errno);
}

static void WriteInPlace(const std::string &path, std::string_view text)
{
  const int fd = open(path.c_str(), O_WRONLY | O_CLOEXEC);

  if (fd < 0)
    FailWithErrno("write", path, errno);
  bool ok = WriteAll(fd, text);
  int error = errno;
  if (close(fd) != 0 && ok) {
    ok = false;
    error = errno;
  }
  if (!ok)
    FailWithErrno("write", path, error);
}

// mkstemp makes files that are for their owner alone.
static mode_t UsualMode()
{
  const mode_t mask = umask(0);

  umask(mask);
  return 0666 & ~mask;
}

// exists: a file is replaced. Its successor is on the disk first, so that a crash of the machine leaves either of them.
static void Replace(const std::string &path, std::string_view text, mode_t mode, bool exists)
{
  const std::string target = ResolveLinks(path);
  std::string temporary = DirectoryOf(target) + "/.kapris-XXXXXX";
  const int fd = mkostemp(temporary.data(), O_CLOEXEC);

  if (fd < 0)
    FailWithErrno("write", path, errno);
  bool ok = WriteAll(fd, text) && fchmod(fd, mode) == 0;
  ok = ok && (!exists || fsync(fd) == 0 || errno == EINVAL);
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

namespace
{

// Signals wait while this lives, so that no temporary file stays behind and no file ends halfway.
struct SignalPause {
  sigset_t before;

  SignalPause()
  {
    sigset_t all;
    sigfillset(&all);
    sigprocmask(SIG_BLOCK, &all, &before);
  }

  ~SignalPause()
  {
    sigprocmask(SIG_SETMASK, &before, nullptr);
  }

  SignalPause(const SignalPause &) = delete;
  SignalPause &operator=(const SignalPause &) = delete;
};

} // namespace

static void WriteBytes(const std::string &path, std::string_view bytes)
{
  struct stat info;
  const bool exists = (path == "-" ? fstat(STDOUT_FILENO, &info) : stat(path.c_str(), &info)) == 0;
  const int stream = path == "-" ? STDOUT_FILENO : exists ? StreamOf(info) : -1;
  std::optional<SignalPause> pause;

  // Devices and pipes can wait for ever.
  if (!exists || S_ISREG(info.st_mode))
    pause.emplace();
  if (stream != -1)
    WriteToStream(stream, path, bytes);
  else if (exists && !S_ISREG(info.st_mode))
    WriteInPlace(path, bytes);
  else
    Replace(path, bytes, exists ? info.st_mode & 07777 : UsualMode(), exists);
}

void WriteFile(const std::string &path, std::string_view text)
{
  const Packing packing = PackingOfName(path);

  if (packing == Packing::NONE)
    WriteBytes(path, text);
  else
    WriteBytes(path, Pack(packing, text));
}

} // namespace kapris_formats
