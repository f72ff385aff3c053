// mpi/others.cpp - the ranks but rank 0: they make the starts that it hands out.
// SPDX-License-Identifier: MIT

#include "islands.h"
#include "ranks.h"

#include "solve/interrupt.h"

#include <stdexcept>
#include <thread>

namespace kapris_mpi
{

// How many times its patience a rank waits for rank 0 while that reads or writes files and cannot say so.
static constexpr double FILE_PATIENCES = 20.0;

// What a rank does between the job and the end.
class Other
{
public:
  Other(Link *given, const Job *taken, std::atomic<int> *flag)
      : link(given), job(taken), worker(taken), sender(given, &worker), interrupted(flag)
  {
  }

  void Serve()
  {
    while (!over)
      Turn();
  }

private:
  void Turn();
  void Handle(Message message);
  void Tell(Tag tag, std::string bytes = {});

  Link *link;
  const Job *job;
  Worker worker;
  Sender sender;
  std::atomic<int> *interrupted;
  bool told = false; // of the interrupt
  bool over = false;
  Clock::time_point spoke = Clock::now(), heard = Clock::now();
  Pause pause;
};

void Other::Tell(Tag tag, std::string bytes)
{
  Send(link, 0, tag, std::move(bytes));
  spoke = Clock::now();
}

void Other::Handle(Message message)
{
  if (message.rank == 0)
    heard = Clock::now();
  switch (message.tag) {
  case Tag::WORK:
    worker.Begin(RecordOf<Work>(message.bytes));
    break;
  case Tag::VISITOR:
    worker.AddVisitor(std::move(message.bytes));
    break;
  case Tag::STOP:
    worker.Cancel();
    break;
  case Tag::END:
    over = true;
    break;
  default:
    break;
  }
}

void Other::Turn()
{
  bool something = false;

  while (std::optional<Report> report = worker.TakeReport()) {
    Tell(report->tag, std::move(report->bytes));
    something = true;
  }
  while (std::optional<Message> message = Receive(link)) {
    something = something || CallsForMore(message->tag);
    Handle(std::move(*message));
  }
  if (*interrupted != 0 && !told) {
    told = true;
    worker.Cancel();
    Tell(Tag::INTERRUPTED);
  }
  sender.Send();
  if (SecondsSince(spoke) > ALIVE_INTERVAL)
    Tell(Tag::ALIVE);
  if (SecondsSince(heard) > job->patience)
    throw std::runtime_error("rank 0 is silent");
  pause.Note(something);
  if (!over)
    worker.Wait(pause.seconds);
}

// From rank 0 while it reads or writes files. What others send meanwhile is of no use.
static Message AwaitRankZero(Link *link)
{
  const Clock::time_point began = Clock::now();

  for (Pause pause; SecondsSince(began) < FILE_PATIENCES * Patience(); pause.Note(false)) {
    std::optional<Message> message = Receive(link);
    if (message && message->rank == 0 && message->tag != Tag::VISITOR)
      return std::move(*message);
    if (!message)
      std::this_thread::sleep_for(std::chrono::duration<double>(pause.seconds));
  }
  throw std::runtime_error("rank 0 is silent");
}

static void MakeStarts(Link *link, const Message &message)
{
  const double before = MessageSeconds();
  const std::unique_ptr<Job> job = TakeJob(link, message);
  Other(link, job.get(), kapris_cli::CatchInterrupts()).Serve();
  if (job->options.log)
    job->options.log(MessageShare(link, before));
}

void ServeRankZero(Link *link)
{
  const Message message = AwaitRankZero(link);

  if (message.tag == Tag::JOB)
    MakeStarts(link, message);
  Send(link, 0, Tag::DONE);
  Message last = AwaitRankZero(link);
  while (last.tag != Tag::LEAVE)
    last = AwaitRankZero(link);
  link->whole = RecordOf<Farewell>(last.bytes).together;
}

} // namespace kapris_mpi
