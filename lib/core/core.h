// lib/core/core.h - what every other folder builds on: the hypergraph record, checked memory, vectors, random
// numbers, sorting, quality measures and pruning.
// SPDX-License-Identifier: MIT
#pragma once

#include "control/ctrl.h"

#include <climits>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <type_traits>

// ----------------------------------------------------------------------------------------------------------
// Checks. 1 light: O(1). 2 normal: O(degree). 3 heavy: may walk the whole level. A check has no side effect,
// draws no random number and does not allocate through the labelled allocators, so a checked run and an
// unchecked run take the same decisions. Because the level is tested in an ordinary condition, checks are
// always compiled.

#ifndef KAPRIS_CHECK_LEVEL
#define KAPRIS_CHECK_LEVEL 0
#endif

// Prints what is broken and aborts: a failed check is a fault of this library, not of its caller.
[[noreturn]] void CheckFailed__(const char *what, const char *file, int line);

#define CHECK_AT__(level, condition)                                                                         \
  do {                                                                                                       \
    if (KAPRIS_CHECK_LEVEL >= (level) && !(condition))                                                       \
      CheckFailed__(#condition, __FILE__, __LINE__);                                                         \
  } while (0)
#define CHECK_LIGHT(condition)  CHECK_AT__(1, condition)
#define CHECK_NORMAL(condition) CHECK_AT__(2, condition)

// For validators, which return the first broken invariant or NULL. Those of a whole level look at it after a move n if
// IsSample__: after some moves, the fewer the larger it is; after all at check level 4.
#define CHECK_VALID(validator)                                                                               \
  do {                                                                                                       \
    if constexpr (KAPRIS_CHECK_LEVEL >= 3) {                                                                 \
      if (const char *broken__ = (validator))                                                                \
        CheckFailed__(broken__, __FILE__, __LINE__);                                                         \
    }                                                                                                        \
  } while (0)

inline bool IsSample__(int n, int ncells)
{
  const std::int64_t size = ncells / 64;

  return KAPRIS_CHECK_LEVEL >= 4 || n % (16 + size * size) == 0;
}

// ----------------------------------------------------------------------------------------------------------
// Errors (memory.cpp)

enum FatalKind { FATAL_INPUT, FATAL_MEMORY, FATAL_MEMORY_LIMIT };

// A fatal error, thrown instead of ending the process while a handler is active on this thread.
struct FatalError {
  FatalKind kind;
  char message[512];
};

// Prints the message and a newline on standard error and ends the process with status 0, unless a handler is
// active on the calling thread: then throws FatalError.
[[noreturn]] void errexit__(const char *format, ...) __attribute__((format(printf, 1, 2)));

// While at least one handler is pushed on a thread, errexit__ throws there. Whoever pushes must catch
// FatalError and give the blocks of the failed call back with LedgerRelease__.
void PushErrorHandler__();
void PopErrorHandler__();

// ----------------------------------------------------------------------------------------------------------
// Memory (memory.cpp). Every block of the library comes from QVmalloc__ and is recorded in a ledger: that of
// the calling thread, or one that the threads of a call share. A block must be freed under the ledger that it
// was allocated under.

struct BlockHeader;

struct Ledger {
  std::size_t blocks = 0;   // live blocks
  std::size_t bytes = 0;    // live bytes, as requested
  std::size_t peak = 0;     // largest value of bytes since LedgerResetPeak__
  std::uint64_t serial = 0; // number of the newest block, live or not
  std::size_t maxbytes = 0; // limit of bytes, 0 = none
  long requests = -1;       // that still succeed, negative = all
  BlockHeader *newest = nullptr;
  std::mutex lock = {};
};

const Ledger *Ledger__(); // of the calling thread
// From here on the calling thread uses this ledger, or its own again when it is NULL; returns the one before.
Ledger *LedgerUse__(Ledger *ledger);
void LedgerResetPeak__();
// Frees every live block that is younger than the given serial number.
void LedgerRelease__(std::uint64_t serial);
// A limit on the live bytes (0 = none), and the number of requests that still succeed (negative = all).
void LedgerLimit__(std::size_t bytes, long requests);

// A block of nbytes; NULL when nbytes is 0. label names the requesting function and the object; it appears in
// the message when memory runs out.
void *QVmalloc__(std::size_t nbytes, const char *label);
void QVfreeBlock__(void *block);

template <class T>
T *QVarray__(std::int64_t n, const char *label)
{
  static_assert(std::is_trivially_copyable_v<T>);
  return static_cast<T *>(QVmalloc__(static_cast<std::size_t>(n) * sizeof(T), label));
}

inline int *imalloc__(std::int64_t n, const char *label)
{
  return QVarray__<int>(n, label);
}

inline float *fmalloc__(std::int64_t n, const char *label)
{
  return QVarray__<float>(n, label);
}

int *ismalloc__(std::int64_t n, int value, const char *label);

// Releases the blocks behind the given pointers and sets the pointers to NULL; a NULL pointer is passed over.
template <class... T>
void QVfree__(T **...pointers)
{
  ((QVfreeBlock__(*pointers), *pointers = nullptr), ...);
}

// ----------------------------------------------------------------------------------------------------------
// Traces (memory.cpp): everything that the library prints on standard output goes through these two.

void Trace__(const char *format, ...) __attribute__((format(printf, 1, 2)));
void TraceFlush__();

// Where the traces of a thread go instead of standard output; write NULL = standard output.
struct TraceSink {
  void (*write)(void *owner, const char *text);
  void *owner;
};
TraceSink TraceUse__(TraceSink sink); // returns the one before

// ----------------------------------------------------------------------------------------------------------
// Vectors and arithmetic (vector.cpp)

int iasum__(int n, const int *x);                       // 0 for n < 1; wraps in 32 bits
int *iset__(std::int64_t n, int value, int *x);         // returns x
int *icopy__(std::int64_t n, const int *src, int *dst); // returns dst
int iamax__(int n, const int *x);                       // index of the first largest entry, 0 for n < 2
int iamin__(int n, const int *x);                       // index of the first smallest entry, 0 for n < 2

// Sums that may leave 32 bits on hostile input wrap around instead of being undefined.
inline int AddWrap__(int a, int b)
{
  return static_cast<int>(static_cast<unsigned>(a) + static_cast<unsigned>(b));
}

inline int SubWrap__(int a, int b)
{
  return static_cast<int>(static_cast<unsigned>(a) - static_cast<unsigned>(b));
}

inline int MulWrap__(int a, int b)
{
  return static_cast<int>(static_cast<unsigned>(a) * static_cast<unsigned>(b));
}

inline int AbsDiff__(int a, int b)
{
  int d = SubWrap__(a, b);
  return d < 0 ? SubWrap__(0, d) : d;
}

// Toward zero; NaN and what lies outside the range of int give INT_MIN, as the conversion of x86-64 does.
inline int Truncate__(double x)
{
  return x > -2147483649.0 && x < 2147483648.0 ? static_cast<int>(x) : INT_MIN;
}

// ----------------------------------------------------------------------------------------------------------
// Random numbers (random.cpp): one generator per thread.

// Seeds with the low 32 bits of seed, or with the wall clock in seconds when seed is negative.
void InitRandom__(std::int64_t seed);
int RandomDraw__(); // 0 .. 2^31-1
// The state of the thread's generator, to put it back after work that must not disturb it.
struct RandomState {
  std::uint32_t words[31];
  int next;
};
RandomState SaveRandom__();
void RestoreRandom__(const RandomState *saved);
// Shuffles p[0..n-1] in blocks of four, n/16 times; init 1 first sets p to 0, 1, ..., n-1.
void RandomPermute__(int *p, int n, int init);
// Shuffles p[0..n-1] by n swaps over the full range; init as above.
void RandomPermuteFine__(int *p, int n, int init);

// ----------------------------------------------------------------------------------------------------------
// Sorting (sort.cpp)

struct KeyVal {
  int key;
  int val;
};

// Stable sort of the permutation order[0..n-1] by keys[item], keys in 0..maxkey, into out.
void BucketSortKeysInc(int n, int maxkey, const int *keys, const int *order, int *out);
void iintsort__(int n, int *a);
// The same for ints that differ from one another; for few, without branches on their order, which cannot be foretold.
void SortDistinct__(int n, int *a);
// Increasing and decreasing key, signed. The order of equal keys is defined by the procedure, see there.
void ikeysort__(int n, KeyVal *pairs);
void dkeysort__(int n, KeyVal *pairs);

// ----------------------------------------------------------------------------------------------------------
// The hypergraph record (hgraph.cpp)

// K-way refinement: what a net knows of a part that it touches.
struct NetDegree {
  int pid;   // part
  int npins; // its pins there
};

// K-way refinement: what a cell knows of a part q other than its own.
struct KDegree {
  int pid;   // q
  int ed;    // weight of the nets that moving the cell to q makes uncut
  int pref;  // nets with more pins in q than in the cell's part, minus nets with fewer
  int kgain; // fall of the sum over nets of (parts touched - 1) x weight when the cell moves to q
};

struct NetInfo {
  int ndegrees;       // parts that the net touches
  int weight;         // that it can add to the cut: 0 for a net of one pin
  NetDegree *degrees; // the net's slice of nrdata, room for one entry per pin
};

struct RInfo {
  int ndegrees;     // entries in use
  int id;           // weight of the incident nets that lie wholly in the cell's part
  int soloed;       // weight of the incident cut nets that have no other pin in the cell's part
  int stale;        // 1 = the fields above are not up to date
  KDegree *degrees; // the cell's room in crdata, NULL while it has none
};

// Room for the entries of many cells, which follow.
struct KDegreeBlock {
  KDegreeBlock *next;
  std::int64_t size, used; // entries
};

// One hypergraph: the caller's, its pruned copy, a coarser level, or a sub-hypergraph of the recursion. The
// record owns its arrays, except that label belongs to the recursion and where is moved between records by
// the drivers.
struct HGraph {
  int ncells;
  int nislands; // cells on no net that have been set aside behind the ncells kept ones
  int nnets;
  int dropwgt; // weight of the nets that shrank to one pin on the way to this level
  int isroot;  // 1 = owned by the caller of the recursion
  int nfixed;  // the first nfixed cells are anchors of pre-assigned cells: never merged, never moved

  int *incptr;    // [ncells+1] start of each cell's nets in incind
  int *incind;    // [pins] incident nets of all cells
  int *netptr;    // [nnets+1] start of each net's pins in netind
  int *netind;    // [pins]
  int *islandmap; // [ncells+nislands] old to new cell number, only on the finest level and with islands

  int *cellwgt;   // [ncells]
  int *netwgt;    // [nnets]
  int *adjwgt;    // [ncells] sum of the weights of the incident nets
  float *edgewgt; // [nnets] net weight / (pins - 1); 0 for nets of fewer than two pins
  int *label;     // [ncells] number of each cell at the top of the recursion

  int *cellmap; // [ncells] coarse cell of each cell, UNMATCHED while it has none
  int *netmap;  // [nnets] coarse net of each net, -1 when it was dropped
  int *mptr;    // [groups+1] start of each group's members in mind
  int *mind;    // [ncells] members of the groups
  HGraph *coarser, *finer;
  int level; // contractions since coarsening began

  int *where; // [ncells+nislands] part of each cell
  int mincut;
  int pwgts[2];

  int objval; // k-way objective: mincut or soed
  int soed;
  NetInfo *nrinfo;   // [nnets]
  RInfo *crinfo;     // [ncells]
  NetDegree *nrdata; // [pins]
  KDegreeBlock *crdata;
  int *kpwgts; // [nparts]
};

enum { UNMATCHED = -1 }; // cellmap

HGraph *CreateHGraph__();
void InitHGraph__(HGraph *graph);
// A record with copies of the given arrays; weights that are NULL are all 1. nfixed is 0.
HGraph *CopyHGraph__(int ncells, int nnets, const int *cellwgts, const int *netptr, const int *netind,
                     const int *netwgts);
// Releases the record and its arrays; leaves label, coarser and finer alone.
void FreeHGraph__(HGraph *graph);
// Releases what a trial adds: matching, refinement and k-way arrays and where. Structure and weights stay.
void FreeRootHGraph__(HGraph *graph);
// Releases what a V-cycle adds to the level that it starts from: all of the above but where.
void FreeCycleState__(HGraph *graph);
// Builds incptr, incind, adjwgt and edgewgt; once per record.
void CreateIncidentHGraph__(HGraph *graph);

inline int NetSize__(const HGraph *graph, int net)
{
  return graph->netptr[net + 1] - graph->netptr[net];
}

// The weight that each pair of pins of a net receives in matching.
inline float EdgeWeight__(int netwgt, int npins)
{
  return static_cast<float>(static_cast<double>(netwgt) / (npins - 1));
}

// ----------------------------------------------------------------------------------------------------------
// Measures (measures.cpp)

int ComputeActualCut__(const HGraph *graph, const int *part);  // any number of parts
int ComputeActualSOED__(const HGraph *graph, const int *part); // any number of parts
// Weight of the lighter side over the total, 0.5 at best; NaN without weight.
float ComputeBalance__(const HGraph *graph, const int *part);

// ----------------------------------------------------------------------------------------------------------
// Records of levels and trials (record.cpp); they do nothing unless ctrl->recorded

// A trial, its later V-cycles, a V-cycle or the polish begins.
void RecordBegin__(const Control *ctrl, StepKind kind, int trial);
// What phase has made of a level. value is that of the partition in where, -1 if there is none yet.
void RecordLevel__(const Control *ctrl, Phase phase, const HGraph *graph, int value);
// A trial, or its later V-cycles, ended with the partition in where. kept, [nkept]: see Step.
void RecordEnd__(const Control *ctrl, int trial, const HGraph *graph, int value, bool taken, const int *kept,
                 int nkept);

// ----------------------------------------------------------------------------------------------------------
// Pruning (prune.cpp)

// A copy with every cell and only the nets of at most ctrl->maxnetsize pins, its incidence built. If that is all of graph,
// whose incidence must be built, graph itself: free the result only if it is another record.
HGraph *PruneHGraph__(const Control *ctrl, HGraph *graph);
// The largest weight of a coarse cell; sets ctrl->heavycells.
int ComputeMaxCellWgt__(Control *ctrl, int n, const int *cellwgt);
int NumOfLargeNets__(int nnets, const int *netptr); // nets of four or more pins

// ----------------------------------------------------------------------------------------------------------
// Validators (check.cpp): the first broken invariant, or NULL.

const char *CheckHGraph__(const HGraph *graph);    // structure and weights
const char *CheckIncidence__(const HGraph *graph); // incptr, incind, adjwgt against the pins
// Whether every maintained cut must equal a recount: no net of one pin, no pin listed twice.
bool HasPlainNets__(const HGraph *graph);
