// tests/gateway/host.h - a host for the gateway: arrays, memory and errors as MATLAB has them.
// SPDX-License-Identifier: MIT
#pragma once

#include "matlab.h"

#include <list>
#include <string>
#include <vector>

struct mxArray {
  bool ischar, issparse;
  std::size_t rows, columns;
  std::vector<double> values;
  std::vector<mwIndex> starts, entries; // of a sparse array
  std::string text;                     // of a char array
};

mxArray Text(const std::string &text);
mxArray Number(double value);
mxArray Full(std::size_t rows, std::size_t columns);
// The rows of the entries of every column; the values are all NaN, for nobody should look at them.
mxArray Sparse(std::size_t rows, const std::vector<std::vector<mwIndex>> &columns);

// What the host saw of one call.
struct HostCall {
  std::string identifier, message; // of the error that ended it
  bool returned;
  std::vector<mxArray *> outputs;      // four, NULL where the gateway set none
  std::list<mxArray> arrays;           // made by the call
  std::list<std::vector<char>> blocks; // of memory, given back with this record
};

// Calls the gateway, which finds NULL in the places of the inputs and outputs that there are not.
HostCall CallGateway(int nlhs, const std::vector<mxArray> &inputs);
