// mpi/root.cpp - rank 0: the starts in their order, and how a run ends.
// SPDX-License-Identifier: MIT

#include "root.h"

#include "ranks.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <ctime>
#include <fmt/core.h>
#include <thread>
#include <utility>

namespace kapris_mpi
{

// After a signal there is little time: MPI kills what has not ended a second or two later.
static constexpr double SIGNAL_GRACE = 0.5;
// For the last message to those that are still there.
static constexpr double FLUSH_SECONDS = 1.0;

Root::Root(Link *given, const kapris_cli::LibraryCall &asked)
    : link(given), call(&asked), job(), ranks(static_cast<std::size_t>(given->nranks)),
      next(asked.options.first_start), end(asked.options.first_start + asked.options.starts),
      shortstatus(KAPRIS_OK)
{
  kapris::Options &options = job.options;

  job.hypergraph = call->hypergraph;
  job.targets = call->targets;
  options = call->options;
  if (options.seed.value_or(-1) < 0)
    options.seed = static_cast<int>(std::time(nullptr) & INT_MAX);
  options.completed = {};
  options.recall = {};
  options.time_limit.reset();
  if (options.progress)
    options.progress = [this](const kapris::Progress &progress) { ShowProgress(progress); };
  job.islands = call->options.time_limit && options.members > 0;
  job.patience = Patience();
}

Root::~Root()
{
  DismissOthers(link);
}

kapris::Options Root::OptionsForLibrary()
{
  kapris::Options options = job.options;

  options.threads = 1;
  options.records = false;
  options.progress = {};
  options.log = {};
  options.cancel = &over;
  options.recall = [this](kapris::Start *start, std::span<int> part) { return Recall(start, part); };
  return options;
}

kapris::Result Root::Run()
{
  kapris::Result result = kapris::Partition(job.hypergraph, job.targets, OptionsForLibrary());

  Complete(&result);
  return result;
}

// The worker's threads tell of one start each; starts_done and the best are those of all ranks.
void Root::ShowProgress(kapris::Progress progress)
{
  const std::lock_guard<std::mutex> guard(lock);
  const double limit = job.islands ? call->options.time_limit->count() : 0.0;

  progress.seconds = SecondsSince(began);
  progress.done =
      job.islands ? std::min(1.0, progress.seconds / limit) : (ndone + progress.done) / call->options.starts;
  progress.starts = call->options.starts;
  progress.starts_done = ndone;
  if (best >= 0 && (progress.best < 0 || best < progress.best))
    progress.best = best;
  call->options.progress(progress);
}

// ----------------------------------------------------------------------------------------------------------
// The starts in their order

// From the journal, or as the ranks give them.
bool Root::Recall(kapris::Start *start, std::span<int> part)
{
  const int number = start->number;

  if (!worker)
    Begin();
  if (call->options.recall && call->options.recall(start, part)) {
    told.emplace_back();
    const std::lock_guard<std::mutex> guard(lock);
    ndone++;
  } else if (!Await(start, part)) {
    over = 1;
    return false;
  }
  ntaken++;
  // A cut-off run ends with the last start that has begun.
  if (cut != Cut::NONE && number + 1 >= next)
    over = 1;
  return true;
}

// False for a start that does not begin any more.
bool Root::Await(kapris::Start *start, std::span<int> part)
{
  const int number = start->number;

  while (!ready.contains(number)) {
    if (cut != Cut::NONE && number >= next)
      return false;
    if (cut != Cut::NONE && (link->lost.contains(makers[number]) || Clock::now() > grace))
      ready[number] = Stand(number);
    else
      Turn();
  }
  Finished finished = std::move(ready.extract(number).mapped());
  const std::vector<int> made = VisitorOf(job, finished.part);
  std::copy(made.begin(), made.end(), part.begin());
  start->seconds = finished.start.seconds;
  start->completed = finished.start.completed;
  finished.part = {};
  told.push_back(std::move(finished));
  return true;
}

// For a start that was cut short and has not told of anything, or for the last time some while ago.
Finished Root::Stand(int number)
{
  const Rank &maker = ranks[static_cast<std::size_t>(makers[number])];
  Finished finished = {};

  finished.start.number = number;
  finished.start.seconds = SecondsSince(began);
  finished.part = maker.copy.empty() ? PartWithoutWork() : maker.copy;
  return finished;
}

// What a start has that is cut short as it begins. On a thread of its own: this one is in a callback of the library.
std::string Root::PartWithoutWork()
{
  std::string part;
  std::thread thread([&] {
    kapris::Options options = job.options;
    std::atomic<int> cancel = 1;
    options.cancel = &cancel;
    options.starts = 1;
    options.threads = 1;
    options.progress = {};
    part = BytesOfVisitor(job, kapris::Partition(job.hypergraph, job.targets, options).part);
  });

  thread.join();
  return part;
}

// ----------------------------------------------------------------------------------------------------------
// The end

void Root::LookAtClock()
{
  const auto &limit = call->options.time_limit;

  if (call->options.cancel != nullptr && *call->options.cancel != 0 && cut != Cut::SIGNAL)
    CutShort(Cut::SIGNAL, SIGNAL_GRACE);
  if (limit && SecondsSince(began) >= limit->count() && cut == Cut::NONE)
    CutShort(Cut::TIME, HUGE_VAL);
}

void Root::LookForLost()
{
  for (int rank = 1; rank < link->nranks; rank++) {
    Rank &silent = ranks[static_cast<std::size_t>(rank)];
    if (link->lost.contains(rank) || SecondsSince(silent.heard) <= job.patience)
      continue;
    link->lost.insert(rank);
    silent.nfree = 0;
    fmt::print(stderr, "kapris: warning: rank {} has been silent for {:g} s; the run goes on without it\n",
               rank, job.patience);
    for (const auto &[number, maker] : makers)
      if (maker == rank)
        again.insert(number);
  }
}

// Starts have at most so many seconds more to tell what they have.
void Root::CutShort(Cut reason, double seconds)
{
  cut = reason;
  grace = seconds == HUGE_VAL
              ? Clock::time_point::max()
              : Clock::now() +
                    std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
  worker->Cancel();
  TellAll(Tag::STOP);
}

static void Add(const std::vector<kapris::Trial> &trials, int start, std::vector<kapris::Trial> *all)
{
  for (kapris::Trial trial : trials) {
    trial.start = start;
    all->push_back(trial);
  }
}

// What the library does not know of starts that others have made, and why they ended.
void Root::Complete(kapris::Result *result) const
{
  int ncompleted = 0;

  for (std::size_t i = 0; i < told.size(); i++) {
    for (std::size_t phase = 0; phase < result->seconds_phase.size(); phase++)
      result->seconds_phase[phase] += told[i].seconds_phase[phase];
    result->peak_bytes = std::max<std::size_t>(result->peak_bytes, told[i].peak_bytes);
    Add(told[i].trials, static_cast<int>(i), &result->trials);
    ncompleted += result->starts[i].completed;
  }
  if (result->best_start >= 0) {
    result->levels = told[static_cast<std::size_t>(result->best_start)].levels;
    result->bisections = told[static_cast<std::size_t>(result->best_start)].bisections;
  }
  if (cut == Cut::TIME) {
    result->status = KAPRIS_TIME_LIMIT;
    result->message = "the time limit was reached; this is the best partition so far";
  } else if (cut == Cut::MEMORY) {
    result->status = shortstatus;
    result->message = fmt::format("{} after {} of {} starts; this is the best partition so far", shortage,
                                  ncompleted, call->options.starts);
  }
}

// ----------------------------------------------------------------------------------------------------------

kapris::Result RunOnRanks(Link *link, const kapris_cli::LibraryCall &call)
{
  const double before = MessageSeconds();
  kapris::Result result = Root(link, call).Run();

  if (call.options.log)
    call.options.log(MessageShare(link, before));
  return result;
}

void DismissOthers(Link *link)
{
  for (int rank = 1; rank < link->nranks && !link->dismissed; rank++)
    Send(link, rank, Tag::END);
  link->dismissed = true;
}

void LeaveTogether(Link *link)
{
  const Clock::time_point began = Clock::now();
  std::set<int> there = {0};

  DismissOthers(link);
  for (Pause pause;
       std::ssize(there) + std::ssize(link->lost) < link->nranks && SecondsSince(began) < Patience();) {
    const std::optional<Message> message = Receive(link);
    pause.Note(message.has_value());
    if (message && message->tag == Tag::DONE) {
      there.insert(message->rank);
      link->lost.erase(message->rank);
    }
    if (!message)
      std::this_thread::sleep_for(std::chrono::duration<double>(pause.seconds));
  }
  link->whole = std::ssize(there) == link->nranks;
  for (const int rank : there)
    if (rank > 0)
      Send(link, rank, Tag::LEAVE, BytesOf(Farewell{link->whole}));
  Flush(link, FLUSH_SECONDS);
}

} // namespace kapris_mpi
