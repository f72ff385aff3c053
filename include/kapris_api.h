/* kapris_api.h - multilevel hypergraph partitioning: the safe C interface.
 * SPDX-License-Identifier: MIT
 *
 * For programs that embed kapris. A call never ends the process, never prints and leaves nothing behind; it reports a
 * status and a message.
 *
 *   kapris_problem problem;
 *   kapris_options options;
 *   kapris_result *result;
 *
 *   kapris_init_problem(&problem);
 *   kapris_init_options(&options);
 *   problem.ncells = ...;
 *   kapris_status status = kapris_partition(&problem, &options, &result);
 *   if (result != NULL && result->part != NULL)
 *     use(result->part);
 *   else
 *     fprintf(stderr, "%s: %s\n", kapris_status_name(status), result != NULL ? result->message : "");
 *   kapris_free_result(result);
 *
 * WORDS
 *
 * A hypergraph is a set of cells (vertices) and a set of nets (hyperedges), which connect cells: their pins. A
 * partition gives every cell the number of a part. Cells, nets and parts are counted from 0. Weights are whole numbers
 * without a unit. Three figures tell how much a partition cuts:
 *
 *   cut            the total weight of the nets whose pins lie in more than one part
 *   SOED           the sum of external degrees: for every net that spans k > 1 parts, k times its weight
 *   connectivity   connectivity - 1, for every net that spans k parts, k - 1 times its weight; it is the SOED less
 *                  the cut
 *
 * WHAT HOLDS FOR EVERY CALL
 *
 * Ownership     The records and arrays that go in belong to the caller; they are only read, and none is kept. The
 *               result belongs to the caller, who releases it by kapris_free_result.
 * Errors        The status and, in the result, a message that names the argument, the index and the value.
 * Figures       Weights have 64 bits, and all figures are exact. They hold for the hypergraph as it was given: nets of
 *               one pin or none and pins that a net names again change no figure, and the engine does not see them.
 * Determinism   With the same input, options and seed a call gives the same partition on every machine and with any
 *               number of threads, unless a time limit or a cancellation cuts it short.
 * Threads       Calls on different threads are independent, and may share what they only read. One call can use several
 *               threads; they have ended when it returns. The random sequence of the calling thread, which the refining
 *               functions of kapris.h go on from, is as before.
 */
#ifndef KAPRIS_API_H
#define KAPRIS_API_H

#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#define KAPRIS_SAFE_API __attribute__((visibility("default")))
/* Unnamed unions, for two names of one member, are not in C99. */
#define KAPRIS_EXTENSION __extension__
#else
#define KAPRIS_SAFE_API
#define KAPRIS_EXTENSION
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* The version of the library that is linked or loaded, such as "0.1.0"; KAPRIS_VERSION_MAJOR and its like in kapris.h
 * are those of the header. Static text, which is not released. */
KAPRIS_SAFE_API const char *kapris_version(void);

/* ------------------------------------------------------------------------------------------------------------------
 * How a call ended */

typedef enum kapris_status {
  /* Done, and every part is within its limits. */
  KAPRIS_OK = 0,
  /* Nothing was done; the message names the argument, the index and the value. */
  KAPRIS_INVALID_ARGUMENT = 1,
  /* Done, but some part is above its limit or below its minimum. The best partition found is delivered. */
  KAPRIS_INFEASIBLE = 2,
  /* The system gave no memory. If another start had made a partition by then, the best partition so far is delivered,
   * and the message tells how many starts were completed and what there was no memory for; whether it keeps the limits
   * of the parts is for balanced to tell. Otherwise no partition. */
  KAPRIS_OUT_OF_MEMORY = 3,
  /* The call would have exceeded memory_limit. As with KAPRIS_OUT_OF_MEMORY there can be a partition. */
  KAPRIS_MEMORY_LIMIT = 4,
  /* time_limit was reached. The best partition so far is delivered; whether it keeps the limits of the parts is for
   * balanced to tell. With members this is how a call with a time limit ends. */
  KAPRIS_TIME_LIMIT = 5,
  /* *cancel became non-zero. The best partition so far is delivered. */
  KAPRIS_CANCELLED = 6,
  /* A fault of the library. No partition. */
  KAPRIS_INTERNAL = 7
} kapris_status;

/* The name of a status in lower case, such as "time limit"; "unknown status" for another number. Static text, which is
 * not released. */
KAPRIS_SAFE_API const char *kapris_status_name(kapris_status status);

/* ------------------------------------------------------------------------------------------------------------------
 * What is to be partitioned */

/* Fill with kapris_init_problem, then change what differs.
 *
 * Two totals must be at most 2^61 = 2305843009213693952: the total cell weight, and the sum over the nets of
 * weight x min(pins, nparts). Beyond that a call ends with KAPRIS_INVALID_ARGUMENT and a message such as
 * "net_weights[7] is 9000000000000000000: the sum of net weight x min(pins, nparts) is then above 2305843009213693952".
 * Up to there every figure is exact. */
typedef struct kapris_problem {
  /* sizeof(kapris_problem), set by kapris_init_problem. */
  size_t size;

  /* Number of cells, >= 0. */
  int ncells;
  /* Number of nets, >= 0. */
  int nnets;
  /* [ncells] >= 0, or NULL: all 1. */
  const int64_t *cell_weights;
  /* [nnets] >= 0, or NULL: all 1. */
  const int64_t *net_weights;
  /* [nnets + 1] the first is 0, none is below the one before: the pins of net j are pins[net_starts[j]] ..
   * pins[net_starts[j+1] - 1]. It can be NULL if nnets is 0. */
  const int *net_starts;
  /* [net_starts[nnets]] cell numbers 0 .. ncells-1. A net may have one pin or none, and may name a cell twice. It can
   * be NULL if there are no pins. */
  const int *pins;

  /* Number of parts, >= 1. It can be more than ncells. */
  int nparts;
  /* [nparts] what the parts should weigh, in proportion to each other, as in 2, 1, 1: each > 0 and at most 10^15, none
   * less than 10^-9 of their sum; or NULL: all the same. The share of a part is its weight over the sum of all.
   * part_shares is the former name. */
  KAPRIS_EXTENSION union {
    const double *target_weights;
    const double *part_shares;
  };
  /* [ncells] the part that a cell must go to, or -1 for a free cell; or NULL: all free. */
  const int *fixed;
} kapris_problem;

/* Sets size, nparts to 2, and everything else to 0 or NULL: no cells, equal shares, nothing fixed. *problem belongs to
 * the caller, must not be NULL, and holds nothing that would have to be released. Cannot fail. */
KAPRIS_SAFE_API void kapris_init_problem(kapris_problem *problem);

/* ------------------------------------------------------------------------------------------------------------------
 * How to partition */

typedef enum kapris_scheme {
  /* Recursive bisection; into 3 to 64 parts, the parts are then refined all together. */
  KAPRIS_RECURSIVE = 0,
  /* Direct partitioning into all parts at once. */
  KAPRIS_KWAY = 1
} kapris_scheme;

/* What is minimised; see WORDS above. */
typedef enum kapris_objective {
  /* The cut. */
  KAPRIS_CUT = 0,
  /* The sum of external degrees. */
  KAPRIS_SOED = 1,
  /* Connectivity - 1, also known as km1: for every net that spans k parts, k - 1 times its weight. */
  KAPRIS_CONNECTIVITY = 2
} kapris_objective;

/* How cells are grouped on the way to the coarser levels. */
typedef enum kapris_coarsening {
  /* Strong stars and degree stars in turn, from run to run. */
  KAPRIS_ALTERNATE = 0,
  /* Cells of few nets choose first. */
  KAPRIS_DEGREE_STARS = 1,
  /* Strongly connected cells choose first. */
  KAPRIS_STRONG_STARS = 2,
  /* All cells of a net together. */
  KAPRIS_WHOLE_NETS = 3,
  /* Two cells each. */
  KAPRIS_PAIRS = 4
} kapris_coarsening;

/* How a bisection is refined; direct k-way partitioning ignores it, and so does the refinement of all parts. */
typedef enum kapris_refinement {
  /* Passes of Fiduccia and Mattheyses. */
  KAPRIS_FM = 0,
  /* Passes out of one side, then FM. */
  KAPRIS_ONE_WAY_FM = 1,
  /* Passes on large levels end after a run of moves without improvement. */
  KAPRIS_EARLY_EXIT_FM = 2
} kapris_refinement;

/* Which runs are improved by V-cycles, which coarsen within the parts and refine again. */
typedef enum kapris_vcycle {
  /* None. */
  KAPRIS_VCYCLE_NEVER = 0,
  /* The best runs, at the end. */
  KAPRIS_VCYCLE_BEST = 1,
  /* Every run that improves on the ones before. */
  KAPRIS_VCYCLE_IMPROVING = 2,
  /* Every run that comes close to the best. */
  KAPRIS_VCYCLE_CLOSE = 3
} kapris_vcycle;

/* What a start is doing. */
typedef enum kapris_phase {
  /* Between the others. */
  KAPRIS_PREPARING = 0,
  /* Grouping the cells of a level. */
  KAPRIS_COARSENING = 1,
  /* Partitioning the coarsest level. */
  KAPRIS_INITIAL = 2,
  /* Improving the partition of a level. */
  KAPRIS_REFINING = 3,
  /* Bringing parts within their limits. */
  KAPRIS_BALANCING = 4
} kapris_phase;

/* The name of a phase in lower case, such as "coarsening"; "unknown phase" for another number. Static text, which is
 * not released. */
KAPRIS_SAFE_API const char *kapris_phase_name(kapris_phase phase);

/* One start of a call. */
typedef struct kapris_start kapris_start;

/* A moment of a call, for kapris_options.progress. It lasts as long as the callback runs. */
typedef struct kapris_progress {
  /* Starts that have ended, and starts that this call was asked for. */
  int starts_done;
  int starts;
  /* Objective of the best partition that a start has made so far, -1 while there is none. Balanced partitions are
   * better than others, so that it can rise. */
  int64_t best;
  /* Wall time since the call began. */
  double seconds;
  /* Estimate of the work done, 0 .. 1; with members and a time limit, the share of the time that has passed. */
  double done;
  /* What the start that reports is doing, and the cells of the level that it works on, 0 where there is none. */
  kapris_phase phase;
  int level_cells;
} kapris_progress;

/* Fill with kapris_init_options, then change what differs. */
typedef struct kapris_options {
  /* sizeof(kapris_options), set by kapris_init_options. */
  size_t size;

  /* Default KAPRIS_RECURSIVE. */
  kapris_scheme scheme;
  /* Default KAPRIS_CUT. */
  kapris_objective objective;
  /* Default KAPRIS_ALTERNATE. */
  kapris_coarsening coarsening;
  /* Default KAPRIS_EARLY_EXIT_FM. */
  kapris_refinement refinement;
  /* Default KAPRIS_VCYCLE_BEST. */
  kapris_vcycle vcycle;
  /* Multilevel runs of each bisection or k-way partitioning, >= 1. Default 4. */
  int runs;
  /* Partitions that a start makes on its own, to combine them, >= 0; 0 = one, made by scheme, coarsening, refinement,
   * vcycle and runs alone. Default 2. */
  int members;
  /* Combinations that a start makes at most, >= 0: of two partitions, or with more than two parts of one and itself
   * with parts made anew, a few at a time. Of a single partition that kapris_refine or kapris_combine gets, that many
   * improvements. Where the members of two parts have nothing to give each other any more, new ones take what is left
   * of them. Default 8. */
  int combinations;
  /* 1 = the pieces of cut nets stay in the recursion, 0 = they leave it. Default 0. */
  int reconst;
  /* 0 .. 2^31-1; negative = from the clock, and the result tells which. Default 0. */
  int64_t seed;
  /* A part may weigh (1 + epsilon) x its share of the total cell weight: the share is rounded up to a whole weight,
   * then the product down; >= 0. See kapris_part_limit. imbalance is the former name. Default 0.03. */
  KAPRIS_EXTENSION union {
    double epsilon;
    double imbalance;
  };
  /* A part may not weigh less than (1 - min_epsilon) x its share: the share is rounded down to a whole weight, then the
   * product up; 0 .. 1. See kapris_part_minimum. Default 1: parts may be as light as they come out. */
  double min_epsilon;
  /* 0 = no part stays empty while there are cells that it can have, 1 = parts may be empty. Default 0. */
  int allow_empty;

  /* Independent starts, of which the best counts, >= 1. Those that have not begun when a limit or a cancellation ends
   * the call are left out. Default 1. */
  int starts;
  /* Number of the first of them, >= 0, to spread starts over several calls; first_start + starts is at most 2^31-1.
   * Default 0. */
  int first_start;
  /* Threads that the call may use, the calling one included, >= 1. Default 1. */
  int threads;
  /* Seconds of wall time after which the call ends, or 0 = none. With members the starts do not end before: each makes
   * and combines partitions until the time is up, and neither members nor combinations says how many. Default 0. */
  double time_limit;
  /* Bytes that the call may hold at once, the result left out, or 0 = any number. Default 0. */
  size_t memory_limit;
  /* The call ends soon after *cancel becomes non-zero, which a callback, another thread or a signal handler may do; or
   * NULL. Default NULL. */
  const volatile int *cancel;

  /* The callbacks run on any thread of the call, but never two at once. They must return, and must not call kapris. */

  /* Called up to ten times per second, or NULL. Default NULL. */
  void (*progress)(const kapris_progress *progress, void *user);
  /* Receives the traces, in pieces that need not end with a line and last as long as the callback runs; or NULL.
   * Default NULL. */
  void (*log)(const char *text, void *user);
  /* Sum of the traces that log receives: the numbers of option slot 8 in kapris.h, of which 32 gives nothing here.
   * Default 0. */
  int log_level;
  /* Handed to progress and log. Default NULL. */
  void *user;

  /* 1 = the result holds trials, levels and bisections, else 0. Default 0. */
  int records;

  /* These two carry starts from one call to a later one with the same input and options, as where the first was broken
   * off. They are callbacks like those above. */

  /* Told of each start that was completed, when it ends: its record and its partition, [ncells], which last as long as
   * the callback runs; or NULL. Starts that were cut short or recalled are left out. Default NULL. */
  void (*completed)(const kapris_start *start, const int *part, void *user);
  /* Asked for each start, when it begins, whether its partition is known, or NULL. It looks at number and seed of
   * start; it returns 0, or writes the partition to part, [ncells], may set seconds of start, and returns 1. The start
   * then counts as completed with this partition, whose figures are counted anew; or, if it sets completed of start,
   * which is 1, to 0, as cut short with it. It has no trials, levels or bisections. A partition that no start can have
   * ends the call with KAPRIS_INVALID_ARGUMENT. Default NULL. */
  int (*recall)(kapris_start *start, int *part, void *user);

  /* These two let calls with the same input that run at the same time, as on several machines, find partitions
   * together. They are callbacks like those above. With arrived, results depend on when partitions arrive. */

  /* Told of each partition, [ncells], that is better than all before it of its start; it lasts as long as the callback
   * runs; or NULL. A part of it can be a little above its limit. Default NULL. */
  void (*improved)(const int *part, void *user);
  /* Asked between combinations, by starts with members under a time limit, or NULL: writes a partition from elsewhere
   * to part, [ncells], with fixed cells in their parts, and returns 1, or returns 0. The start goes on with it as if it
   * had made it. A partition that no start can have ends the call with KAPRIS_INVALID_ARGUMENT. Default NULL. */
  int (*arrived)(int *part, void *user);
} kapris_options;

/* Sets size and the defaults. *options belongs to the caller, must not be NULL, and holds nothing that would have to be
 * released. Cannot fail. */
KAPRIS_SAFE_API void kapris_init_options(kapris_options *options);

/* ------------------------------------------------------------------------------------------------------------------
 * What a call gives */

/* What a start came to. */
struct kapris_start {
  /* The seed that it used: a call with one start and this seed repeats it. */
  int64_t seed;
  int64_t cut;
  int64_t soed;
  /* Largest part weight over its share of the total, less 1. */
  double imbalance;
  /* As in kapris_result. */
  int64_t excess;
  int balanced;
  /* 0 = cut short: the figures are those of the best partition that it had, or 0 if it had none. */
  int completed;
  /* Wall time. */
  double seconds;
  /* first_start and up. */
  int number;
};

/* One trial: with members, a partition into all parts that a start has made, on its own or of others. Without, a
 * multilevel run of the first bisection of a start, or of its k-way partitioning, or a round of kapris_refine. Of a
 * start with more than 1000, those after are left out unless they were among the best so far. */
typedef struct kapris_trial {
  /* Index into starts. */
  int start;
  /* From 0. */
  int number;
  /* What the trial minimised when it ended. With members: the objective. Without: the cut of the bisection, or the
   * objective; with KAPRIS_CONNECTIVITY the SOED, by which such trials are compared. */
  int64_t value;
  /* The same after the V-cycles that came after the last trial; -1 where there were none. */
  int64_t cycled;
  /* Of the sides of the bisection, or of the parts. */
  double imbalance;
  /* 1 = the start went on with its partition; with members, its partition is that of the start. */
  int best;
  /* The numbers of the trials that it combines, twice the same of a V-cycle or where parts were made anew; -1 where
   * there are none. */
  int parents[2];
} kapris_trial;

/* One level on the road of the best trial of the best start, in the order of time. */
typedef struct kapris_level {
  /* KAPRIS_COARSENING: the level was made, without a partition. KAPRIS_INITIAL: the coarsest level with its first
   * partition. KAPRIS_REFINING: the level was refined. */
  kapris_phase phase;
  /* 0 in the trial itself, 1 and up in its V-cycles. */
  int cycle;
  /* 1 = of the refinement of all parts after the last bisection. */
  int polish;
  int cells, nets, pins;
  /* As in kapris_trial, on this level; -1 without a partition. */
  int64_t value;
  /* As in kapris_trial. */
  double imbalance;
} kapris_level;

/* One bisection of the recursion of the best start, which makes the parts first .. first + parts - 1 of its cells. */
typedef struct kapris_bisection {
  int first, parts;
  int64_t cut;
  /* Of the side that becomes the first parts / 2 of them, rounded down, and of the other. */
  int64_t weights[2];
  /* Wall time; two sides can be at work at the same time. */
  double seconds;
} kapris_bisection;

/* Everything a call gives. It belongs to the caller, with its arrays, until kapris_free_result. Without a partition,
 * part is NULL and only size, status, message, seconds and peak_bytes have a meaning. */
typedef struct kapris_result {
  /* sizeof(kapris_result) of the library. */
  size_t size;
  kapris_status status;
  /* Empty when the status is KAPRIS_OK. */
  char message[256];

  /* Lengths of the arrays. nstarts counts the starts that have begun, one at least: as many as the options say, unless
   * the call was ended early. */
  int ncells, nparts, nstarts;
  /* [ncells] part of each cell, 0 .. nparts-1; NULL when there is no partition. */
  int *part;

  int64_t cut;
  int64_t soed;
  int64_t connectivity;
  /* [nparts] */
  int64_t *part_weights;
  /* [nparts] largest weight that epsilon allows, that of kapris_part_limit. */
  int64_t *part_limits;
  /* [nparts] smallest weight that min_epsilon allows, that of kapris_part_minimum. */
  int64_t *part_minimums;
  /* Largest part weight over its share of the total, less 1; 0 if all cells together weigh 0. */
  double imbalance;
  /* What parts weigh above their limits and lack to their minimums, added up. */
  int64_t excess;
  /* 1 = excess is 0. */
  int balanced;

  /* The seed that the call used. */
  int64_t seed;
  /* Index into starts of the one that gave part; -1: a given partition, or a simple one made before the first start
   * ended. */
  int best_start;
  /* [nstarts] */
  kapris_start *starts;

  /* Wall time of the call; of it, checking and cleaning the input, and the starts. */
  double seconds;
  double seconds_prepare;
  double seconds_starts;
  /* What the starts spent on each phase: seconds of all threads added up, by kapris_phase. */
  double seconds_phase[5];
  /* Largest memory that the call held, the result left out. */
  size_t peak_bytes;

  /* With the option records and more than one part, else none. There are no levels with members, with a best_start of
   * -1, nor if that start was cut short in its first trial. */
  int ntrials, nlevels;
  /* [ntrials] by start, then by number. */
  kapris_trial *trials;
  /* [nlevels] */
  kapris_level *levels;
  /* [nbisections] with the option records and recursive bisection, else none; each before those of its sides. */
  int nbisections;
  kapris_bisection *bisections;
} kapris_result;

/* ------------------------------------------------------------------------------------------------------------------
 * The calls */

/* Partitions the cells of *problem into nparts parts; minimises options->objective under the limits of the parts.
 *
 *   problem   what is to be partitioned
 *   options   how
 *   result    receives the result, whatever the status. Only with KAPRIS_OUT_OF_MEMORY it can receive NULL, because
 *             not even the result could be made
 *
 * Returns the status, which the result holds too; KAPRIS_INVALID_ARGUMENT if result, problem or options is NULL.
 *
 * The best start is the first under: the smaller excess, so that balanced comes before not balanced; fewer empty parts
 * unless they are allowed; then the smaller objective; then the smaller cut, or with KAPRIS_CUT the smaller SOED; then
 * the smaller imbalance; then the smaller index.
 *
 * Method: each start makes members by recursive bisection as in KAPRIS_PartRecursive, see kapris.h for the sources,
 * but with limits for the final parts and no use of the clock; with KAPRIS_KWAY by direct partitioning. All parts of
 * each are refined by searches that climb hills, then by minimum cuts between pairs of parts. Then it combines pairs
 * of members: cells on which both agree are grouped, and the better one is refined on the way back; a child takes the
 * place of the member most like it. With more than two parts it also makes those of the best member anew, a few
 * neighbours at a time, and combines them likewise. Without members a start is one partitioning as
 * KAPRIS_PartRecursive or KAPRIS_PartKway does it. In the end a start moves or exchanges cells of parts above their
 * limits, and moves cells to parts that are empty or below their minimums. With one part there is nothing to do. */
KAPRIS_SAFE_API kapris_status kapris_partition(const kapris_problem *problem, const kapris_options *options,
                                               kapris_result **result);

/* Improves a partition. The result is never worse than part under the order above, and part itself if nothing better
 * was found.
 *
 *   problem, options, result   as above
 *   part                       [ncells] 0 .. nparts-1, with fixed cells in their parts; only read. It can be NULL if
 *                              ncells is 0
 *
 * Returns the status, as kapris_partition does.
 *
 * Parts above their limits or below their minimums are repaired first. Then each start refines all parts and improves
 * its best partition up to combinations times: by a V-cycle, and with more than two parts by turns with making parts
 * anew. With a time limit it goes on to make and combine partitions of its own, as kapris_partition does.
 *
 * Without members, each of the runs of each start goes on from the best partition of the start so far: passes, then
 * V-cycles unless vcycle is KAPRIS_VCYCLE_NEVER. Two parts are refined by the passes of bisections with
 * KAPRIS_RECURSIVE, by those of k-way partitioning with KAPRIS_KWAY; more parts always by the latter. coarsening,
 * reconst and the other values of vcycle do not matter. */
KAPRIS_SAFE_API kapris_status kapris_refine(const kapris_problem *problem, const kapris_options *options,
                                            const int *part, kapris_result **result);

/* Makes a better partition of several, as other calls, other machines or other programs have made them. The result is
 * never worse than the best of them under the order above, and the first of the best itself if nothing better was
 * found.
 *
 *   problem, options, result   as above
 *   ngiven                     number of partitions, >= 1
 *   parts                      [ngiven] each as part of kapris_refine; only read
 *
 * Returns the status, as kapris_partition does.
 *
 * Parts above their limits or below their minimums are repaired first. Then each start refines all parts of each
 * partition and combines pairs as kapris_partition does with its members, up to combinations times: cells on which
 * both agree are grouped, and the better one is refined on the way back. With a time limit it then goes on to make
 * partitions of its own and combines them too. One partition, or several that are the same, are improved as by
 * kapris_refine with members. Otherwise members, scheme, coarsening, refinement, vcycle, runs and reconst do not
 * matter. A start holds 4 bytes per cell for each partition. */
KAPRIS_SAFE_API kapris_status kapris_combine(const kapris_problem *problem, const kapris_options *options,
                                             int ngiven, const int *const *parts, kapris_result **result);

/* The figures of a partition, whoever made it, and the limits of its parts; nothing is changed.
 *
 *   problem, options, result   as above; of the options epsilon, min_epsilon, allow_empty and memory_limit matter,
 *                              and all must be valid
 *   part                       as for kapris_refine
 *
 * Returns KAPRIS_OK, or KAPRIS_INFEASIBLE if some part is above its limit or below its minimum, with a result that has
 * a copy of part and no starts; else a status without a partition. */
KAPRIS_SAFE_API kapris_status kapris_evaluate(const kapris_problem *problem, const kapris_options *options,
                                              const int *part, kapris_result **result);

/* The largest weight that epsilon allows a part: floor((1 + epsilon) x ceil(share x total)), with equal shares
 * floor((1 + epsilon) x ceil(total / nparts)), in whole numbers and at most 2^63 - 1. It is never less than an even
 * division needs.
 *
 *   total              cell weight, 0 .. 2^61
 *   nparts             number of parts
 *   target_weights     [nparts] as in kapris_problem, or NULL: all the same
 *   part               0 .. nparts-1
 *   epsilon            as in kapris_options: it counts as the shortest decimal that reads as this double
 *
 * A share counts as the decimal that its double was written as, if that has up to 15 digits, else as the fraction of
 * small terms that it comes from, such as 5/12. Returns -1 if an argument is out of range. */
KAPRIS_SAFE_API int64_t kapris_part_limit(int64_t total, int nparts, const double *target_weights, int part,
                                          double epsilon);

/* The smallest weight that min_epsilon allows a part: ceil((1 - min_epsilon) x floor(share x total)), computed in the
 * same way. It is never more than an even division gives. */
KAPRIS_SAFE_API int64_t kapris_part_minimum(int64_t total, int nparts, const double *target_weights, int part,
                                            double min_epsilon);

/* Releases a result with all its arrays; NULL is allowed. Cannot fail. */
KAPRIS_SAFE_API void kapris_free_result(kapris_result *result);

#ifdef __cplusplus
}
#endif

#endif /* KAPRIS_API_H */
