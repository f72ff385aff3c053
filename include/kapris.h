/* kapris.h - multilevel hypergraph partitioning: the classic C interface.
 * SPDX-License-Identifier: MIT
 *
 * A hypergraph is a set of cells (vertices), each with an integer weight, and a set of nets (hyperedges),
 * each with an integer weight and the cells that it connects (its pins). A partition gives every cell a part
 * number. cut   the total weight of the nets whose pins lie in more than one part SOED  sum of external
 * degrees: for every net that spans k > 1 parts, k times its weight
 *
 * The hypergraph is passed in compressed net form; all numbers are 32-bit and counted from 0:
 *
 *   ncells    number of cells (0 is allowed)
 *   nnets     number of nets (0 is allowed)
 *   cellwgts  [ncells] cell weights >= 0, or NULL: every cell weighs 1
 *   netptr    [nnets+1] netptr[0] = 0; the pins of net j are netind[netptr[j]] .. netind[netptr[j+1]-1]
 *   netind    [netptr[nnets]] the pins, cell numbers in 0 .. ncells-1
 *   netwgts   [nnets] net weights >= 0, or NULL: every net weighs 1
 *
 * A net may have one pin or none, and may name a cell twice. These limits keep every sum within 32 bits: twice the
 * total cell weight, the total net weight plus one, and the weight of the nets of any one cell, counted once for each
 * pin on it, must be at most 2^31-1; for the k-way functions, and for KAPRIS_PartRecursive into 3 to 64 parts, also ten
 * times the total net weight plus one, and the sum over the nets of weight x min(pins, nparts).
 *
 * The other arguments:
 *
 *   nparts    number of parts
 *   UBfactor  imbalance allowance in percent; its meaning depends on the function, see there
 *   options   [9] the option vector:
 *               0  0 = use the defaults and ignore the other slots, anything else = read them
 *               1  Nruns    number of independent trials, >= 1                              default 10
 *               2  Ctype    coarsening: 1 alternate per trial between stars in two orders,
 *                           2 stars by degree, 3 stars by connection strength, 4 whole nets,
 *                           5 pairs                                                         default 1
 *               3  Rtype    recursive: refinement 1 FM, 2 one-way FM then FM, 3 early-exit FM;
 *                           k-way: objective 1 cut, 2 SOED                                  default 1
 *               4  Vcycle   V-cycles for 0 no trial, 1 the best trials at the end,
 *                           2 each trial that improves, 3 each trial that comes close       default 1
 *               5  Reconst  recursive only: 0 nets that are cut leave the recursion,
 *                           1 their pieces stay                                             default 0
 *               6  Fixed    recursive only: 1 = part holds pre-assigned parts on entry      default 0
 *               7  Seed     >= 0 fixes the random sequence, negative = seed from the clock  default -1
 *               8  Debug    bit mask of traces on standard output, see below                default 0
 *   part      [ncells] out: the part of each cell, 0 .. nparts-1. In: see the function
 *   cut       out: the objective value that was reached
 *
 * Ownership: all arrays belong to the caller, none is kept, and only part and cut are written.
 *
 * Errors: there are no error returns. Invalid arguments and exhausted memory print one message on standard
 * error and end the process with exit status 0. The message names the array, the index and the value.
 *
 * Threads: calls on different threads are independent. Each thread has its own random sequence; it starts as
 * if seeded with 1, and a call leaves it where the call's last draw left it.
 *
 * Traces (bits of option 8): 1 coarsening levels, 2 initial partitions, 4 refinement passes, 8 one summary
 * per bisection or k-way run, 16 one line per trial, 32 CPU times, 128 long trial lines and V-cycles, 256
 * every move. With 0, nothing is printed, except "Wrong cut!" should the reported cut differ from a recount
 * and "Fixing failed" should a pre-assigned cell lie in another part.
 */
#ifndef KAPRIS_H
#define KAPRIS_H

#define KAPRIS_VERSION_MAJOR 0
#define KAPRIS_VERSION_MINOR 1
#define KAPRIS_VERSION_PATCH 0

#if defined(__GNUC__)
#define KAPRIS_API __attribute__((visibility("default")))
#else
#define KAPRIS_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Partitions by multilevel recursive bisection; minimises the cut.
 *
 * nparts >= 2. UBfactor 1 .. 49: each bisection may leave a side up to UBfactor percent of the total away
 * from its share, so 5 allows 45:55. The allowance holds per bisection and adds up with their depth. With 3
 * to 64 parts the result is polished by direct k-way refinement.
 *
 * With Fixed 1, part holds on entry -1 for a free cell, or the part that the cell must go to.
 *
 * Method: multilevel bisection with Fiduccia-Mattheyses refinement (C. M. Fiduccia, R. M. Mattheyses, "A
 * linear-time heuristic for improving network partitions", DAC 1982). */
KAPRIS_API void KAPRIS_PartRecursive(int ncells, int nnets, const int *cellwgts, const int *netptr,
                                     const int *netind, const int *netwgts, int nparts, int UBfactor,
                                     const int *options, int *part, int *cut);

/* KAPRIS_PartRecursive without the k-way polish, whatever nparts is. It makes the initial partitions of
 * KAPRIS_PartKway; cut is then the sum of the cuts of all bisections. */
KAPRIS_API void KAPRIS_PartRecursiveInternal(int ncells, int nnets, const int *cellwgts, const int *netptr,
                                             const int *netind, const int *netwgts, int nparts, int UBfactor,
                                             const int *options, int *part, int *cut);

/* Partitions directly into nparts parts; minimises the cut (Rtype 1) or the SOED (Rtype 2), which cut
 * receives.
 *
 * nparts >= 2. UBfactor >= 5: refinement takes no part above (1 + UBfactor/100) times the average part
 * weight, but does not empty a part that starts above it. The initial partition of every trial is seeded from
 * the clock, so two runs with one seed can differ. */
KAPRIS_API void KAPRIS_PartKway(int ncells, int nnets, const int *cellwgts, const int *netptr,
                                const int *netind, const int *netwgts, int nparts, int UBfactor,
                                const int *options, int *part, int *cut);

/* Improves the bisection in part (values 0 and 1) by Fiduccia-Mattheyses passes; cut receives its cut.
 *
 * UBfactor as in KAPRIS_PartRecursive. The options read are 1, 2, 3, 4, 7 and 8; the call does not seed the
 * random sequence, so Seed has no effect. */
KAPRIS_API void KAPRIS_2WayRefine(int ncells, int nnets, const int *cellwgts, const int *netptr,
                                  const int *netind, const int *netwgts, int UBfactor, const int *options,
                                  int *part, int *cut);

/* Improves the partition in part (values 0 .. nparts-1) by k-way passes and V-cycles; cut receives its cut.
 *
 * UBfactor as in KAPRIS_PartKway, values below 5 count as 5. The first passes always lower the cut; with
 * Rtype 2 the V-cycles then lower the SOED. Options and seed as in KAPRIS_2WayRefine. */
KAPRIS_API void KAPRIS_KWayRefine(int ncells, int nnets, const int *cellwgts, const int *netptr,
                                  const int *netind, const int *netwgts, int nparts, int UBfactor,
                                  const int *options, int *part, int *cut);

#ifdef __cplusplus
}
#endif

#endif /* KAPRIS_H */
