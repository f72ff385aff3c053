// tests/gateway/host.cpp - a host for the gateway. Its errors are C++ exceptions through the gateway's frames.
// SPDX-License-Identifier: MIT

#include "gateway/host.h"

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <new>

extern "C" void mexFunction(int nlhs, mxArray *plhs[], int nrhs, const mxArray *prhs[]);

static HostCall *current;

namespace
{

struct HostError {
};

} // namespace

mxArray Text(const std::string &text)
{
  return {true, false, 1, text.size(), {}, {}, {}, text};
}

mxArray Number(double value)
{
  return {false, false, 1, 1, {value}, {}, {}, ""};
}

mxArray Full(std::size_t rows, std::size_t columns)
{
  return {false, false, rows, columns, std::vector<double>(rows * columns), {}, {}, ""};
}

mxArray Sparse(std::size_t rows, const std::vector<std::vector<mwIndex>> &columns)
{
  mxArray array = {false, true, rows, columns.size(), {}, {0}, {}, ""};

  for (const std::vector<mwIndex> &column : columns) {
    array.entries.insert(array.entries.end(), column.begin(), column.end());
    array.starts.push_back(array.entries.size());
  }
  array.values.assign(array.entries.size(), std::nan(""));
  return array;
}

HostCall CallGateway(int nlhs, const std::vector<mxArray> &inputs)
{
  HostCall call = {"", "", false, std::vector<mxArray *>(4), {}, {}};
  std::vector<const mxArray *> arguments(5);

  for (std::size_t k = 0; k < inputs.size(); k++)
    arguments[k] = &inputs[k];
  current = &call;
  try {
    mexFunction(nlhs, call.outputs.data(), static_cast<int>(inputs.size()), arguments.data());
    call.returned = true;
  } catch (const HostError &) {
  }
  current = nullptr;
  return call;
}

extern "C" {

bool mxIsChar(const mxArray *array)
{
  return array->ischar;
}

bool mxIsSparse(const mxArray *array)
{
  return array->issparse;
}

std::size_t mxGetM(const mxArray *array)
{
  return array->rows;
}

std::size_t mxGetN(const mxArray *array)
{
  return array->columns;
}

mwIndex *mxGetJc(const mxArray *array)
{
  return const_cast<mwIndex *>(array->starts.data());
}

mwIndex *mxGetIr(const mxArray *array)
{
  return const_cast<mwIndex *>(array->entries.data());
}

double *mxGetPr(const mxArray *array)
{
  return const_cast<double *>(array->values.data());
}

double mxGetScalar(const mxArray *array)
{
  return array->values.at(0);
}

int mxGetString(const mxArray *array, char *buffer, mwSize size)
{
  const std::size_t length = std::min(array->text.size(), size - 1);

  buffer[array->text.copy(buffer, length)] = '\0';
  return length < array->text.size();
}

void *mxCalloc(std::size_t n, std::size_t size)
{
  // One byte at least, as the memory of no bytes would be NULL.
  try {
    return current->blocks.emplace_back(n * size + 1).data();
  } catch (const std::bad_alloc &) {
    mexErrMsgTxt("Out of memory.");
    return nullptr;
  }
}

mxArray *mxCreateDoubleMatrix(mwSize rows, mwSize columns, mxComplexity)
{
  try {
    return &current->arrays.emplace_back(Full(rows, columns));
  } catch (const std::bad_alloc &) {
    mexErrMsgTxt("Out of memory.");
    return nullptr;
  }
}

void mexErrMsgTxt(const char *text)
{
  current->message = text;
  throw HostError();
}

__attribute__((format(printf, 2, 3))) void mexErrMsgIdAndTxt(const char *identifier, const char *format, ...)
{
  char text[200];
  va_list args;

  va_start(args, format);
  std::vsnprintf(text, sizeof text, format, args);
  va_end(args);
  current->identifier = identifier;
  current->message = text;
  throw HostError();
}
}
