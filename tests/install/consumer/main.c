/* tests/install/consumer/main.c - a C program that uses kapris as others would.
 * SPDX-License-Identifier: MIT
 *
 * Two groups of four cells that one net joins: the cut must be that net. Prints the version of the header.
 */
#include <kapris.h>
#include <kapris_api.h>
#include <stdio.h>

int main(void)
{
  const int netptr[] = {0, 3, 6, 8, 11, 14, 16, 18};
  const int netind[] = {0, 1, 2, 1, 2, 3, 0, 3, 4, 5, 6, 5, 6, 7, 4, 7, 3, 4};
  kapris_problem problem;
  kapris_options options;
  kapris_result *result;
  int recount = 0;

  kapris_init_problem(&problem);
  kapris_init_options(&options);
  problem.ncells = 8;
  problem.nnets = 7;
  problem.net_starts = netptr;
  problem.pins = netind;
  options.threads = options.starts = 2;
  if (kapris_partition(&problem, &options, &result) != KAPRIS_OK)
    return 1;

  for (int j = 0; j < 7; j++) {
    int differs = 0;
    for (int i = netptr[j]; i < netptr[j + 1]; i++)
      differs |= result->part[netind[i]] != result->part[netind[netptr[j]]];
    recount += differs;
  }
  printf("kapris %d.%d.%d: cut %d, recounted %d\n", KAPRIS_VERSION_MAJOR, KAPRIS_VERSION_MINOR,
         KAPRIS_VERSION_PATCH, (int)result->cut, recount);
  kapris_free_result(result);
  return 0;
}
