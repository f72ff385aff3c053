// mpi/handout.cpp - rank 0: messages, and which rank makes which start.
// SPDX-License-Identifier: MIT

#include "ranks.h"
#include "root.h"

#include <algorithm>
#include <cmath>
#include <fmt/core.h>

namespace kapris_mpi
{

void Root::Begin()
{
  SendJob(link, job);
  worker = std::make_unique<Worker>(&job);
  sender = std::make_unique<Sender>(link, worker.get());
  for (Rank &rank : ranks)
    rank.heard = Clock::now();
}

// A look at everything that can have happened.
void Root::Turn()
{
  bool something = false;

  while (std::optional<Report> report = worker->TakeReport()) {
    Handle(0, report->tag, std::move(report->bytes));
    something = true;
  }
  while (std::optional<Message> message = Receive(link)) {
    something = something || CallsForMore(message->tag);
    Handle(message->rank, message->tag, std::move(message->bytes));
  }
  LookAtClock();
  LookForLost();
  HandOut();
  sender->Send();
  if (SecondsSince(spoke) > ALIVE_INTERVAL)
    TellAll(Tag::ALIVE);
  pause.Note(something);
  if (!something)
    worker->Wait(pause.seconds);
}

void Root::TellAll(Tag tag)
{
  for (int rank = 1; rank < link->nranks; rank++)
    if (!link->lost.contains(rank))
      Send(link, rank, tag);
  spoke = Clock::now();
}

void Root::Handle(int rank, Tag tag, std::string bytes)
{
  Rank &from = ranks[static_cast<std::size_t>(rank)];

  from.heard = Clock::now();
  link->lost.erase(rank);
  switch (tag) {
  case Tag::READY:
    from.nfree = RecordOf<Ready>(bytes).nthreads;
    break;
  case Tag::FINISHED:
    TakeFinished(RecordOf<Finished>(bytes));
    break;
  case Tag::FAILED:
    TakeFault(rank, RecordOf<Fault>(bytes));
    break;
  case Tag::VISITOR:
    worker->AddVisitor(bytes);
    from.copy = std::move(bytes);
    break;
  case Tag::COPY:
    from.copy = std::move(bytes);
    break;
  case Tag::INTERRUPTED:
    *call->options.cancel = 1;
    break;
  default:
    break;
  }
}

static std::int64_t ObjectiveOf(const kapris::Start &start, kapris_objective objective)
{
  return objective == KAPRIS_CUT ? start.cut : objective == KAPRIS_SOED ? start.soed : start.soed - start.cut;
}

void Root::TakeFinished(Finished finished)
{
  const kapris::Start start = finished.start;

  // Of a start that two ranks have made, because one seemed to be lost, both tell the same.
  if (start.number < call->options.first_start + ntaken || ready.contains(start.number))
    return;
  if (start.completed != 0 && call->options.completed)
    call->options.completed(start, VisitorOf(job, finished.part));
  again.erase(start.number);
  ready[start.number] = std::move(finished);
  const std::int64_t value = ObjectiveOf(start, job.options.objective);
  const std::lock_guard<std::mutex> guard(lock);
  ndone++;
  if (start.balanced != 0 && (best < 0 || value < best))
    best = value;
}

// A want of memory costs what was still to come, not what there is.
void Root::TakeFault(int rank, const Fault &fault)
{
  const bool memory = fault.status == KAPRIS_OUT_OF_MEMORY || fault.status == KAPRIS_MEMORY_LIMIT;
  const auto completed = [](const auto &entry) { return entry.second.start.completed != 0; };

  if (!memory || (ntaken == 0 && std::none_of(ready.begin(), ready.end(), completed)))
    throw kapris::Error(fault.status, rank == 0 ? fault.text : fmt::format("rank {}: {}", rank, fault.text));
  ready[fault.number] = Stand(fault.number);
  if (cut != Cut::NONE)
    return;
  CutShort(Cut::MEMORY, HUGE_VAL);
  shortstatus = fault.status;
  shortage = fmt::format("{} on rank {}", kapris::StatusName(fault.status), rank);
}

// ----------------------------------------------------------------------------------------------------------
// Handing out

bool Root::IsKnown(int number) const
{
  return call->journal != nullptr && call->journal->starts.contains(number);
}

std::optional<int> Root::NextStart()
{
  if (!again.empty())
    return again.extract(again.begin()).value();
  while (next < end && IsKnown(next))
    next++;
  if (next == end)
    return std::nullopt;
  return next++;
}

void Root::HandOut()
{
  for (int rank = 0; rank < link->nranks && cut == Cut::NONE; rank++)
    if (ranks[static_cast<std::size_t>(rank)].nfree > 0)
      HandOutTo(rank);
}

// A start for each free thread; where there are fewer, several threads for each.
void Root::HandOutTo(int rank)
{
  int *nfree = &ranks[static_cast<std::size_t>(rank)].nfree;
  const int left = end - next + static_cast<int>(again.size());
  const int nstarts = std::clamp(left / link->nranks, 1, *nfree);
  const double limit = job.islands ? call->options.time_limit->count() : 0.0;

  for (int i = 0; i < nstarts; i++) {
    const std::optional<int> number = NextStart();
    if (!number)
      return;
    const int nthreads = *nfree / (nstarts - i);
    const Work work = {*number, nthreads, job.islands ? std::max(1e-3, limit - SecondsSince(began)) : 0.0};
    makers[*number] = rank;
    *nfree -= nthreads;
    if (rank == 0)
      worker->Begin(work);
    else
      Send(link, rank, Tag::WORK, BytesOf(work));
  }
}

} // namespace kapris_mpi
