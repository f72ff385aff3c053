// fuzz/replay.cpp - tries every file of the given folders on one target, in place of libFuzzer.
// SPDX-License-Identifier: MIT
//
// usage: replay_TARGET [--near] FOLDER...; folders that are not there hold nothing
// --near also tries what one edit makes of each file: a byte left out, put in or replaced, a part written twice, the
// end cut off.

#include "fuzz.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

static void Try(const std::string &text)
{
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(text.data()), text.size());
}

static void TryNear(const std::string &text)
{
  const std::string some("0129 \n\t\r%-+.cp\0\xff", 16);

  for (std::size_t at = 0; at < text.size(); at++) {
    const std::string head = text.substr(0, at), rest = text.substr(at), tail = text.substr(at + 1);
    Try(head);
    Try(head + tail);
    Try(head + rest.substr(0, 4) + rest);
    for (const char c : some) {
      Try(head + c + rest);
      Try(head + c + tail);
    }
  }
}

int main(int argc, char **argv)
{
  const bool near = argc > 1 && std::string(argv[1]) == "--near";
  std::vector<std::filesystem::path> files;

  for (int i = 1; i < argc; i++)
    if (std::filesystem::is_directory(argv[i]))
      for (const auto &entry : std::filesystem::directory_iterator(argv[i]))
        files.push_back(std::filesystem::absolute(entry.path()));
  std::sort(files.begin(), files.end());
  for (const std::filesystem::path &file : files) {
    std::ifstream stream(file, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(stream), {}};
    std::fprintf(stderr, "%s\n", file.filename().c_str());
    Try(text);
    if (near)
      TryNear(text);
  }
  std::fprintf(stderr, "%zu files\n", files.size());
  return files.empty();
}
