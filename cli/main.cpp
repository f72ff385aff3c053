// cli/main.cpp - the kapris command.
// SPDX-License-Identifier: MIT

#include "entry.h"

int main(int argc, char **argv)
{
  return kapris_cli::RunCommand(argc, argv, kapris_cli::DescribeCommand);
}
