// lib/search/sidebyside.h - independent work on as many threads as are free; private to this folder.
// SPDX-License-Identifier: MIT
#pragma once

#include "core/level.h"

#include <exception>
#include <vector>

namespace kapris::engine::KAPRIS_ENGINE
{

template <class Work>
struct SideTask {
  const Control *ctrl;
  const Work *work;
  int index;
  void *handle;
};

template <class Work>
void DoSideTask(void *argument)
{
  const SideTask<Work> *task = static_cast<SideTask<Work> *>(argument);

  (*task->work)(task->index);
  EnterPhase(task->ctrl, PHASE_END, 0);
}

// Does work(0) .. work(n - 1), the first on this thread, the others wherever a thread is free. Throws what one of them
// threw, when all have ended.
template <class Work>
void DoAll(const Control *ctrl, int n, const Work &work)
{
  const Hooks *hooks = ctrl->hooks;
  std::vector<SideTask<Work>> tasks;
  std::exception_ptr error;

  for (int i = 0; i < n; i++)
    tasks.push_back({ctrl, &work, i, nullptr});
  if (hooks->fork == nullptr || n <= 1) {
    for (int i = 0; i < n; i++)
      work(i);
    return;
  }
  std::size_t nforked = 1;
  try {
    for (; nforked < tasks.size(); nforked++)
      tasks[nforked].handle = hooks->fork(hooks->owner, DoSideTask<Work>, &tasks[nforked]);
    work(0);
  } catch (...) {
    error = std::current_exception();
  }
  // Whatever has happened: the tasks use what is on this stack.
  for (std::size_t i = 1; i < nforked; i++) {
    try {
      hooks->join(hooks->owner, tasks[i].handle);
    } catch (...) {
      if (!error)
        error = std::current_exception();
    }
  }
  if (error)
    std::rethrow_exception(error);
}

} // namespace kapris::engine::KAPRIS_ENGINE
