// mpi/ranks.h - what rank 0 does, and what the others do.
// SPDX-License-Identifier: MIT
#pragma once

#include "link.h"

#include "solve/solve.h"

namespace kapris_mpi
{

// On rank 0: makes the starts of a call on all ranks, which have no more to do afterwards. Returns what one process
// with the same options returns.
kapris::Result RunOnRanks(Link *link, const kapris_cli::LibraryCall &call);

// On all others, until rank 0 has no more for them to do. Throws where that does not come about.
void ServeRankZero(Link *link);

// To all others: there is nothing to do.
void DismissOthers(Link *link);

// On rank 0, at the end of all. Ranks that are lost are not waited for: the link is not whole then.
void LeaveTogether(Link *link);

// Seconds of silence after which a rank counts as lost: KAPRIS_MPI_PATIENCE in the environment, or 30.
double Patience();

// CPU time of this thread, which is that of messages.
double MessageSeconds();
// A line that tells how much it is, of that of all threads.
std::string MessageShare(const Link *link, double before);

} // namespace kapris_mpi
