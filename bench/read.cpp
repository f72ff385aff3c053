// bench/read.cpp - how fast hypergraph files are read: a table of format, file, MB, seconds, MB/s.
// SPDX-License-Identifier: MIT
//
// usage: bench_read FILE...
//
// Seconds are the shortest of three readings, from the open file to the complete record; the file is then in the page
// cache. MB are 10^6 bytes of the file as it is.

#include "formats/failure.h"
#include "formats/input.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>

using namespace kapris_formats;

static double SecondsToRead(const Input &input)
{
  const auto start = std::chrono::steady_clock::now();
  const Hgr hgr = ReadHypergraph(input);

  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

static void PrintReading(const std::string &path)
{
  constexpr int nreadings = 3;
  const std::filesystem::path name(path);
  const double megabytes = static_cast<double>(std::filesystem::file_size(name)) * 1e-6;
  Input input;
  input.path = path;

  double seconds = SecondsToRead(input);
  for (int reading = 1; reading < nreadings; reading++)
    seconds = std::min(seconds, SecondsToRead(input));
  std::string format = name.extension().string();
  if (format == ".gz")
    format = name.stem().extension().string() + format;
  std::printf("| %s | %s | %.1f | %.3f | %.0f |\n", format.c_str(), name.filename().c_str(), megabytes,
              seconds, megabytes / seconds);
}

int main(int argc, char **argv)
{
  try {
    std::printf("| format | file | MB | seconds | MB/s |\n|---|---|---|---|---|\n");
    for (int i = 1; i < argc; i++)
      PrintReading(argv[i]);
    return 0;
  } catch (const Failure &failure) {
    std::fprintf(stderr, "bench_read: %s\n", failure.text.c_str());
    return 1;
  }
}
