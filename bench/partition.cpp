// bench/partition.cpp - one run of an entry point on one file, with its figures as a line of CSV:
//   cells,nets,pins,reported,cut,soed,imbalance,cpu,wall,peakmb,wrongcuts
// SPDX-License-Identifier: MIT
//
// usage: bench_partition recursive|kway-cut|kway-soed FILE.hgr NPARTS UBFACTOR SEED
// cut, soed and imbalance are recomputed from the part vector; wrongcuts counts what the library reports itself.

#include "failure.h"
#include "kapris.h"

#include "io/files.h"
#include "io/hgr.h"
#include "measure/measures.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/resource.h>
#include <unistd.h>

static double CpuSeconds(const rusage &usage)
{
  return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
         static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) * 1e-6;
}

static rusage Usage()
{
  rusage usage;

  getrusage(RUSAGE_SELF, &usage);
  return usage;
}

// Lines that the library printed while standard output went to the file.
static int CountLines(std::FILE *file)
{
  int n = 0;

  std::rewind(file);
  for (int c; (c = std::fgetc(file)) != EOF;)
    n += c == '\n';
  return n;
}

static int Run(char **argv)
{
  using namespace kapris_cli;
  const std::string scheme = argv[1], name = argv[2];
  const int nparts = std::atoi(argv[3]), ubfactor = std::atoi(argv[4]), seed = std::atoi(argv[5]);
  const int rtype = scheme == "kway-soed" ? 2 : 1;
  const int options[9] = {1, 10, 1, rtype, 1, 0, 0, seed, 0};
  const Hgr hgr = ReadHgr(name, OpenText(name).bytes);
  const auto pointer = [](const std::vector<int> &x) { return x.empty() ? nullptr : x.data(); };
  std::vector<int> part(static_cast<std::size_t>(hgr.ncells));
  int reported = -1;

  // What the library prints, which should be nothing, goes to a scratch file.
  std::FILE *printed = std::tmpfile();
  const int saved = dup(STDOUT_FILENO);
  if (printed == nullptr || saved == -1 || dup2(fileno(printed), STDOUT_FILENO) == -1)
    return 1;
  const auto start = std::chrono::steady_clock::now();
  const double cpu = CpuSeconds(Usage());
  const auto entry = scheme == "recursive" ? KAPRIS_PartRecursive : KAPRIS_PartKway;
  entry(hgr.ncells, hgr.nnets, pointer(hgr.cellwgts), hgr.netptr.data(), hgr.netind.data(),
        pointer(hgr.netwgts), nparts, ubfactor, options, part.data(), &reported);
  const rusage usage = Usage();
  const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
  std::fflush(stdout);
  dup2(saved, STDOUT_FILENO);

  const Measures measures = Measure(hgr, part);
  std::printf("%d,%d,%zu,%d,%lld,%lld,%.4f,%.2f,%.2f,%.1f,%d\n", hgr.ncells, hgr.nnets, hgr.netind.size(),
              reported, measures.cut, measures.soed, Imbalance(measures, nparts), CpuSeconds(usage) - cpu,
              wall.count(), static_cast<double>(usage.ru_maxrss) / 1024.0, CountLines(printed));
  return 0;
}

int main(int argc, char **argv)
{
  if (argc != 6) {
    std::fprintf(stderr, "usage: bench_partition recursive|kway-cut|kway-soed FILE NPARTS UBFACTOR SEED\n");
    return 2;
  }
  try {
    return Run(argv);
  } catch (const kapris_cli::Failure &failure) {
    std::fprintf(stderr, "bench_partition: %s\n", failure.text.c_str());
    return 1;
  }
}
