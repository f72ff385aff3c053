/* kapris.h - multilevel hypergraph partitioning: the plain C interface.
 * SPDX-License-Identifier: MIT
 *
 * Five functions over arrays of int. Programs that must not be ended by an error, that need weights of 64 bits, several
 * threads or limits of time and memory take the safe interface instead: kapris_api.h, in C++ kapris.hpp.
 *
 *   int netptr[] = {0, 2, 4}, netind[] = {0, 1, 1, 2};   (nets {0, 1} and {1, 2})
 *   int options[9] = {0}, part[3], cut;
 *   KAPRIS_PartRecursive(3, 2, NULL, netptr, netind, NULL, 2, 5, options, part, &cut);
 *
 * WORDS
 *
 * A hypergraph is a set of cells (vertices), each with an integer weight, and a set of nets (hyperedges), each with an
 * integer weight and the cells that it connects, its pins. A partition gives every cell the number of a part. Weights
 * have no unit: they are what the caller makes of them, areas or numbers of wires for example.
 *
 *   cut    the total weight of the nets whose pins lie in more than one part
 *   SOED   the sum of external degrees: for every net that spans k > 1 parts, k times its weight
 *
 * THE HYPERGRAPH
 *
 * It is passed net by net, in compressed form. All numbers have 32 bits; cells, nets and parts are counted from 0.
 *
 *   ncells     number of cells, >= 0
 *   nnets      number of nets, >= 0
 *   cellwgts   [ncells] cell weights >= 0, or NULL: every cell weighs 1
 *   netptr     [nnets + 1] netptr[0] = 0; the pins of net j are netind[netptr[j]] .. netind[netptr[j+1] - 1];
 *              it can be NULL if nnets is 0
 *   netind     [netptr[nnets]] the pins, cell numbers 0 .. ncells-1; it can be NULL if there are none
 *   netwgts    [nnets] net weights >= 0, or NULL: every net weighs 1
 *
 * A net may have one pin or none, and may name a cell twice.
 *
 * Every sum must stay within 32 bits. None of these may be above 2^31-1 = 2147483647:
 *   - twice the total cell weight;
 *   - the total net weight plus 1;
 *   - the weight of the nets of any one cell, a net counting once for each of its pins on the cell;
 *   - in the k-way functions, and in KAPRIS_PartRecursive into 3 to 64 parts, ten times the total net weight plus 1;
 *   - there also the sum over the nets of weight x min(pins, nparts).
 *
 * THE OTHER ARGUMENTS
 *
 *   nparts     number of parts
 *   UBfactor   allowed imbalance in percent; of what, each function tells
 *   options    [9] the option vector, below
 *   part       [ncells] the part of each cell, 0 .. nparts-1; it can be NULL if ncells is 0
 *   cut        [1] receives the value that was reached; each function tells of what
 *
 * Slot 0 of the option vector is 0 for the defaults, whatever the other slots hold; with anything else they are read:
 *
 *   slot  name     value                                                                           default
 *     1   Nruns    number of independent trials, >= 1                                                 10
 *     2   Ctype    how cells are grouped on the way to coarser levels:                                 1
 *                    1  stars in two orders, in turn from trial to trial
 *                    2  stars by degree: cells of few nets choose first
 *                    3  stars by strength: strongly connected cells choose first
 *                    4  whole nets
 *                    5  pairs
 *     3   Rtype    recursive bisection: the refinement                                                 1
 *                    1  FM
 *                    2  passes out of one side, then FM
 *                    3  FM whose passes end early
 *                  k-way: the objective
 *                    1  the cut
 *                    2  the SOED
 *     4   Vcycle   which trials are improved by V-cycles:                                              1
 *                    0  none
 *                    1  the best ones, after the last trial
 *                    2  each trial that improves on those before
 *                    3  each trial that comes close to the best
 *     5   Reconst  recursive bisection only: nets that a bisection cuts                                0
 *                    0  leave the recursion
 *                    1  stay in it, as their pieces on both sides
 *     6   Fixed    recursive bisection only: 1 if part holds parts for some cells on entry, else 0     0
 *     7   Seed     >= 0 fixes the random sequence, negative takes the clock                           -1
 *     8   Debug    sum of the traces that are printed on standard output:                              0
 *                    1  coarsening levels                  16  one line per trial
 *                    2  initial partitions                 32  CPU times
 *                    4  refinement passes                 128  long lines per trial, and V-cycles
 *                    8  one summary per bisection         256  every move
 *                       or k-way run
 *
 * WHAT HOLDS FOR EVERY FUNCTION
 *
 * Ownership   All arrays belong to the caller. None is kept, and only part and cut are written. A call leaves no memory
 *             behind.
 * Errors      There are no error returns. An invalid argument, a sum beyond its limit and exhausted memory print one
 *             message on standard error and end the process with exit status 0. Of a wrong array the message names
 *             the index and the value. Arguments are checked before any work.
 * Output      With Debug 0 nothing is printed on standard output, except "Wrong cut!" should the reported cut differ
 *             from a recount, which nets of one pin and pins named twice can cause, and "Fixing failed" should a
 *             pre-assigned cell lie in another part.
 * Threads     Calls on different threads are independent. Each thread has its own random sequence; it starts as if
 *             seeded with 1, and a call leaves it where the call's last draw left it.
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
 *   ncells .. netwgts   the hypergraph, as above
 *   nparts     >= 2
 *   UBfactor   1 .. 49: in percent of the weight that is bisected, how far each side may be away from its share. 5
 *              allows 45:55. It holds for each bisection, so that what the parts may differ by adds up with the depth.
 *   options    all slots are read
 *   part       out: the part of each cell. With Fixed 1 in, too: -1 for a free cell, or the part that the cell must go
 *              to
 *   cut        with 3 to 64 parts, the cut; otherwise as in KAPRIS_PartRecursiveInternal
 *
 * Into 3 to 64 parts, the result of the bisections is refined once more by k-way passes and V-cycles.
 *
 * Method: trials that coarsen, bisect the coarsest level and refine on the way back (T. N. Bui, C. Jones, "A heuristic
 * for reducing fill-in in sparse matrix factorization", Parallel Processing for Scientific Computing, 1993), by passes
 * of single moves, FM for short (C. M. Fiduccia, R. M. Mattheyses, "A linear-time heuristic for improving network
 * partitions", Design Automation Conference, 1982). */
KAPRIS_API void KAPRIS_PartRecursive(int ncells, int nnets, const int *cellwgts, const int *netptr,
                                     const int *netind, const int *netwgts, int nparts, int UBfactor,
                                     const int *options, int *part, int *cut);

/* KAPRIS_PartRecursive without the k-way passes at the end, whatever nparts is. KAPRIS_PartKway makes its initial
 * partitions with it.
 *
 *   cut        the sum of the cuts of all bisections: the cut with Reconst 0; with Reconst 1 a net counts once for each
 *              bisection that cuts it or a piece of it, its parts less 1
 *
 * The other arguments, the errors and the method are those of KAPRIS_PartRecursive. */
KAPRIS_API void KAPRIS_PartRecursiveInternal(int ncells, int nnets, const int *cellwgts, const int *netptr,
                                             const int *netind, const int *netwgts, int nparts, int UBfactor,
                                             const int *options, int *part, int *cut);

/* Partitions directly into nparts parts; minimises the cut (Rtype 1) or the SOED (Rtype 2).
 *
 *   ncells .. netwgts   the hypergraph, as above
 *   nparts     >= 2
 *   UBfactor   >= 5: in percent of the average part weight, how far a part may be above it. Refinement takes no part
 *              above that, but does not empty a part that starts above it.
 *   options    slots 1 to 4, 7 and 8 are read
 *   part       out: the part of each cell
 *   cut        the cut or, with Rtype 2, the SOED
 *
 * The initial partition of every trial is seeded from the clock, so that two calls with one seed can differ.
 *
 * Method: as KAPRIS_PartRecursive, but the trials are those of a k-way partition: its coarsest level is partitioned by
 * recursive bisection, and refined by greedy passes over the cells in random order. The gain of a move between any two
 * parts is that of L. A. Sanchis, "Multiple-way network partitioning", IEEE Transactions on Computers 38 (1989). */
KAPRIS_API void KAPRIS_PartKway(int ncells, int nnets, const int *cellwgts, const int *netptr,
                                const int *netind, const int *netwgts, int nparts, int UBfactor,
                                const int *options, int *part, int *cut);

/* Improves a bisection by FM passes; minimises the cut.
 *
 *   ncells .. netwgts   the hypergraph, as above
 *   UBfactor   as in KAPRIS_PartRecursive, but its range is not checked
 *   options    only the traces (slot 8) have an effect; slots 1 to 4 are checked. The random sequence of the thread
 *              goes on, so that Seed has none
 *   part       in: 0 or 1 for each cell; out: the improved bisection
 *   cut        its cut
 *
 * The cut does not rise. Moves stay if they lead to sides within UBfactor and to a smaller cut, or to the same cut and
 * sides that differ less; a bisection beyond UBfactor stays where no such moves are found.
 *
 * Method: that of C. M. Fiduccia and R. M. Mattheyses, see KAPRIS_PartRecursive. */
KAPRIS_API void KAPRIS_2WayRefine(int ncells, int nnets, const int *cellwgts, const int *netptr,
                                  const int *netind, const int *netwgts, int UBfactor, const int *options,
                                  int *part, int *cut);

/* Improves a partition by k-way passes and V-cycles; minimises the cut, or the SOED in the V-cycles if Rtype is 2.
 *
 *   ncells .. netwgts   the hypergraph, as above
 *   nparts     >= 1
 *   UBfactor   as in KAPRIS_PartKway; values below 5 count as 5
 *   options    slots 3 and 8 have an effect; slots 1, 2 and 4 are checked. The random sequence of the thread goes on,
 *              so that Seed has none
 *   part       in: 0 .. nparts-1 for each cell; out: the improved partition
 *   cut        its cut, also with Rtype 2
 *
 * Method: the passes of KAPRIS_PartKway. A V-cycle coarsens within the parts and refines on the way back. */
KAPRIS_API void KAPRIS_KWayRefine(int ncells, int nnets, const int *cellwgts, const int *netptr,
                                  const int *netind, const int *netwgts, int nparts, int UBfactor,
                                  const int *options, int *part, int *cut);

#ifdef __cplusplus
}
#endif

#endif /* KAPRIS_H */
