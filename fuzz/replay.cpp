// fuzz/replay.cpp - tries every file of the given folders on one target, in place of libFuzzer.
// SPDX-License-Identifier: MIT
//
// usage: replay_TARGET FOLDER...; folders that are not there hold nothing

#include "fuzz.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

int main(int argc, char **argv)
{
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
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(text.data()), text.size());
  }
  std::fprintf(stderr, "%zu files\n", files.size());
  return files.empty();
}
