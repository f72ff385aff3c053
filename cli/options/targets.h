// cli/options/targets.h - relative weights that parts should get, from the command line or a file.
// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

namespace kapris_cli
{

// The file that an argument @FILE names, "-" for standard input; empty for an argument that holds the weights itself.
std::string TargetFile(const std::string &argument);

// Weights separated by commas, blanks or line ends, as shares of 1; nparts 0: as many as there are. Throws Failure.
std::vector<double> LoadTargetWeights(const std::string &argument, int nparts);

} // namespace kapris_cli
