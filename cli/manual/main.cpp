// cli/manual/main.cpp - kapris_manual COMMAND OUTDIR DATE: writes manual pages and completions, for the build.
// SPDX-License-Identifier: MIT
//
// Of our own, as it knows what the parser knows: help2man has but the text of --help, and neither it nor scdoc gives
// completions. The folders below OUTDIR are those below share in an installation. The same sources and date give the
// same files.

#include "libraries.h"

#include "formats/failure.h"
#include "formats/output.h"
#include "manual/table.h"
#include "solve/solve.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fmt/format.h>
#include <string>
#include <string_view>

using namespace kapris_cli;

static void Write(const std::filesystem::path &path, const std::string &text)
{
  std::filesystem::create_directories(path.parent_path());
  WriteFile(path.string(), text);
}

namespace
{

struct Pages {
  std::filesystem::path folder;
  std::string version;
  std::string date;
};

} // namespace

static void WritePages(const Pages &pages, const Command &root, const Command *parent, const Command &command)
{
  std::string name = command.name;
  std::replace(name.begin(), name.end(), ' ', '-');

  Write(pages.folder / (name + ".1"), ManualPage(root, parent, command, pages.version, pages.date));
  for (const Command &verb : command.verbs)
    WritePages(pages, root, &command, verb);
}

// Nobody runs it.
static void DescribeMpi(CLI::App *app, Run *run, ColorWhen *color)
{
  DescribeMpiCommand(app, run, color, {});
}

int main(int argc, char **argv)
{
  try {
    if (argc != 4)
      throw Failure{EXIT_USAGE, "usage: kapris_manual kapris|kapris-mpi OUTDIR DATE"};
    const bool mpi = std::string_view(argv[1]) == "kapris-mpi";
    const std::filesystem::path out = argv[2];
    const auto [root, version] = ReadDescription(mpi ? DescribeMpi : DescribeCommand);
    WritePages({out / "man/man1", version.substr(0, version.find('\n')), argv[3]}, root, nullptr, root);
    Write(out / "bash-completion/completions" / root.word, BashCompletion(root));
    Write(out / "zsh/site-functions" / ("_" + root.word), ZshCompletion(root));
    Write(out / "fish/vendor_completions.d" / (root.word + ".fish"), FishCompletion(root));
    return EXIT_DONE;
  } catch (const Failure &failure) {
    fmt::print(stderr, "kapris_manual: {}\n", failure.text);
    return failure.status;
  } catch (const std::exception &error) {
    fmt::print(stderr, "kapris_manual: {}\n", error.what());
    return EXIT_INTERNAL;
  }
}
