/* examples/embed.c - divides eight cells into two parts with the safe C interface.
 * SPDX-License-Identifier: MIT
 *
 * Cells 0-3 and cells 4-7 are tightly connected, and one net joins the two groups: it is all that must be cut.
 */
#include <kapris_api.h>
#include <stdio.h>

int main(void)
{
  /* Net j connects the cells pins[net_starts[j]] .. pins[net_starts[j+1]-1]. */
  static const int net_starts[] = {0, 3, 6, 8, 11, 14, 16, 18};
  static const int pins[] = {0, 1, 2, 1, 2, 3, 0, 3, 4, 5, 6, 5, 6, 7, 4, 7, 3, 4};
  /* Cell 0 must go to part 0; the others are free. */
  static const int fixed[] = {0, -1, -1, -1, -1, -1, -1, -1};
  kapris_problem problem;
  kapris_options options;
  kapris_result *result;

  kapris_init_problem(&problem);
  problem.ncells = 8;
  problem.nnets = 7;
  problem.net_starts = net_starts;
  problem.pins = pins;
  problem.nparts = 2;
  problem.fixed = fixed;

  kapris_init_options(&options);
  options.starts = 4;
  options.threads = 2;
  options.time_limit = 60.0; /* seconds */

  const kapris_status status = kapris_partition(&problem, &options, &result);
  if (result == NULL || result->part == NULL) {
    fprintf(stderr, "%s: %s\n", kapris_status_name(status), result != NULL ? result->message : "");
    kapris_free_result(result);
    return 1;
  }

  printf("status: %s\nparts:", kapris_status_name(status));
  for (int i = 0; i < result->ncells; i++)
    printf(" %d", result->part[i]);
  printf("\ncut: %lld\n", (long long)result->cut);
  kapris_free_result(result);
  return 0;
}
