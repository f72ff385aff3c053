// mpi/link.h - messages between the ranks; the one place that knows MPI.
// SPDX-License-Identifier: MIT
#pragma once

#include <list>
#include <memory>
#include <optional>
#include <set>
#include <string>

namespace kapris_mpi
{

enum class Tag : int {
  JOB,         // from rank 0: what all work on; the arrays follow by Broadcast
  READY,       // to rank 0: so many threads have nothing to do
  WORK,        // from rank 0: a start
  FINISHED,    // to rank 0: what a start came to
  FAILED,      // to rank 0: a start ended with an error
  VISITOR,     // to any rank: a partition that its search may go on with
  COPY,        // to rank 0: the best partition of a rank, should it be lost
  STOP,        // from rank 0: starts end with what they have
  INTERRUPTED, // to rank 0: a signal asks for the end
  ALIVE,       // between rank 0 and others that have nothing else to say
  END,         // from rank 0: there is no more to do
  DONE,        // to rank 0: the answer
  LEAVE        // from rank 0: all are there to end together, or not
};

struct Message {
  int rank; // it comes from
  Tag tag;
  std::string bytes; // up to 7 more than were sent
};

struct Sending; // a message under way

// Whether more is likely to follow at once; other messages come at any time.
inline bool CallsForMore(Tag tag)
{
  return tag != Tag::VISITOR && tag != Tag::COPY && tag != Tag::ALIVE;
}

struct Link {
  int rank, nranks;
  bool dismissed = false; // the others know that there is no more to do
  bool whole = false;     // all ranks are there to end MPI together
  std::set<int> lost;     // ranks that have been silent for too long
  std::list<std::unique_ptr<Sending>> sendings;

  // Starts MPI, and ends it if the link is whole: the ranks wait for each other there, for ever for one that is gone.
  // Only the thread that has made the link uses it.
  Link(int *argc, char ***argv);
  ~Link();
  Link(const Link &) = delete;
  Link &operator=(const Link &) = delete;
};

// Returns at once. A message that cannot reach its rank is lost; whoever misses a rank learns it by its silence.
void Send(Link *link, int rank, Tag tag, std::string bytes = {});

// Until all messages have left, or so many seconds.
void Flush(Link *link, double seconds);

// The next message, if there is one.
std::optional<Message> Receive(Link *link);

// On all ranks at the same point: the bytes of rank 0 for the others.
void Broadcast(Link *link, void *data, std::size_t size);

// How long to wait before another look for messages: a small part of the time in which none has come.
struct Pause {
  double seconds = SHORTEST;

  static constexpr double SHORTEST = 2e-4, LONGEST = 5e-2, GROWTH = 1.05;
  void Note(bool something)
  {
    seconds = something ? SHORTEST : seconds < LONGEST ? GROWTH * seconds : LONGEST;
  }
};

} // namespace kapris_mpi
