// formats/rescue.cpp - a result whose file cannot be written goes to another place.
// SPDX-License-Identifier: MIT

#include "formats/rescue.h"

#include "formats/files.h"
#include "formats/output.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <fmt/core.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace kapris_formats
{

void CheckRoom(const std::string &path, std::uint64_t nbytes)
{
  const size_t slash = path.rfind('/');
  const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
  struct stat info;
  struct statvfs disk;

  if (path == "-" || (stat(path.c_str(), &info) == 0 && !S_ISREG(info.st_mode)))
    return;
  // Some file systems do not tell how large they are.
  if (statvfs(folder.c_str(), &disk) != 0 || disk.f_blocks == 0 || disk.f_frsize == 0)
    return;
  const std::uint64_t nfree = geteuid() == 0 ? disk.f_bfree : disk.f_bavail;
  if (nfree < nbytes / disk.f_frsize + 1)
    FailWithErrno("write", path, ENOSPC);
}

// A file that was not there before, with all of the text, or none.
static bool WriteNew(const std::string &path, std::string_view text)
{
  const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);

  if (fd < 0)
    return false;
  bool ok = WriteAll(fd, text) && (fsync(fd) == 0 || errno == EINVAL);
  const int error = errno;
  ok = close(fd) == 0 && ok;
  if (!ok)
    unlink(path.c_str());
  errno = error;
  return ok;
}

std::string Rescue(const std::string &name, std::string_view text)
{
  constexpr size_t longest = 200; // with the end still a name that every file system takes
  const char *tmpdir = std::getenv("TMPDIR");

  for (const std::string folder : {".", tmpdir != nullptr ? tmpdir : "", "/tmp"})
    for (int number = 1; !folder.empty() && number < 1000; number++) {
      const std::string suffix = number == 1 ? ".rescued" : fmt::format(".rescued.{}", number);
      const std::string path = (folder == "." ? "" : folder + "/") + name.substr(0, longest) + suffix;
      if (WriteNew(path, text))
        return path;
      if (errno != EEXIST)
        break;
    }
  return "";
}

} // namespace kapris_formats
