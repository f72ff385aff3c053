// bench/read.cpp - how fast hypergraph files are read: a table of format, file, MB, seconds, MB/s.
// SPDX-License-Identifier: MIT
//
// usage: bench_read FILE...
//        bench_read --make MB FILE.hgr   writes nets of 2 to 9 pins and at least MB megabytes to FILE.hgr
//
// Seconds are the shortest of three readings, from the open file to the complete record; the file is then in the page
// cache. MB are 10^6 bytes of the file as it is.

#include "failure.h"

#include "io/files.h"
#include "io/formats.h"
#include "io/input.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>

using namespace kapris_cli;

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
  std::printf("| %s | %s | %.1f | %.3f | %.0f |\n", format.c_str(), name.filename().c_str(), megabytes, seconds,
              megabytes / seconds);
}

static void Make(double megabytes, const std::string &path)
{
  // A pin takes some 7.5 bytes, a net has 5.5 pins on average.
  const int nnets = static_cast<int>(megabytes * 1e6 / 41.0) + 1;
  std::mt19937 random(1);
  Hgr hgr;

  hgr.nnets = hgr.ncells = nnets;
  hgr.netptr.push_back(0);
  for (int net = 0; net < nnets; net++) {
    for (unsigned size = 2 + static_cast<unsigned>(random() % 8); size > 0; size--)
      hgr.netind.push_back(static_cast<int>(random() % static_cast<unsigned>(nnets)));
    hgr.netptr.push_back(static_cast<int>(hgr.netind.size()));
  }
  WriteFile(path, FormatHgr(hgr));
}

int main(int argc, char **argv)
{
  try {
    if (argc == 4 && std::string(argv[1]) == "--make") {
      Make(std::atof(argv[2]), argv[3]);
      return 0;
    }
    std::printf("| format | file | MB | seconds | MB/s |\n|---|---|---|---|---|\n");
    for (int i = 1; i < argc; i++)
      PrintReading(argv[i]);
    return 0;
  } catch (const Failure &failure) {
    std::fprintf(stderr, "bench_read: %s\n", failure.text.c_str());
    return 1;
  }
}
