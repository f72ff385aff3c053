/* tests/install/consumer/main.c - a C program that uses kapris as others would.
 * SPDX-License-Identifier: MIT
 *
 * Two groups of four cells that one net joins: the cut must be that net. Prints the version of the header.
 */
#include <kapris.h>
#include <stdio.h>

int main(void)
{
  const int netptr[] = {0, 3, 6, 8, 11, 14, 16, 18};
  const int netind[] = {0, 1, 2, 1, 2, 3, 0, 3, 4, 5, 6, 5, 6, 7, 4, 7, 3, 4};
  const int options[9] = {1, 10, 1, 1, 1, 0, 0, 42, 0};
  int part[8] = {-1, -1, -1, -1, -1, -1, -1, -1};
  int cut = -1, recount = 0;

  KAPRIS_PartRecursive(8, 7, NULL, netptr, netind, NULL, 2, 5, options, part, &cut);

  for (int j = 0; j < 7; j++) {
    int differs = 0;
    for (int i = netptr[j]; i < netptr[j + 1]; i++)
      differs |= part[netind[i]] != part[netind[netptr[j]]];
    recount += differs;
  }
  printf("kapris %d.%d.%d: cut %d, recounted %d\n", KAPRIS_VERSION_MAJOR, KAPRIS_VERSION_MINOR,
         KAPRIS_VERSION_PATCH, cut, recount);
  return 0;
}
