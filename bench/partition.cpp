// bench/partition.cpp - one run of an entry point on one file, with its figures as a line of CSV:
//   cells,nets,pins,reported,cut,soed,imbalance,cpu,wall,peakmb,wrongcuts,hash
// SPDX-License-Identifier: MIT
//
// usage: bench_partition recursive|kway-cut|kway-soed FILE.hgr NPARTS UBFACTOR SEED [OPTION=NUMBER...]
// cut, soed and imbalance are recomputed from the part vector; wrongcuts counts what the library reports itself; hash
// names the part vector.

#include "kapris.h"

#include "formats/failure.h"
#include "formats/files.h"
#include "formats/hash.h"
#include "formats/hgr.h"
#include "measure/measures.h"

#include <charconv>
#include <chrono>
#include <cinttypes>
#include <climits>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <string>
#include <string_view>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

using kapris_formats::Failure;

// The library's clock, by which a k-way call seeds its initial partition: it stands still, so that runs repeat.
extern "C" std::time_t time(std::time_t *now) noexcept
{
  constexpr std::time_t fixed = 1'000'000'007;

  if (now != nullptr)
    *now = fixed;
  return fixed;
}

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

// Of this program alone: what getrusage tells begins with the peak of the process that started it.
static double PeakMegabytes()
{
  std::ifstream status("/proc/self/status");
  double kilobytes = 0;

  for (std::string word; status >> word;) {
    if (word == "VmHWM:" && status >> kilobytes)
      return kilobytes / 1024.0;
  }
  throw Failure{kapris_formats::EXIT_INTERNAL, "cannot read the peak memory from /proc/self/status"};
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

static int ParseInt(const char *name, std::string_view text)
{
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);

  if (error != std::errc() || end != text.data() + text.size())
    throw Failure{kapris_formats::EXIT_USAGE,
                  std::string(name) + " is '" + std::string(text) + "', not an integer"};
  return value;
}

// "nruns=2": sets the entry of the option vector that has this name.
static void SetOption(std::string_view text, int *options)
{
  static const struct {
    const char *name;
    int index;
  } known[] = {{"nruns", 1}, {"ctype", 2}, {"rtype", 3}, {"vcycle", 4}, {"reconst", 5}};
  const std::size_t sign = text.find('=');

  for (const auto &[name, index] : known) {
    if (sign != text.npos && text.substr(0, sign) == name) {
      options[index] = ParseInt(name, text.substr(sign + 1));
      return;
    }
  }
  throw Failure{kapris_formats::EXIT_USAGE,
                "'" + std::string(text) +
                    "' is not one of nruns=N, ctype=N, rtype=N, vcycle=N and reconst=N"};
}

// As the entry points take them.
static std::vector<int> Narrow(const std::string &name, const std::vector<std::int64_t> &weights)
{
  for (const std::int64_t weight : weights)
    if (weight > INT_MAX)
      throw Failure{kapris_formats::EXIT_MALFORMED,
                    name + ": a weight of " + std::to_string(weight) + " leaves 32 bits"};
  return {weights.begin(), weights.end()};
}

static int Run(int argc, char **argv)
{
  using namespace kapris_formats;
  using namespace kapris_report;
  const std::string scheme = argv[1], name = argv[2];
  const int nparts = ParseInt("NPARTS", argv[3]), ubfactor = ParseInt("UBFACTOR", argv[4]);
  const int rtype = scheme == "kway-soed" ? 2 : 1;
  int options[9] = {1, 10, 1, rtype, 1, 0, 0, ParseInt("SEED", argv[5]), 0};
  if (scheme != "recursive" && scheme != "kway-cut" && scheme != "kway-soed")
    throw Failure{EXIT_USAGE, "'" + scheme + "' is not recursive, kway-cut or kway-soed"};
  for (int i = 6; i < argc; i++)
    SetOption(argv[i], options);
  const Hgr hgr = ReadHgr(name, OpenText(name).bytes);
  const std::vector<int> cellwgts = Narrow(name, hgr.cellwgts), netwgts = Narrow(name, hgr.netwgts);
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
  entry(hgr.ncells, hgr.nnets, pointer(cellwgts), hgr.netptr.data(), hgr.netind.data(), pointer(netwgts),
        nparts, ubfactor, options, part.data(), &reported);
  const double cpuend = CpuSeconds(Usage());
  const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
  const double peak = PeakMegabytes();
  std::fflush(stdout);
  dup2(saved, STDOUT_FILENO);

  const Measures measures = Measure(name, hgr, part);
  std::printf("%d,%d,%zu,%d,%" PRId64 ",%" PRId64 ",%.4f,%.4f,%.4f,%.1f,%d,%s\n", hgr.ncells, hgr.nnets,
              hgr.netind.size(), reported, measures.cut, measures.soed, Imbalance(measures, nparts),
              cpuend - cpu, wall.count(), peak, CountLines(printed), HashOf(part).c_str());
  return 0;
}

int main(int argc, char **argv)
{
  if (argc < 6) {
    std::fprintf(stderr, "usage: bench_partition recursive|kway-cut|kway-soed FILE NPARTS UBFACTOR SEED "
                         "[OPTION=NUMBER...]\n");
    return 2;
  }
  try {
    return Run(argc, argv);
  } catch (const Failure &failure) {
    std::fprintf(stderr, "bench_partition: %s\n", failure.text.c_str());
    return failure.status;
  }
}
