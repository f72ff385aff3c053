// gateway/matlab.h - the functions of MATLAB that the gateway calls, as its libraries libmx and libmex export them.
// SPDX-License-Identifier: MIT
//
// Functions with large-array forms are linked under names with a version; the gateway writes the short names.
#pragma once

#include <cstddef>

struct mxArray;
typedef std::size_t mwSize;
typedef std::size_t mwIndex;
enum mxComplexity { mxREAL, mxCOMPLEX };

#define mxGetJc              mxGetJc_730
#define mxGetIr              mxGetIr_730
#define mxGetString          mxGetString_730
#define mxCreateDoubleMatrix mxCreateDoubleMatrix_730

extern "C" {

bool mxIsChar(const mxArray *array);
bool mxIsSparse(const mxArray *array);
std::size_t mxGetM(const mxArray *array);
std::size_t mxGetN(const mxArray *array);
mwIndex *mxGetJc(const mxArray *array);
mwIndex *mxGetIr(const mxArray *array);
double *mxGetPr(const mxArray *array);
double mxGetScalar(const mxArray *array);
int mxGetString(const mxArray *array, char *buffer, mwSize size);
void *mxCalloc(std::size_t n, std::size_t size);
mxArray *mxCreateDoubleMatrix(mwSize rows, mwSize columns, mxComplexity complexity);

// Both end the call of the gateway: they do not return.
void mexErrMsgTxt(const char *text);
void mexErrMsgIdAndTxt(const char *identifier, const char *format, ...);
}
