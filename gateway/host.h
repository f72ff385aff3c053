// gateway/host.h - the host's array interface, under the names that the gateway calls.
// SPDX-License-Identifier: MIT
//
// KAPRIS_HOST_OCTAVE takes the host's own header. Otherwise the names are those that a MATLAB of the large-array
// interface links: matlab.h declares them, so that this form compiles, and runs on the host of the tests, without MATLAB.
#pragma once

#ifdef KAPRIS_HOST_OCTAVE
#include <mex.h>
#else
#include "matlab.h"
#endif
