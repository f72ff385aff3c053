// mpi/link.cpp - messages between the ranks.
// SPDX-License-Identifier: MIT
//
// Nothing here waits for a rank but Broadcast and the end: an MPI that waits turns in circles, and a rank that is gone
// never answers.

#include "link.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <mpi.h>
#include <thread>

namespace kapris_mpi
{

// Counts are of 31 bits: messages go in words of this type.
static const MPI_Datatype WORD = MPI_UINT64_T;
static constexpr std::size_t WORD_BYTES = 8;
static constexpr std::size_t PIECE_BYTES = std::size_t{1} << 30;

struct Sending {
  std::string bytes;
  MPI_Request request;
};

Link::Link(int *argc, char ***argv) : rank(0), nranks(1), lost(), sendings()
{
  int provided = 0;

  MPI_Init_thread(argc, argv, MPI_THREAD_FUNNELED, &provided);
  MPI_Comm_set_errhandler(MPI_COMM_WORLD, MPI_ERRORS_RETURN);
  MPI_Comm_rank(MPI_COMM_WORLD, &rank);
  MPI_Comm_size(MPI_COMM_WORLD, &nranks);
}

Link::~Link()
{
  if (whole)
    MPI_Finalize();
}

static void DropSent(Link *link)
{
  link->sendings.remove_if([](const std::unique_ptr<Sending> &sending) {
    int done = 0;
    return MPI_Test(&sending->request, &done, MPI_STATUS_IGNORE) != MPI_SUCCESS || done != 0;
  });
}

void Send(Link *link, int rank, Tag tag, std::string bytes)
{
  auto sending = std::make_unique<Sending>();

  sending->bytes = std::move(bytes);
  sending->bytes.resize((sending->bytes.size() + WORD_BYTES - 1) / WORD_BYTES * WORD_BYTES);
  const int count = static_cast<int>(sending->bytes.size() / WORD_BYTES);
  if (MPI_Isend(sending->bytes.data(), count, WORD, rank, static_cast<int>(tag), MPI_COMM_WORLD,
                &sending->request) == MPI_SUCCESS)
    link->sendings.push_back(std::move(sending));
}

void Flush(Link *link, double seconds)
{
  const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);

  for (DropSent(link); !link->sendings.empty() && std::chrono::steady_clock::now() < end; DropSent(link))
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

std::optional<Message> Receive(Link *link)
{
  int found = 0, count = 0;
  MPI_Status status;

  DropSent(link);
  if (MPI_Iprobe(MPI_ANY_SOURCE, MPI_ANY_TAG, MPI_COMM_WORLD, &found, &status) != MPI_SUCCESS || found == 0)
    return std::nullopt;
  MPI_Get_count(&status, WORD, &count);
  Message message = {status.MPI_SOURCE, static_cast<Tag>(status.MPI_TAG),
                     std::string(WORD_BYTES * static_cast<std::size_t>(count), '\0')};
  if (MPI_Recv(message.bytes.data(), count, WORD, status.MPI_SOURCE, status.MPI_TAG, MPI_COMM_WORLD,
               MPI_STATUS_IGNORE) != MPI_SUCCESS)
    return std::nullopt;
  return message;
}

void Broadcast(Link *, void *data, std::size_t size)
{
  for (std::size_t at = 0; at < size; at += PIECE_BYTES)
    MPI_Bcast(static_cast<char *>(data) + at, static_cast<int>(std::min(PIECE_BYTES, size - at)), MPI_BYTE, 0,
              MPI_COMM_WORLD);
}

} // namespace kapris_mpi
