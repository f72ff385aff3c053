// cli/solve/interrupt.h - signals while the library runs and its result is written.
// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>

namespace kapris_cli
{

// From here to the end of the process Ctrl-C, the end of the terminal and the signals with which batch systems
// announce or ask for the end of a job (TERM, USR1, USR2, XCPU) only make *flag non-zero, however often they come:
// timeout sends two at once. Only the third Ctrl-C or a later one ends the process, two seconds after the first
// signal at the earliest.
std::atomic<int> *CatchInterrupts();

} // namespace kapris_cli
