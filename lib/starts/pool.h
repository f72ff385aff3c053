// lib/starts/pool.h - the threads of one call; for this folder and the safe interface.
// SPDX-License-Identifier: MIT
//
// Whoever waits for a task that no thread has taken yet does it itself, so waiting never blocks for want of a thread
// and a pool without threads does everything in order. A thread that does so keeps its random sequence.
#pragma once

#include "base/memory.h"
#include "base/output.h"

namespace kapris::engine::safe
{

using namespace base;

struct TaskPool;
struct Task;

// nthreads - 1 threads besides the calling one; fewer if the system gives no more. They use ledger and sink.
TaskPool *StartPool(int nthreads, Ledger *ledger, TraceSink sink);
// Waits for the threads; no task may be left.
void StopPool(TaskPool *pool);

Task *ForkTask(TaskPool *pool, void (*work)(void *argument), void *argument);
// Returns when the task is done, and throws what it threw.
void JoinTask(TaskPool *pool, Task *task);

} // namespace kapris::engine::safe
