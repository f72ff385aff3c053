// mpi/root.h - rank 0: hands out the starts of a call and takes what they give.
// SPDX-License-Identifier: MIT
#pragma once

#include "islands.h"

#include "solve/solve.h"

#include <map>
#include <set>

namespace kapris_mpi
{

// Why the starts end early.
enum class Cut { NONE, SIGNAL, TIME, MEMORY };

// The library in this process asks for one start after the other and compares them: rank 0 answers as it gets them from
// the ranks, in their order. So the answer is that of one process. While the library waits, rank 0 serves the others.
class Root
{
public:
  Root(Link *link, const kapris_cli::LibraryCall &call);
  ~Root();
  Root(const Root &) = delete;
  Root &operator=(const Root &) = delete;

  kapris::Result Run();

private:
  // A rank as this one sees it.
  struct Rank {
    int nfree = 0;
    Clock::time_point heard = Clock::now();
    std::string copy; // the best partition that its search has told of, or empty
  };

  kapris::Options OptionsForLibrary();
  void ShowProgress(kapris::Progress progress);

  // The starts in their order.
  bool Recall(kapris::Start *start, std::span<int> part);
  bool Await(kapris::Start *start, std::span<int> part);
  Finished Stand(int number);
  std::string PartWithoutWork();

  // Messages.
  void Begin();
  void Turn();
  void Handle(int rank, Tag tag, std::string bytes);
  void TakeFinished(Finished finished);
  void TakeFault(int rank, const Fault &fault);
  void TellAll(Tag tag);

  // Handing out.
  bool IsKnown(int number) const;
  std::optional<int> NextStart();
  void HandOut();
  void HandOutTo(int rank);

  // The end.
  void LookAtClock();
  void LookForLost();
  void CutShort(Cut reason, double grace);
  void Complete(kapris::Result *result) const;

  Link *link;
  const kapris_cli::LibraryCall *call;
  Job job;
  std::unique_ptr<Worker> worker;
  std::unique_ptr<Sender> sender;
  std::vector<Rank> ranks;
  Clock::time_point began = Clock::now(), spoke = began;
  Pause pause;

  int next, end;                 // starts that have not been handed out yet
  std::set<int> again;           // those of ranks that were lost
  std::map<int, int> makers;     // the ranks of those that are being made
  std::map<int, Finished> ready; // those that the library has not asked for yet
  int ntaken = 0;                // those that it has
  std::vector<Finished> told;    // what all have told but their partitions, in their order

  Cut cut = Cut::NONE;
  Clock::time_point grace;    // until then there may come more
  std::string shortage;       // with Cut::MEMORY
  kapris::Status shortstatus; // the same
  std::atomic<int> over = 0;  // the library has had all

  std::mutex lock; // for what follows, which the worker's threads read
  int ndone = 0;
  std::int64_t best = -1;
};

} // namespace kapris_mpi
