// tests/cli/memory_test.cpp - the whole command with any allocation failing: status 5, or the usual one if the
// command could do without; every output absent or complete; and the next command right.
// SPDX-License-Identifier: MIT

#include "formats/failure.h"
#include "support/faults.h"

#include <algorithm>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

int kapris_main(int argc, char **argv);

using namespace kapris_formats;

static const long dense = 8; // see FailEach

struct EmptyFolder {
  std::filesystem::path folder, before = std::filesystem::current_path();

  EmptyFolder()
  {
    std::string name = std::filesystem::temp_directory_path() / "kapris-test-XXXXXX";

    if (mkdtemp(name.data()) == nullptr)
      std::abort();
    std::filesystem::current_path(folder = name);
  }

  ~EmptyFolder()
  {
    std::filesystem::current_path(before);
    std::filesystem::remove_all(folder);
  }

  EmptyFolder(const EmptyFolder &) = delete;
  EmptyFolder &operator=(const EmptyFolder &) = delete;
};

// While it lives, nothing reaches standard output or standard error.
struct Silence {
  int out = dup(STDOUT_FILENO), err = dup(STDERR_FILENO);

  Silence()
  {
    const int null = open("/dev/null", O_WRONLY);

    std::fflush(stdout);
    dup2(null, STDOUT_FILENO);
    dup2(null, STDERR_FILENO);
    close(null);
  }

  ~Silence()
  {
    std::fflush(stdout);
    dup2(out, STDOUT_FILENO);
    dup2(err, STDERR_FILENO);
    close(out);
    close(err);
  }

  Silence(const Silence &) = delete;
  Silence &operator=(const Silence &) = delete;
};

typedef std::map<std::string, std::string> Files;

static Files FilesHere()
{
  Files files;

  for (const auto &entry : std::filesystem::directory_iterator(".")) {
    std::ifstream stream(entry.path(), std::ios::binary);
    files[entry.path().filename()] = {std::istreambuf_iterator<char>(stream), {}};
  }
  return files;
}

static void Restore(const Files &files)
{
  for (const auto &[name, text] : FilesHere())
    if (files.count(name) == 0)
      std::filesystem::remove(name);
  for (const auto &[name, text] : files)
    std::ofstream(name, std::ios::binary) << text;
}

struct Command {
  int status; // without a failing allocation
  std::vector<std::string> args;
};

// A child process for what may have to end at once; in this one, a leak is seen.
static int InChild(const std::function<int()> &attempt, long n, Failing failing)
{
  const int none = 200;
  const pid_t child = fork();
  int status = 0;

  if (child == 0) {
    FailAllocation(n, failing);
    const int ended = attempt();
    _exit(StopFailing() > 0 ? ended : none);
  }
  waitpid(child, &status, 0);
  if (WIFEXITED(status) && WEXITSTATUS(status) == none)
    return -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
}

static void FailEachOf(Command command, const Files &inputs, long *ncalls)
{
  const bool forks = std::any_of(command.args.begin(), command.args.end(), [](const std::string &arg) {
    return arg.starts_with("--json") || arg == "--journal";
  });
  std::vector<char *> argv;

  command.args.insert(command.args.begin(), "kapris");
  for (std::string &arg : command.args)
    argv.push_back(arg.data());
  argv.push_back(nullptr);
  const auto attempt = [&] {
    const Silence silence;
    return kapris_main(static_cast<int>(command.args.size()), argv.data());
  };
  Restore(inputs);
  ASSERT_EQ(attempt(), command.status) << command.args[1];
  Files usual = FilesHere();
  usual.erase("journal");
  const auto check = [&](int status, long n) {
    Files files = FilesHere();
    files.erase("journal"); // ends with any start, and holds times
    ASSERT_TRUE(status == EXIT_OUT_OF_MEMORY || status == command.status) << status << ", allocation " << n;
    ASSERT_TRUE(status != command.status || files == usual) << "status " << status << ", allocation " << n;
    for (const auto &[name, text] : files)
      ASSERT_TRUE(usual.count(name) > 0 && text == usual.at(name)) << name << ", allocation " << n;
    Restore(inputs);
  };

  Restore(inputs);
  if (forks)
    for (const Failing failing : {Failing::ONCE, Failing::ONWARD})
      for (long n = 0, status = 0; (status = InChild(attempt, n, failing)) >= 0; n += 1 + n / dense) {
        check(static_cast<int>(status), n);
        ++*ncalls;
      }
  else
    *ncalls += FailEach(attempt, check, dense);
  EXPECT_EQ(attempt(), command.status);
  Files files = FilesHere();
  files.erase("journal");
  EXPECT_EQ(files, usual);
}

TEST(memory, any_allocation_of_a_command_may_fail)
{
  const Files inputs = {
      {"h.hgr", "5 6 11\n1 1 2 3\n2 3 4\n1 4 5 6\n9 1 6\n1 2 5\n2\n1\n1\n1\n3\n1\n"},
      {"f.cnf", "p cnf 6 3\n1 -2 3 0\n3 4 0 -4 -5\n6 0\n"},
      {"m.mtx", "%%MatrixMarket matrix coordinate real symmetric\n5 5 3\n1 1 1\n2 1 -2.5\n4 3 1\n"},
      {"bad.hgr", "2 3\n1 2\n2 4\n"},
      {"d.json",
       R"({"modules":{"s":{"ports":{"p":{"bits":[2]}},"cells":{"i":{"type":"T","connections":{"A":[2]}}}},)"
       R"("m":{"cells":{"u":{"type":"s","connections":{"p":[7]}},"v v":{"type":"T","connections":{"A":[7]}}},)"
       R"("netnames":{"n":{"bits":[7]}}}}})"},
      {"groups", "1 2\n"},
      {"part", "0\n0\n0\n1\n1\n1\n"},
      {"part2", "0\n0\n1\n0\n1\n1\n"},
      {"fixed", "-1\n0\n-1\n-1\n-1\n1\n"}};
  const Command commands[] = {
      {EXIT_DONE,
       {"partition", "h.hgr", "-k", "2", "-e", "0.5", "--fixed", "fixed", "--seed", "1", "-o", "a"}},
      {EXIT_DONE,
       {"refine", "h.hgr", "part", "-k", "2", "-e", "0.5", "--runs", "1", "--seed", "1", "-o", "b.gz"}},
      {EXIT_DONE,
       {"combine", "h.hgr", "part", "part2", "-k", "2", "-e", "0.5", "--fixed", "fixed", "--seed", "1", "-o",
        "b"}},
      {EXIT_DONE,
       {"partition", "h.hgr", "-k", "2", "-e", "0.5", "--starts", "2", "--seed", "1", "--journal", "journal",
        "-o", "a"}},
      {EXIT_DONE, {"eval", "h.hgr", "part", "--fixed", "fixed", "--nets", "--matrix", "--json=c"}},
      {EXIT_DONE,
       {"partition", "h.hgr", "-k", "2", "-e", "0.5", "--groups", "groups", "--names", "n", "-o", "a"}},
      {EXIT_DONE, {"convert", "m.mtx", "d.patoh.xz"}},
      {EXIT_DONE, {"convert", "d.json", "d.hgr", "--names", "n"}},
      {EXIT_DONE, {"convert", "f.cnf", "e.hgr", "--model", "dual"}},
      {EXIT_DONE,
       {"generate", "planted", "--cells", "40", "--crossing", "3", "--parts", "2", "-o", "f.hgr",
        "--partition", "g"}},
      {EXIT_DONE, {"stats", "h.hgr", "--json=h"}},
      {EXIT_MALFORMED, {"check", "bad.hgr"}},
      {EXIT_MALFORMED, {"partition", "bad.hgr", "-k", "2", "--color", "always"}},
      {EXIT_USAGE, {"partition", "h.hgr", "-k", "0"}},
      {EXIT_FILES, {"eval", "none.hgr", "part", "--color", "always"}},
      {EXIT_DONE, {"partition", "--help"}},
  };
  const EmptyFolder folder;
  long ncalls = 0;

  for (const Command &command : commands) {
    SCOPED_TRACE(command.args[0] + " " + command.args[1]);
    FailEachOf(command, inputs, &ncalls);
  }
  std::printf("%ld commands met a failing allocation\n", ncalls);
  EXPECT_GT(ncalls, 1000);
}
