// lib/base/sort.h - the sorts of the library.
// SPDX-License-Identifier: MIT
#pragma once

namespace kapris::engine::base
{

struct KeyVal {
  int key;
  int val;
};

// Stable sort of the permutation order[0..n-1] by keys[item], keys in 0..maxkey, into out.
void BucketSortKeysInc(int n, int maxkey, const int *keys, const int *order, int *out);
void iintsort__(int n, int *a);
// The same for ints that differ from one another; for few, without branches on their order, which cannot be foretold.
void SortDistinct(int n, int *a);
// Increasing and decreasing key, signed. The order of equal keys is defined by the procedure, see there.
void ikeysort__(int n, KeyVal *pairs);
void dkeysort__(int n, KeyVal *pairs);

} // namespace kapris::engine::base
