// lib/starts/pool.cpp - the threads of one call.
// SPDX-License-Identifier: MIT

#include "pool.h"

#include "base/random.h"

#include <condition_variable>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace kapris::engine::safe
{

struct Task {
  void (*work)(void *argument);
  void *argument;
  bool done;
  std::exception_ptr error;
};

struct TaskPool {
  Ledger *ledger;
  TraceSink sink;
  std::mutex lock;
  std::condition_variable changed; // a task came or was done, or the pool stops
  std::deque<Task *> waiting;      // tasks that nobody has taken
  bool stopping;
  std::vector<std::thread> threads;
};

static void DoTask(TaskPool *pool, Task *task)
{
  try {
    task->work(task->argument);
  } catch (...) {
    task->error = std::current_exception();
  }
  const std::lock_guard<std::mutex> guard(pool->lock);
  task->done = true;
  pool->changed.notify_all();
}

static void ServeTasks(TaskPool *pool)
{
  UseLedger(pool->ledger);
  UseTraceSink(pool->sink);
  PushErrorHandler();

  std::unique_lock<std::mutex> guard(pool->lock);
  for (;;) {
    pool->changed.wait(guard, [&] { return pool->stopping || !pool->waiting.empty(); });
    if (pool->waiting.empty())
      return;
    Task *task = pool->waiting.front();
    pool->waiting.pop_front();
    guard.unlock();
    DoTask(pool, task);
    guard.lock();
  }
}

static void JoinThreads(TaskPool *pool)
{
  {
    const std::lock_guard<std::mutex> guard(pool->lock);
    pool->stopping = true;
    pool->changed.notify_all();
  }
  for (std::thread &thread : pool->threads)
    thread.join();
}

TaskPool *StartPool(int nthreads, Ledger *ledger, TraceSink sink)
{
  std::unique_ptr<TaskPool> pool(new TaskPool{ledger, sink, {}, {}, {}, false, {}});

  try {
    for (int t = 1; t < nthreads; t++)
      pool->threads.emplace_back(ServeTasks, pool.get());
  } catch (const std::system_error &) {
    // No more threads to be had: the call is slower, not wrong.
  } catch (...) {
    JoinThreads(pool.get());
    throw;
  }
  return pool.release();
}

void StopPool(TaskPool *pool)
{
  JoinThreads(pool);
  delete pool;
}

Task *ForkTask(TaskPool *pool, void (*work)(void *argument), void *argument)
{
  std::unique_ptr<Task> task(new Task{work, argument, false, nullptr});
  const std::lock_guard<std::mutex> guard(pool->lock);

  pool->waiting.push_back(task.get());
  pool->changed.notify_one();
  return task.release();
}

// Takes the task from the queue; false when another thread has it.
static bool TakeBack(TaskPool *pool, Task *task)
{
  const std::lock_guard<std::mutex> guard(pool->lock);

  for (auto it = pool->waiting.begin(); it != pool->waiting.end(); ++it) {
    if (*it == task) {
      pool->waiting.erase(it);
      return true;
    }
  }
  return false;
}

void JoinTask(TaskPool *pool, Task *task)
{
  const std::unique_ptr<Task> owner(task);

  if (TakeBack(pool, task)) {
    const RandomState saved = SaveRandom();
    DoTask(pool, task);
    RestoreRandom(&saved);
  } else {
    std::unique_lock<std::mutex> guard(pool->lock);
    pool->changed.wait(guard, [&] { return task->done; });
  }
  if (task->error)
    std::rethrow_exception(task->error);
}

} // namespace kapris::engine::safe
