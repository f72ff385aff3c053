// cli/options/words.h - command lines as people type them.
// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

namespace kapris_cli
{

// "help VERB" becomes "VERB --help", and another name of an option its own: --k, --imbalance, --part-shares.
void ExpandWords(std::vector<std::string> *args);

// The name of an option as it is given to the parser, and others that are understood.
std::vector<std::string> NamesOfOption(const std::string &name);

// The word that is most like the one given, or an empty one if none is.
std::string NearestWord(const std::string &given, const std::vector<std::string> &words);

} // namespace kapris_cli
