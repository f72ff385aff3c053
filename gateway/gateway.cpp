// gateway/gateway.cpp - [part, edgecut] = kapris (name, A, nparts) for MATLAB and Octave.
// SPDX-License-Identifier: MIT
//
// Nets are the columns of A, pins the rows of their entries; the values do not matter. Memory comes from the host,
// which releases it when the call ends, also by an error. The host's error functions may leave by a jump, so nothing in
// this file has a destructor.

#include "host.h"
#include "kapris.h"

#include <climits>
#include <strings.h>

#define GATEWAY_EXPORT extern "C" __attribute__((visibility("default")))

namespace
{

struct Nets {
  int *netptr, *netind;
};

} // namespace

static Nets NetsOfColumns(const mxArray *matrix, int n)
{
  const auto *starts = mxGetJc(matrix);
  const auto *rows = mxGetIr(matrix);
  const auto npins = static_cast<std::size_t>(starts[n]);
  const Nets nets = {static_cast<int *>(mxCalloc(static_cast<std::size_t>(n) + 1, sizeof(int))),
                     static_cast<int *>(mxCalloc(npins, sizeof(int)))};

  // Beyond 2^31-1 pins the starts wrap around, which the library refuses.
  nets.netptr[0] = 0;
  for (int j = 0; j < n; j++)
    nets.netptr[j + 1] = static_cast<int>(starts[j + 1]);
  for (std::size_t k = 0; k < npins; k++)
    nets.netind[k] = static_cast<int>(rows[k]);
  return nets;
}

// Toward zero. What an int cannot hold, NaN included, becomes INT_MIN, as the conversion instruction of x86 does it.
static int Truncated(double number)
{
  return number > INT_MIN - 1.0 && number < INT_MAX + 1.0 ? static_cast<int>(number) : INT_MIN;
}

GATEWAY_EXPORT void mexFunction(int nlhs, mxArray *plhs[], int nrhs, const mxArray *prhs[])
{
  static const int options[9] = {0};
  char name[25] = "";

  if (nlhs > 2 || nrhs < 2 || nrhs > 4)
    mexErrMsgTxt("Wrong # of arguments");
  if (!mxIsChar(prhs[0]))
    mexErrMsgTxt("First parameter must be a string");
  const int n = static_cast<int>(mxGetN(prhs[1]));
  if (!mxIsSparse(prhs[1]) || static_cast<std::size_t>(n) != mxGetM(prhs[1]))
    mexErrMsgTxt("Second parameter must be a symmetric sparse matrix");
  const Nets nets = NetsOfColumns(prhs[1], n);

  // A longer name is cut.
  mxGetString(prhs[0], name, sizeof name);
  const bool recursive = strcasecmp(name, "PartRecursive") == 0;
  // Callers may test for this identifier and text.
  if (!recursive && strcasecmp(name, "PartKway") != 0) {
    mexErrMsgIdAndTxt("zavikmex:invalidValue", "Unknown zavikmex function %s", name);
    return;
  }
  if (nrhs < 3)
    mexErrMsgTxt("Third parameter needed: nparts");
  const int nparts = Truncated(mxGetScalar(prhs[2]));
  if (nrhs >= 4)
    mexErrMsgTxt("Wrong number of input parameters");
  if (nparts < 2)
    mexErrMsgTxt("nparts must be at least 2");

  int cut = 0;
  int *part = static_cast<int *>(mxCalloc(static_cast<std::size_t>(n), sizeof(int)));
  if (recursive)
    KAPRIS_PartRecursive(n, n, nullptr, nets.netptr, nets.netind, nullptr, nparts, 1, options, part, &cut);
  else
    KAPRIS_PartKway(n, n, nullptr, nets.netptr, nets.netind, nullptr, nparts, 6, options, part, &cut);

  if (nlhs >= 1) {
    plhs[0] = mxCreateDoubleMatrix(1, static_cast<mwSize>(n), mxREAL);
    for (int i = 0; i < n; i++)
      mxGetPr(plhs[0])[i] = part[i];
  }
  if (nlhs >= 2) {
    plhs[1] = mxCreateDoubleMatrix(1, 1, mxREAL);
    *mxGetPr(plhs[1]) = cut;
  }
}

// The release that this is written for, and its interface of 64-bit indices.
GATEWAY_EXPORT void mexfilerequiredapiversion(unsigned int *release, unsigned int *api)
{
  *release = 0x2018B;
  *api = 0x7300000;
}
