// gateway/octave/src/__kapris__.cpp - kapris_partition's way to the safe interface.
// SPDX-License-Identifier: MIT
//
//   [status, message, part, figures, weights, limits, minimums, starts] =
//     __kapris__ (S, nparts, numbers, cell_weights, net_weights, fixed, target_weights, initial)
//   limits = __kapris__ (total, nparts, target_weights, epsilon)
//
// Columns of S are nets. numbers are the options in the order of OptionsOf, NaN for a default; cell_weights and
// net_weights are int64 arrays, fixed and initial int32 arrays with parts from 0, target_weights is double, and []
// stands for the default.
// kapris_partition.m has checked the values; what is checked here keeps a call from elsewhere from reading beyond an
// array. As it lets no total exceed 2^53, the figures are exact as doubles.
//
// Octave's error functions leave by a jump or an exception. So outputs are made before the library is called, and
// nothing of Octave is called while memory of the library or of malloc is held.

#include "kapris_api.h"

#include <cmath>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <mex.h>
#include <quit.h>

namespace
{

enum Argument {
  MATRIX,
  NPARTS,
  NUMBERS,
  CELL_WEIGHTS,
  NET_WEIGHTS,
  FIXED,
  TARGET_WEIGHTS,
  INITIAL,
  NARGUMENTS
};
enum Output { STATUS, MESSAGE, PART, FIGURES, WEIGHTS, LIMITS, MINIMUMS, STARTS, NOUTPUTS };
constexpr std::size_t NNUMBERS = 18;
constexpr mwSize NFIGURES = 10, NSTARTFIGURES = 8;

struct Nets {
  int *starts, *pins;
};

} // namespace

static void Refuse(const char *what)
{
  mexErrMsgIdAndTxt("kapris:internal", "%s is not what kapris_partition passes", what);
}

static const void *NumbersOf(const mxArray *array, mxClassID type, int length, const char *what)
{
  if (mxIsEmpty(array))
    return nullptr;
  if (mxGetClassID(array) != type || mxGetNumberOfElements(array) != static_cast<std::size_t>(length))
    Refuse(what);
  return mxGetData(array);
}

static const int *IntsOf(const mxArray *array, int length, const char *what)
{
  return static_cast<const int *>(NumbersOf(array, mxINT32_CLASS, length, what));
}

static const std::int64_t *WeightsOf(const mxArray *array, int length, const char *what)
{
  return static_cast<const std::int64_t *>(NumbersOf(array, mxINT64_CLASS, length, what));
}

static const double *DoublesOf(const mxArray *array, std::size_t length, const char *what)
{
  if (!mxIsDouble(array) || mxIsSparse(array) || mxGetNumberOfElements(array) != length)
    Refuse(what);
  return mxGetPr(array);
}

template <class T>
static void Set(T *option, double number)
{
  if (!std::isnan(number))
    *option = static_cast<T>(number);
}

static kapris_options OptionsOf(const double *numbers)
{
  kapris_options options;

  kapris_init_options(&options);
  Set(&options.scheme, numbers[0]);
  Set(&options.objective, numbers[1]);
  Set(&options.coarsening, numbers[2]);
  Set(&options.refinement, numbers[3]);
  Set(&options.vcycle, numbers[4]);
  Set(&options.runs, numbers[5]);
  Set(&options.reconst, numbers[6]);
  Set(&options.seed, numbers[7]);
  Set(&options.epsilon, numbers[8]);
  Set(&options.starts, numbers[9]);
  Set(&options.first_start, numbers[10]);
  Set(&options.threads, numbers[11]);
  Set(&options.time_limit, numbers[12]);
  Set(&options.memory_limit, numbers[13]);
  Set(&options.min_epsilon, numbers[14]);
  Set(&options.allow_empty, numbers[15]);
  Set(&options.members, numbers[16]);
  Set(&options.combinations, numbers[17]);
  return options;
}

static kapris_problem ProblemOf(const mxArray *const *arguments)
{
  kapris_problem problem;

  kapris_init_problem(&problem);
  problem.ncells = static_cast<int>(mxGetM(arguments[MATRIX]));
  problem.nnets = static_cast<int>(mxGetN(arguments[MATRIX]));
  problem.nparts = static_cast<int>(mxGetScalar(arguments[NPARTS]));
  problem.cell_weights = WeightsOf(arguments[CELL_WEIGHTS], problem.ncells, "cell_weights");
  problem.net_weights = WeightsOf(arguments[NET_WEIGHTS], problem.nnets, "net_weights");
  problem.fixed = IntsOf(arguments[FIXED], problem.ncells, "fixed");
  if (!mxIsEmpty(arguments[TARGET_WEIGHTS]))
    problem.target_weights =
        DoublesOf(arguments[TARGET_WEIGHTS], static_cast<std::size_t>(problem.nparts), "target_weights");
  return problem;
}

static void MakeOutputs(mxArray **outputs, const kapris_problem *problem, const kapris_options *options)
{
  outputs[PART] = mxCreateDoubleMatrix(problem->ncells, 1, mxREAL);
  outputs[FIGURES] = mxCreateDoubleMatrix(1, NFIGURES, mxREAL);
  outputs[WEIGHTS] = mxCreateDoubleMatrix(1, problem->nparts, mxREAL);
  outputs[LIMITS] = mxCreateDoubleMatrix(1, problem->nparts, mxREAL);
  outputs[MINIMUMS] = mxCreateDoubleMatrix(1, problem->nparts, mxREAL);
  outputs[STARTS] = mxCreateDoubleMatrix(NSTARTFIGURES, options->starts, mxREAL);
}

static void FillOutputs(mxArray *const *outputs, const kapris_result *result)
{
  const double figures[NFIGURES] = {
      static_cast<double>(result->cut),          static_cast<double>(result->soed),
      static_cast<double>(result->connectivity), result->imbalance,
      static_cast<double>(result->balanced),     static_cast<double>(result->seed),
      static_cast<double>(result->best_start),   result->seconds,
      static_cast<double>(result->peak_bytes),   static_cast<double>(result->excess)};
  double *part = mxGetPr(outputs[PART]), *start = mxGetPr(outputs[STARTS]);

  std::memcpy(mxGetPr(outputs[FIGURES]), figures, sizeof figures);
  for (int i = 0; i < result->ncells; i++)
    part[i] = result->part[i];
  for (int p = 0; p < result->nparts; p++) {
    mxGetPr(outputs[WEIGHTS])[p] = static_cast<double>(result->part_weights[p]);
    mxGetPr(outputs[LIMITS])[p] = static_cast<double>(result->part_limits[p]);
    mxGetPr(outputs[MINIMUMS])[p] = static_cast<double>(result->part_minimums[p]);
  }
  for (int s = 0; s < result->nstarts; s++, start += NSTARTFIGURES) {
    const kapris_start *from = &result->starts[s];
    const double values[NSTARTFIGURES] = {static_cast<double>(from->number),
                                          static_cast<double>(from->seed),
                                          static_cast<double>(from->cut),
                                          static_cast<double>(from->soed),
                                          from->imbalance,
                                          static_cast<double>(from->balanced),
                                          static_cast<double>(from->completed),
                                          from->seconds};
    std::memcpy(start, values, sizeof values);
  }
  mxSetN(outputs[STARTS], result->nstarts); // fewer than there is room for if the time was up
}

// ----------------------------------------------------------------------------------------------------------
// The call

// Any thread of the call may come here; nothing of Octave but its flag is touched. It is above 0 while an interrupt
// waits to be handled; cleaning up after one is not interrupted again.
static void Watch(const kapris_progress *, void *user)
{
  if (octave_interrupt_state > 0)
    *static_cast<volatile int *>(user) = 1;
}

static bool MakeNets(Nets *nets, const mwIndex *starts, const mwIndex *rows, int nnets)
{
  const std::size_t npins = static_cast<std::size_t>(starts[nnets]);

  nets->starts = static_cast<int *>(std::malloc((static_cast<std::size_t>(nnets) + 1) * sizeof(int)));
  nets->pins = static_cast<int *>(std::malloc((npins + 1) * sizeof(int)));
  if (nets->starts == nullptr || nets->pins == nullptr)
    return false;
  for (int j = 0; j <= nnets; j++)
    nets->starts[j] = static_cast<int>(starts[j]);
  for (std::size_t k = 0; k < npins; k++)
    nets->pins[k] = static_cast<int>(rows[k]);
  return true;
}

// From the first allocation to the last release; throws nothing and calls nothing that would.
static kapris_status Solve(kapris_problem *problem, kapris_options *options, const int *initial,
                           const mwIndex *starts, const mwIndex *rows, mxArray *const *outputs, char *message,
                           std::size_t size)
{
  Nets nets = {nullptr, nullptr};
  kapris_result *result = nullptr;
  kapris_status status = KAPRIS_OUT_OF_MEMORY;

  std::strncpy(message, "out of memory", size);
  if (MakeNets(&nets, starts, rows, problem->nnets)) {
    problem->net_starts = nets.starts;
    problem->pins = nets.pins;
    status = initial != nullptr ? kapris_refine(problem, options, initial, &result)
                                : kapris_partition(problem, options, &result);
  }
  if (result != nullptr)
    std::memcpy(message, result->message, size);
  if (result != nullptr && result->part != nullptr)
    FillOutputs(outputs, result);
  kapris_free_result(result);
  std::free(nets.starts);
  std::free(nets.pins);
  return status;
}

// What parts may weigh, for kapris_eval.
static mxArray *LimitsOf(const mxArray *const *arguments)
{
  const int nparts = static_cast<int>(mxGetScalar(arguments[1]));
  const double *shares = mxIsEmpty(arguments[2])
                             ? nullptr
                             : DoublesOf(arguments[2], static_cast<std::size_t>(nparts), "target_weights");
  mxArray *limits = mxCreateDoubleMatrix(1, nparts, mxREAL);

  for (int p = 0; p < nparts; p++)
    mxGetPr(limits)[p] = static_cast<double>(kapris_part_limit(
        static_cast<std::int64_t>(mxGetScalar(arguments[0])), nparts, shares, p, mxGetScalar(arguments[3])));
  return limits;
}

extern "C" __attribute__((visibility("default"))) void mexFunction(int nlhs, mxArray *plhs[], int nrhs,
                                                                   const mxArray *prhs[])
{
  mxArray *outputs[NOUTPUTS] = {};
  char message[sizeof(kapris_result::message)];
  volatile int cancel = 0;

  if (nrhs == 4) {
    plhs[0] = LimitsOf(prhs);
    return;
  }
  if (nrhs != NARGUMENTS || nlhs > NOUTPUTS || !mxIsSparse(prhs[MATRIX]))
    Refuse("the list of arguments");
  kapris_problem problem = ProblemOf(prhs);
  kapris_options options = OptionsOf(DoublesOf(prhs[NUMBERS], NNUMBERS, "numbers"));
  const int *initial = IntsOf(prhs[INITIAL], problem.ncells, "initial");
  options.cancel = &cancel;
  options.progress = Watch;
  options.user = const_cast<int *>(&cancel); // back to volatile in Watch
  MakeOutputs(outputs, &problem, &options);
  const kapris_status status = Solve(&problem, &options, initial, mxGetJc(prhs[MATRIX]),
                                     mxGetIr(prhs[MATRIX]), outputs, message, sizeof message);

  if (cancel) {
    OCTAVE_QUIT;
    mexErrMsgIdAndTxt("kapris:interrupted", "interrupted");
  }
  outputs[STATUS] = mxCreateString(kapris_status_name(status));
  outputs[MESSAGE] = mxCreateString(message);
  for (int k = 0; k < nlhs; k++)
    plhs[k] = outputs[k];
}
