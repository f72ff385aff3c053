// lib/core/constants.h - the numbers that the method is tuned with. All of them decide results.
// SPDX-License-Identifier: MIT
#pragma once

#include "weight.h"

namespace kapris::engine::KAPRIS_ENGINE
{

// ----------------------------------------------------------------------------------------------------------
// Coarsening

// Nets with more pins are left out of coarsening: they say little of which cells belong together and cost much.
constexpr int MAX_NET_SIZE = 50;
// A hypergraph of so many cells is small enough to be bisected directly.
constexpr int COARSEST_BISECTION = 100;
// So many cells per part are left for the first partition into all parts.
constexpr int COARSEST_PER_PART = 200;
// V-cycles stop earlier: their coarsest level is already partitioned, and only its refinement is still to come.
constexpr int COARSEST_CYCLE = 1000;
// A level is slow when it keeps more of the cells than this share of the level before ...
constexpr float SLOW_RATIO = 0.8f;
// ... or, once one has been slow, this many times that.
constexpr double SLOW_GROWTH = 1.075;
// Stars are joined until so large a share of the cells has joined one: more would leave levels too few steps apart.
constexpr double MAX_JOINED = 0.4;
// The first so many levels visit strongly connected cells first, where the scheme takes turns.
constexpr int STRONG_LEVELS = 4;
// Nets that give each pair of their pins less weight than this do not count towards how strongly a cell is connected.
constexpr double WEAK_EDGE = 0.1;

// ----------------------------------------------------------------------------------------------------------
// Refinement

// Passes over a level, at most; most levels end earlier, after a pass without gain.
constexpr int MAX_PASSES = 10;
// Early-exit passes end after this share of the cells has moved without a better cut, and there are so many of them.
constexpr float EARLY_EXIT = 0.1f;
constexpr int EARLY_EXIT_PASSES = 3;
// So many of the coarsest levels are cheap enough for full passes.
constexpr int FULL_LEVELS = 2;
// V-cycles of a partition, at most; they end after so many in a row without a better value.
constexpr int MAX_CYCLES = 10;
constexpr int IDLE_CYCLES = 2;

// ----------------------------------------------------------------------------------------------------------
// Trials

// First bisections of a coarsest level of which the best is kept: more where a polish of all parts builds on it.
constexpr int INITIAL_TRIALS = 10;
constexpr int INITIAL_TRIALS_POLISHED = 20;
// Trials come close to the best one within this factor, or this distance.
constexpr double CLOSE_FACTOR = 1.2;
constexpr int CLOSE_DISTANCE = 20;
// With more trials than MANY_TRIALS, so many partitions wait for V-cycles after the last trial.
constexpr int MANY_TRIALS = 10;
constexpr int MOST_KEPT = 3;
// The first partition into all parts is the better one of so many.
constexpr int NESTED_TRIALS = 2;
// More parts than these are not polished: each cell would know of too many parts.
constexpr int MAX_POLISHED_PARTS = 64;

// ----------------------------------------------------------------------------------------------------------
// Search

// A level of a search that keeps more than this share of the cells ends coarsening.
constexpr double SLOW_STARS = 0.95;
// So many cells per part are left on the coarsest level of a V-cycle, of at most this share of the average part each.
constexpr int SEARCHED_PER_PART = 30;
constexpr double HEAVIEST_CLUSTER = 0.03;
// The same of partitions that are made directly, with lighter cells, and the trials of each bisection there.
constexpr int DIRECT_PER_PART = 200;
constexpr int DIRECT_TRIALS = 3;
// The first partition under a time limit.
constexpr int QUICK_PER_PART = 100;
// So many members in a row share the first levels, which keep this share of the cells, of at most so many times the
// average weight there. Hypergraphs with fewer cells per part than these are not coarsened before members are made.
constexpr int FAMILY = 2;
constexpr double SHARED_LEVELS = 0.5;
constexpr double SHARED_WEIGHT = 4.0;
constexpr int SHARED_PER_PART = 200;
// Rounds on a level, at most; they end after one that gains less than this share.
constexpr int SEARCH_ROUNDS = 3;
constexpr double LEAST_ROUND_GAIN = 0.001;
// Cells from which a short search starts.
constexpr std::size_t SEARCH_SEEDS = 20;
// Steps without a better value that end a search, a short one and one from all of the border: the second by the larger
// of a number and a share of the cells.
constexpr int FRUITLESS_SHORT = 100;
constexpr int FRUITLESS_LONG = 300;
constexpr double FRUITLESS_SHARE = 0.02;
// Nets with more pins do not tell a search where to go on.
constexpr int LARGE_SEARCHED_NET = 500;
// The work of a member, in combinations.
constexpr int MEMBER_WORK = 2;
// Combinations that are made of the same members, side by side.
constexpr int BROOD = 4;
// Parts that are made anew together, at least, and at most two more; how often a member's parts are between two broods,
// unless so many times in a row bring nothing.
constexpr int SMALLEST_REWORKED = 2;
constexpr int REWORKS = 6;
constexpr int IDLE_REWORKS = 3;
// Nets that touch more parts say little of which parts lie side by side.
constexpr int MOST_BORDERING = 5;
// Minimum cuts between two parts: how far the cells around their border may lie from it, in nets; what share of a part
// they are at most, and how many cells; how far they could bring the other part above its limit, in times of what is
// left to the limits; how often a side is grown; how many rounds of pairs are tried.
constexpr int FLOW_DISTANCE = 5;
constexpr double FLOW_MOST_OF_PART = 0.5;
constexpr int FLOW_MOST_CELLS = 100000;
constexpr double FLOW_ROOM = 8.0;
constexpr int MOST_GROWN = 200;
constexpr int FLOW_ROUNDS = 100;
// V-cycles in a row that bring nothing end the improvement of a given partition.
constexpr int IDLE_IMPROVEMENTS = 2;
// Under a time limit: members, and broods in a row that bring nothing new after which a new family takes the place of
// the worst.
constexpr int TIMED_MEMBERS = 8;
constexpr int STALE_BROODS = 3;
// So many rounds in a row without a better partition, and one for each cell, end a search before its time: there is
// hardly anything left to find.
constexpr int HOPELESS_ROUNDS = 20;

// ----------------------------------------------------------------------------------------------------------
// Balance

// Added to a product of shares and counts before it is truncated, so that whole-number products stay whole.
constexpr double WHOLE_MARGIN = 0.4;
// A part may sink below its share by at least this factor, however tight its limit: else nothing could move.
constexpr double LEAST_FACTOR = 1.05;
// A search lets a part weigh at least so much above its share: where it may not, no single move is possible.
constexpr double LEAST_ROOM = 0.003;

} // namespace kapris::engine::KAPRIS_ENGINE
