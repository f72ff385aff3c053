// fuzz/command.cpp - the whole command with any arguments, one per line: a documented exit status other than that of an
// internal failure, no temporary file left, and no input changed by a verb that only reads.
// SPDX-License-Identifier: MIT
//
// It runs in a scratch folder. Arguments cannot leave it, as '/' becomes '_', and cannot ask for much, as numbers of
// three to ten digits are cut to two.

#include "fuzz.h"

#include "formats/failure.h"

#include <cctype>
#include <filesystem>
#include <fstream>
#include <map>
#include <unistd.h>

int kapris_main(int argc, char **argv);

using namespace kapris_formats;

static std::map<std::string, std::string> inputs = {
    {"h.hgr", "5 6 11\n1 1 2 3\n2 3 4\n1 4 5 6\n9 1 6\n1 2 5\n2\n1\n1\n1\n3\n1\n"},
    {"p.patoh", "1 6 5 12 3\n1 1 2 3\n2 3 4\n1 4 5 6\n9 1 6\n1 2 5\n2 1 1\n1 3 1\n"},
    {"m.mtx", "%%MatrixMarket matrix coordinate real symmetric\n5 5 3\n1 1 1\n2 1 -2.5\n4 3 1\n"},
    {"f.cnf", "p cnf 6 3\n1 -2 3 0\n3 4 0 -4 -5\n6 0\n"},
    {"part", "0\n0\n0\n1\n1\n1\n"},
    {"fixed", "-1\n0\n-1\n-1\n-1\n1\n"},
    {"weights", "3 1\n"},
    {"bad.hgr", "2 3\n1 2\n2 4\n"},
    {"big.hgr", "2 3 11\n1099511627776 1 2\n1099511627777 2 3\n1099511627778\n1\n1099511627779\n"},
};

static void Refill()
{
  for (const auto &entry : std::filesystem::directory_iterator("."))
    std::filesystem::remove_all(entry.path());
  for (const auto &[name, text] : inputs)
    std::ofstream(name, std::ios::binary) << text;
  // Each run reads standard input from its beginning.
  Expect(std::freopen("h.hgr", "r", stdin) != nullptr ? "" : "no standard input");
}

static std::string ContentsOf(const std::string &path)
{
  std::ifstream stream(path, std::ios::binary);

  return {std::istreambuf_iterator<char>(stream), {}};
}

static int Run(std::vector<std::string> args)
{
  std::vector<char *> argv;

  for (std::string &arg : args)
    argv.push_back(arg.data());
  argv.push_back(nullptr);
  return kapris_main(static_cast<int>(args.size()), argv.data());
}

// Ends with the program.
struct Scratch {
  std::filesystem::path folder;

  Scratch()
  {
    std::string name = std::filesystem::temp_directory_path() / "kapris-fuzz-XXXXXX";
    Expect(mkdtemp(name.data()) != nullptr ? "" : "no scratch folder");
    folder = name;
    std::filesystem::current_path(folder);
    Expect(std::freopen("/dev/null", "w", stdout) != nullptr ? "" : "no /dev/null");
    // A result for the verb best, which names its part file.
    Refill();
    Run({"kapris", "partition", "h.hgr", "-k", "2", "-o", "r.part", "--json=r.json"});
    for (const char *made : {"r.part", "r.json"})
      inputs[made] = ContentsOf(made);
  }

  ~Scratch()
  {
    std::filesystem::current_path("/");
    std::filesystem::remove_all(folder);
  }

  Scratch(const Scratch &) = delete;
  Scratch &operator=(const Scratch &) = delete;
};

static std::vector<std::string> DecodeArguments(const std::uint8_t *data, std::size_t size)
{
  std::vector<std::string> args = {"kapris"};
  std::string digits;
  const auto put = [&](char c) {
    args.back() += digits.size() >= 3 && digits.size() <= 10 ? digits.substr(0, 2) : digits;
    digits.clear();
    if (c == '\n')
      args.emplace_back();
    else
      args.back() += c == '/' ? '_' : c;
  };

  args.emplace_back();
  for (std::size_t i = 0; i < size && data[i] != 0 && args.size() < 40; i++)
    if (std::isdigit(data[i]))
      digits += static_cast<char>(data[i]);
    else
      put(static_cast<char>(data[i]));
  put('\n');
  args.pop_back();
  return args;
}

static std::string FlawOf(int status, const std::string &verb)
{
  if (status < EXIT_USAGE && status != EXIT_DONE)
    return "status " + std::to_string(status);
  if (status > EXIT_FILES)
    return "status " + std::to_string(status);
  for (const auto &entry : std::filesystem::directory_iterator("."))
    if (entry.path().filename().string().starts_with(".kapris-"))
      return "a temporary file is left";
  // What fails leaves everything as it was; a part above its limit is no failure.
  const bool failed = status != EXIT_DONE && status != EXIT_OVER_LIMIT;
  if (failed || verb == "check")
    for (const auto &[name, text] : inputs)
      if (ContentsOf(name) != text)
        return name + " has changed";
  return "";
}

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
  static const Scratch scratch;
  const std::vector<std::string> args = DecodeArguments(data, size);

  Refill();
  const int status = Run(args);
  Expect(FlawOf(status, args.size() > 1 ? args[1] : ""));
  return 0;
}
