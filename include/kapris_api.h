/* kapris_api.h - multilevel hypergraph partitioning: the safe C interface.
 * SPDX-License-Identifier: MIT
 *
 * For programs that embed kapris. A call never ends the process, never prints and leaves nothing behind; it reports
 * a status and a message. Calls on different threads are independent, and one call can use several threads. With the
 * same input, options and seed a call gives the same partition on every machine and with any number of threads,
 * unless a time limit or a cancellation cuts it short.
 *
 *   kapris_problem problem;
 *   kapris_options options;
 *   kapris_result *result;
 *
 *   kapris_init_problem(&problem);
 *   kapris_init_options(&options);
 *   problem.ncells = ...;
 *   if (kapris_partition(&problem, &options, &result) == KAPRIS_OK)
 *     use(result->part);
 *   else
 *     fprintf(stderr, "%s\n", result->message);
 *   kapris_free_result(result);
 *
 * Cells, nets and parts are numbered from 0. The words cut and SOED are those of kapris.h.
 */
#ifndef KAPRIS_API_H
#define KAPRIS_API_H

#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#define KAPRIS_SAFE_API __attribute__((visibility("default")))
#else
#define KAPRIS_SAFE_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef enum kapris_status {
  KAPRIS_OK = 0,
  KAPRIS_INVALID_ARGUMENT = 1, /* nothing was done; the message names the argument, the index and the value */
  KAPRIS_INFEASIBLE = 2,       /* some part is above its limit; the best partition found is delivered */
  KAPRIS_OUT_OF_MEMORY = 3,    /* no partition */
  KAPRIS_MEMORY_LIMIT = 4,     /* the call would have exceeded memory_limit; no partition */
  KAPRIS_TIME_LIMIT = 5,       /* the best partition so far is delivered */
  KAPRIS_CANCELLED = 6,        /* the best partition so far is delivered */
  KAPRIS_INTERNAL = 7          /* a fault of the library; no partition */
} kapris_status;

/* The name of a status in lower case, such as "time limit". Static text. */
KAPRIS_SAFE_API const char *kapris_status_name(kapris_status status);

/* What is to be partitioned. The arrays belong to the caller and are only read during the call.
 *
 * Single-pin nets, nets without pins and repeated pins do not change any objective; they are taken out before the
 * engine sees them, so reported values are exact. Weights must be >= 0; sums are limited as in kapris.h, the
 * limits of the k-way functions holding for every call into more than two parts. */
typedef struct kapris_problem {
  size_t size;                 /* sizeof(kapris_problem), set by kapris_init_problem */
  int ncells;                  /* >= 0 */
  int nnets;                   /* >= 0 */
  const int64_t *cell_weights; /* [ncells] >= 0, or NULL: all 1 */
  const int64_t *net_weights;  /* [nnets] >= 0, or NULL: all 1 */
  const int *net_starts; /* [nnets + 1]: pins of net j are pins[net_starts[j]] .. pins[net_starts[j+1] - 1] */
  const int *pins;       /* [net_starts[nnets]] cell numbers */
  int nparts;            /* >= 2 */
  const double
      *part_shares; /* [nparts] fraction of the total weight that each part should get, > 0, sum 1; or NULL:
                                all equal */
  const int *fixed; /* [ncells] the part that a cell must go to, or -1; or NULL: all free */
} kapris_problem;

/* Equal shares, nothing fixed, no cells; nparts 2. */
KAPRIS_SAFE_API void kapris_init_problem(kapris_problem *problem);

typedef enum kapris_scheme { KAPRIS_RECURSIVE = 0, KAPRIS_KWAY = 1 } kapris_scheme;
typedef enum kapris_objective { KAPRIS_CUT = 0, KAPRIS_SOED = 1 } kapris_objective;

/* How cells are grouped on the way to the coarser levels. */
typedef enum kapris_coarsening {
  KAPRIS_ALTERNATE = 0,    /* strong stars and degree stars in turn, from run to run */
  KAPRIS_DEGREE_STARS = 1, /* cells of few nets choose first */
  KAPRIS_STRONG_STARS = 2, /* strongly connected cells choose first */
  KAPRIS_WHOLE_NETS = 3,
  KAPRIS_PAIRS = 4
} kapris_coarsening;

/* How a bisection is refined; ignored by direct k-way partitioning. */
typedef enum kapris_refinement {
  KAPRIS_FM = 0,
  KAPRIS_ONE_WAY_FM = 1,   /* passes out of one side, then FM */
  KAPRIS_EARLY_EXIT_FM = 2 /* passes on large levels end after a run of moves without improvement */
} kapris_refinement;

/* Which runs are improved by V-cycles. */
typedef enum kapris_vcycle {
  KAPRIS_VCYCLE_NEVER = 0,
  KAPRIS_VCYCLE_BEST = 1,      /* the best runs, at the end */
  KAPRIS_VCYCLE_IMPROVING = 2, /* every run that improves on the ones before */
  KAPRIS_VCYCLE_CLOSE = 3      /* every run that comes close to the best */
} kapris_vcycle;

/* What a start is doing. */
typedef enum kapris_phase {
  KAPRIS_PREPARING = 0,  /* between the others */
  KAPRIS_COARSENING = 1, /* grouping the cells of a level */
  KAPRIS_INITIAL = 2,    /* partitioning the coarsest level */
  KAPRIS_REFINING = 3,   /* improving the partition of a level */
  KAPRIS_BALANCING = 4   /* bringing parts within their limits */
} kapris_phase;

/* The name of a phase in lower case, such as "coarsening". Static text. */
KAPRIS_SAFE_API const char *kapris_phase_name(kapris_phase phase);

/* A moment of a call, for kapris_options.progress. */
typedef struct kapris_progress {
  int starts_done;    /* completed starts */
  int starts;         /* of this call */
  int64_t best;       /* objective of the best partition so far, -1 while there is none */
  double seconds;     /* wall time since the call began */
  double done;        /* estimate of the work done, 0 .. 1 */
  kapris_phase phase; /* of the start that reports */
  int level_cells;    /* cells of the level that it works on, 0 where there is none */
} kapris_progress;

/* How to partition. Fill with kapris_init_options, then change what differs. */
typedef struct kapris_options {
  size_t size;                  /* sizeof(kapris_options), set by kapris_init_options */
  kapris_scheme scheme;         /* KAPRIS_RECURSIVE */
  kapris_objective objective;   /* KAPRIS_CUT */
  kapris_coarsening coarsening; /* KAPRIS_ALTERNATE */
  kapris_refinement refinement; /* KAPRIS_FM */
  kapris_vcycle vcycle;         /* KAPRIS_VCYCLE_BEST */
  int runs;                     /* >= 1; multilevel runs of each bisection or k-way partitioning: 10 */
  int reconst;                  /* 1 = pieces of cut nets stay in the recursion: 0 */
  int64_t seed;                 /* 0 .. 2^31-1; negative = from the clock (the result tells which): 0 */
  double imbalance;    /* e >= 0: a part may weigh (1 + e) x its share of the total, rounded up: 0.03 */
  int starts;          /* >= 1; independent starts, of which the best counts: 1 */
  int first_start;     /* >= 0; number of the first of them, to spread starts over several calls: 0 */
  int threads;         /* >= 1; threads that the call may use, the calling one included: 1 */
  double time_limit;   /* wall seconds, 0 = none: 0 */
  size_t memory_limit; /* bytes that the call may hold at once, 0 = none: 0 */
  const volatile int *cancel; /* the call ends soon after *cancel becomes non-zero; or NULL */
  void (*progress)(const kapris_progress *progress, void *user); /* or NULL; a few times per second */
  void (*log)(const char *text, void *user);                     /* or NULL; receives the traces */
  int log_level; /* bit mask of traces as in kapris.h, option 8: 0 */
  void *user;    /* handed to progress and log */
  int records;   /* 1 = the result holds trials and levels: 0 */
} kapris_options;

/* Callbacks are called by any thread of the call, but never by two at once. They must return and not call kapris. */

KAPRIS_SAFE_API void kapris_init_options(kapris_options *options);

/* What one start gave. */
typedef struct kapris_start {
  int64_t seed; /* that the start used */
  int64_t cut;
  int64_t soed;
  double imbalance; /* largest part weight over its share of the total, less 1 */
  int balanced;     /* 1 = all parts within their limits */
  int completed;    /* 0 = cut short: values of the best partition that it had, if any */
  double seconds;   /* wall time */
  int number;       /* first_start and up */
} kapris_start;

/* One trial: a multilevel run of the first bisection of a start, or of its k-way partitioning; a round of kapris_refine.
 * Of a start with more than 1000, those after are left out unless they were among the best so far. */
typedef struct kapris_trial {
  int start;        /* index into starts */
  int number;       /* from 0 */
  int64_t value;    /* what the trial minimised when it ended: the cut of the bisection, or the objective */
  int64_t cycled;   /* the same after the V-cycles that came after the last trial; -1 where there were none */
  double imbalance; /* of the sides of the bisection, or of the parts */
  int best;         /* 1 = the start went on with its partition */
} kapris_trial;

/* One level on the road of the best trial of the best start, in the order of time. */
typedef struct kapris_level {
  kapris_phase
      phase;  /* KAPRIS_COARSENING: made, without a partition; KAPRIS_INITIAL: the coarsest one with its first
                         partition; KAPRIS_REFINING: refined */
  int cycle;  /* 0 in the trial itself, 1 and up in its V-cycles */
  int polish; /* 1 = of the refinement of all parts after the last bisection */
  int cells, nets, pins;
  int64_t value;    /* what is minimised, on this level; -1 without a partition */
  double imbalance; /* as in kapris_trial */
} kapris_level;

/* Everything a call gives; owned by the caller, released by kapris_free_result. */
typedef struct kapris_result {
  size_t size;
  kapris_status status;
  char message[256];           /* empty when the status is KAPRIS_OK */
  int ncells, nparts, nstarts; /* lengths of the arrays */
  int *part;                   /* [ncells] part of each cell; NULL when there is no partition */
  int64_t cut;
  int64_t soed;
  int64_t connectivity;  /* sum over the nets of (parts that it spans - 1) x weight */
  int64_t *part_weights; /* [nparts] */
  int64_t *part_limits;  /* [nparts] largest weight allowed by imbalance */
  double imbalance;      /* largest part weight over its share of the total, less 1 */
  int balanced;          /* 1 = all parts within their limits */
  int64_t seed;          /* that the call used */
  int best_start; /* index into starts of the one that gave part; -1: the given partition, or a simple one made
                     before the first start ended */
  kapris_start *starts;   /* [nstarts] */
  double seconds;         /* wall time of the call */
  double seconds_prepare; /* of it: checking and cleaning the input */
  double seconds_starts;  /* of it: the starts */
  /* What the starts spent on each phase: seconds of all threads added up, by kapris_phase. */
  double seconds_phase[5];
  size_t peak_bytes; /* largest memory that the call held, the result left out */
  /* With records, else empty. Without levels: a best_start of -1, or a start that was cut short in its first trial. */
  int ntrials, nlevels;
  kapris_trial *trials; /* [ntrials] by start, then by number */
  kapris_level *levels; /* [nlevels] */
} kapris_result;

/* Partitions. *result always receives a result, except with the status KAPRIS_OUT_OF_MEMORY or
 * KAPRIS_INVALID_ARGUMENT, when it can be NULL because not even that could be made. The best start is the first
 * under: balanced before not balanced; then the smaller objective; then the smaller other objective; then the smaller
 * imbalance; then the smaller index. */
KAPRIS_SAFE_API kapris_status kapris_partition(const kapris_problem *problem, const kapris_options *options,
                                               kapris_result **result);

/* Improves a partition: part[ncells] holds 0 .. nparts-1, and fixed cells in their parts. The result is never worse than
 * part under the order above, and part itself if nothing better was found. Each of the runs of each start goes on from
 * the best partition of the start so far; scheme tells two-way from k-way refinement only when nparts is 2, and
 * coarsening, reconst and, unless it is KAPRIS_VCYCLE_NEVER, vcycle do not matter. part is only read. */
KAPRIS_SAFE_API kapris_status kapris_refine(const kapris_problem *problem, const kapris_options *options,
                                            const int *part, kapris_result **result);

/* Releases a result; NULL is allowed. */
KAPRIS_SAFE_API void kapris_free_result(kapris_result *result);

#ifdef __cplusplus
}
#endif

#endif /* KAPRIS_API_H */
