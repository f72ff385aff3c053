// gateway/host.h - the host's array interface, under the names that the gateway calls.
// SPDX-License-Identifier: MIT
//
// KAPRIS_HOST_OCTAVE takes the host's own header. Otherwise the names are those that a MATLAB of the large-array
// interface links: matlab.h declares them, so that this form compiles, and runs on the host of the tests, without
// MATLAB.
#pragma once

#ifdef KAPRIS_HOST_OCTAVE

#include <cstring>
#include <mex.h>

// As in MATLAB, a longer text is cut; Octave's own function gives nothing of it.
static int GetString(const mxArray *array, char *buffer, mwSize size)
{
  const std::size_t length = mxGetM(array) * mxGetN(array);
  char *text = static_cast<char *>(mxCalloc(length + 1, 1));

  if (mxGetString(array, text, static_cast<mwSize>(length) + 1) != 0)
    return 1;
  std::strncpy(buffer, text, static_cast<std::size_t>(size) - 1);
  return length >= static_cast<std::size_t>(size);
}
#define mxGetString GetString

#else
#include "matlab.h"
#endif
