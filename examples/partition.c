/* examples/partition.c - divides eight cells into two parts with the plain C interface.
 * SPDX-License-Identifier: MIT
 *
 * Cells 0-3 and cells 4-7 are tightly connected, and one net joins the two groups: it is all that must be cut.
 */
#include <kapris.h>
#include <stdio.h>

int main(void)
{
  /* Net j connects the cells netind[netptr[j]] .. netind[netptr[j+1]-1]. */
  const int netptr[] = {0, 3, 6, 8, 11, 14, 16, 18};
  const int netind[] = {0, 1, 2, 1, 2, 3, 0, 3, 4, 5, 6, 5, 6, 7, 4, 7, 3, 4};
  /* Read the options; 10 trials; the usual methods; seed 42, for the same parts in every run; no traces. */
  const int options[9] = {1, 10, 1, 1, 1, 0, 0, 42, 0};
  int part[8];
  int cut;

  /* NULL: all cells and all nets have weight 1. 5 allows the parts 45 to 55 percent of the weight. */
  KAPRIS_PartRecursive(8, 7, NULL, netptr, netind, NULL, 2, 5, options, part, &cut);

  printf("parts:");
  for (int i = 0; i < 8; i++)
    printf(" %d", part[i]);
  printf("\ncut: %d\n", cut);
  return 0;
}
