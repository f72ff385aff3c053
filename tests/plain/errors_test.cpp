// tests/plain/errors_test.cpp - what the entry points refuse, and what an error leaves behind.
// SPDX-License-Identifier: MIT

#include "entry.h"

#include "support/faults.h"

#include <cctype>
#include <map>
#include <sstream>

namespace
{

typedef std::vector<int> Ints;
// The arguments of a valid call of any entry, by name: a path of three cells. Without a value, NULL is passed.
struct Call : std::map<std::string, Ints> {
  // changes = names, each with its new values
  explicit Call(const std::string &changes = "")
  {
    std::istringstream words(
        "ncells 3 nnets 2 cellwgts 1 1 1 netptr 0 2 4 netind 0 1 1 2 netwgts 1 1 nparts 2 "
        "UBfactor 5 options 1 1 1 1 1 0 0 7 0 part 0 0 1 0 0 0 0 0 0 0 0 cut -1 " +
        changes);
    std::string name;

    for (std::string word; words >> word;)
      if (std::isalpha(word[0]))
        (*this)[name = word].clear();
      else
        at(name).push_back(std::stoi(word));
  }
  void Run(EntryPoint entry)
  {
    const auto n = [this](const char *name) { return at(name)[0]; };
    const auto p = [this](const char *name) { return at(name).empty() ? nullptr : at(name).data(); };

    entry(n("ncells"), n("nnets"), p("cellwgts"), p("netptr"), p("netind"), p("netwgts"), n("nparts"),
          n("UBfactor"), p("options"), p("part"), p("cut"));
  }
};

struct OptionCheck {
  const char *name; // of the argument
  std::size_t slot;
  Ints refused, accepted;
  const char *message;
};

} // namespace

TEST(errors, the_first_invalid_option_is_named)
{
  const OptionCheck nparts2 = {"nparts", 0, {1, 0, -1}, {2, 3}, "Nparts should be at least 2.\n"};
  const OptionCheck nparts1 = {"nparts", 0, {0, -1}, {2, 3}, "Nparts should be at least 1.\n"};
  const OptionCheck percent49 = {"UBfactor", 0, {50, 0}, {1, 49}, "UBfactor should be between 1 and 49.\n"};
  const OptionCheck percent5 = {"UBfactor", 0, {4, -1}, {5, 100}, "UBfactor should be greater than 5.\n"};
  const OptionCheck nruns = {"options", 1, {0, -1}, {1, 11}, "Nruns should be at least 1.\n"};
  const OptionCheck ctype = {"options", 2, {0, 6}, {1, 2, 3, 4, 5}, "Ctype should be between 1 and 5.\n"};
  const OptionCheck rtype3 = {"options", 3, {0, 4}, {1, 2, 3}, "Rtype should be between 1 and 3.\n"};
  const OptionCheck rtype2 = {"options", 3, {3, 0}, {1, 2}, "Rtype should be between 1 and 2.\n"};
  const OptionCheck vcycle = {"options", 4, {-1, 4}, {0, 1, 2, 3}, "Vcycle should be between 0 and 3.\n"};
  const OptionCheck reconst = {"options", 5, {2, -1}, {0, 1}, "Reconst should be between 0 and 1.\n"};
  const OptionCheck fixed = {"options", 6, {2, -1}, {0, 1}, "Fixed should be between 0 and 1.\n"};
  const OptionCheck ignored5 = {"options", 5, {}, {-1, 2}, ""}, ignored6 = {"options", 6, {}, {-1, 2}, ""};
  const struct {
    EntryPoint entry;
    std::vector<OptionCheck> checks; // in their order
  } families[] = {{RECURSIVE, {nparts2, percent49, nruns, ctype, rtype3, vcycle, reconst, fixed}},
                  {INTERNAL, {nparts2, percent49, nruns, ctype, rtype3, vcycle, reconst, fixed}},
                  {KWAY, {nparts2, percent5, nruns, ctype, rtype2, vcycle, ignored5, ignored6}},
                  {REFINE2, {nruns, ctype, rtype3, vcycle, ignored5, ignored6}},
                  {REFINEK, {nparts1, nruns, ctype, rtype2, vcycle, ignored5, ignored6}}};

  for (const auto &[entry, checks] : families) {
    Call wrong; // in everything from the current check on
    for (const OptionCheck &check : checks)
      wrong.at(check.name)[check.slot] = check.refused.empty() ? 0 : check.refused[0];
    for (const OptionCheck &check : checks) {
      for (int value : check.refused) {
        wrong.at(check.name)[check.slot] = value;
        EXPECT_FATAL(wrong.Run(entry), check.message);
      }
      wrong.at(check.name)[check.slot] = check.accepted[0];
      for (int value : check.accepted) {
        Call valid;
        valid.at(check.name)[check.slot] = value;
        EXPECT_FATAL(valid.Run(entry), "no error");
      }
    }
  }
}

TEST(errors, invalid_data_is_named_by_array_index_and_value)
{
  const std::string least = ", but it should be at least 0.\n",
                    most = ", but it should be at most 2147483647.\n";
  const std::string pin = ", but a pin should be at least 0 and below ncells, which is 3 (net ";
  const std::string ten = "netwgts[1] is 2: 10 x the total net weight + 1 is then 2147483651" + most;
  const std::string fix = "options 1 1 1 1 1 0 1 7 0 part ";
  const std::string net11 = "ncells 11 cellwgts nnets 1 netptr 0 11 netind 0 1 2 3 4 5 6 7 8 9 10 ";
  const struct {
    EntryPoint entry;
    std::string changes, message;
  } rows[] = {
      {RECURSIVE, "options", "options is null.\n"},
      {REFINE2, "cut", "cut is null.\n"},
      {KWAY, "part", "part is null.\n"},
      {REFINEK, "netptr", "netptr is null.\n"},
      {INTERNAL, "netind", "netind is null.\n"},
      {RECURSIVE, "ncells -1", "ncells is -1" + least},
      {KWAY, "nnets -1", "nnets is -1" + least},
      {KWAY, "netptr 1 2 4", "netptr[0] is 1, but it should be 0.\n"},
      {KWAY, "netptr 0 5 4", "netptr[2] is 4, but it should be at least netptr[1], which is 5.\n"},
      {KWAY, "netind 0 1 1 3", "netind[3] is 3" + pin + "1).\n"},
      {REFINEK, "netind -1 1 1 3", "netind[0] is -1" + pin + "0).\n"},
      {REFINE2, "cellwgts 0 -1 -2", "cellwgts[1] is -1" + least},
      {KWAY, "netwgts 0 -2", "netwgts[1] is -2" + least},
      {REFINE2, "part 0 1 2", "part[2] is 2, but it should be between 0 and 1.\n"},
      {REFINEK, "part -1 1 2", "part[0] is -1, but it should be between 0 and 1.\n"},
      {RECURSIVE, fix + "-2 0 0", "part[0] is -2, but it should be between -1 and 1.\n"},
      {INTERNAL, fix + "-1 2 0", "part[1] is 2, but it should be between -1 and 1.\n"},
      {RECURSIVE, fix + "-1 1 0", "no error"},
      {RECURSIVE, "part -9 9 9", "no error"},
      // The sums, at their largest and beyond.
      {RECURSIVE, "cellwgts 1073741822 1 0", "no error"},
      {RECURSIVE, "cellwgts 1073741822 1 1",
       "cellwgts[2] is 1: twice the total cell weight is then 2147483648" + most},
      {RECURSIVE, "netwgts 2147483645 1", "no error"},
      {REFINE2, "netwgts 2147483645 2",
       "netwgts[1] is 2: the total net weight + 1 is then 2147483648" + most},
      {KWAY, "netwgts 214748363 1", "no error"},
      {KWAY, "netwgts 214748363 2", ten},
      {REFINEK, "netwgts 214748363 2", ten},
      {RECURSIVE, "netwgts 214748363 2 nparts 64", ten},
      {RECURSIVE, "netwgts 214748363 2 nparts 65", "no error"},
      {KWAY, net11 + "netwgts 195225786 nparts 11", "no error"},
      {KWAY, net11 + "netwgts 195225787 nparts 12",
       "netwgts[0] is 195225787: the sum of net weight x min(pins, nparts) is then 2147483657" + most},
      {INTERNAL, "nnets 1 netptr 0 4 netind 0 0 0 1 netwgts 715827882", "no error"},
      {INTERNAL, "nnets 1 netptr 0 4 netind 0 0 0 1 netwgts 715827883",
       "netind[2] is 0: the weight of its cell's nets, counted per pin, is then 2147483649" + most},
  };

  for (const auto &row : rows) {
    Call call(row.changes);
    EXPECT_FATAL(call.Run(row.entry), row.message);
  }
}

TEST(errors, without_a_handler_the_message_goes_to_standard_error_and_the_process_ends_with_status_0)
{
  Call call("nparts 1");

  PopErrorHandler(); // that of all tests
  EXPECT_EXIT(call.Run(KWAY), testing::ExitedWithCode(0), testing::Eq("Nparts should be at least 2.\n\n"));
  PushErrorHandler();
}

TEST(errors, every_allocation_may_fail_and_the_next_call_is_right)
{
  long ncalls = 0;

  PushErrorHandler();
  for (EntryPoint entry : {RECURSIVE, INTERNAL, KWAY, REFINE2, REFINEK}) {
    const Call valid(entry == REFINE2 ? "" : "nparts 3 options 1 1 1 1 1 0 1 7 0 part 2 1 1");
    Call right = valid, call = valid;
    right.Run(entry);
    const std::uint64_t serial = CurrentLedger()->serial;
    const std::size_t blocks = CurrentLedger()->blocks;
    const auto attempt = [&] {
      FatalError error = {FATAL_INPUT, ""};
      try {
        call.Run(entry);
      } catch (const FatalError &caught) {
        error = caught;
      } catch (const std::bad_alloc &) { // only the internal checks use operator new
        EXPECT_GT(KAPRIS_CHECK_LEVEL, 0);
        error = {FATAL_MEMORY, "Memory allocation failed for a check"};
      }
      return error;
    };
    ncalls += FailEach(attempt, [&](const FatalError &error, long) {
      EXPECT_EQ(std::string(error.message).find("Memory allocation failed for "), 0u) << error.message;
      EXPECT_EQ(error.kind, FATAL_MEMORY);
      ReleaseLedger(serial);
      EXPECT_EQ(CurrentLedger()->blocks, blocks);
      Call next = valid;
      next.Run(entry);
      EXPECT_EQ(next.at("cut")[0], CutOf({3, {{0, 1}, {1, 2}}, {}, {}}, next.at("part")));
      EXPECT_TRUE(entry == KWAY || next == right); // the clock seeds KAPRIS_PartKway
      call = valid;
    });
    EXPECT_EQ(CurrentLedger()->blocks, blocks);
  }
  PopErrorHandler();
  std::printf("%ld calls met a failing allocation\n", ncalls);
  EXPECT_GT(ncalls, 5 * 2 * 10);
}
