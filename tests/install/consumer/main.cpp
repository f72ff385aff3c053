// tests/install/consumer/main.cpp - the same as main.c for C++, with weights: the heavy net must not be cut.
// SPDX-License-Identifier: MIT
#include <cstdint>
#include <iostream>
#include <kapris.h>
#include <kapris.hpp>
#include <set>
#include <vector>

int main()
{
  const std::vector<std::vector<int>> nets = {{0, 1}, {1, 2}, {2, 3}, {3, 0}};
  const std::vector<std::int64_t> netwgts = {9, 1, 9, 1};
  std::vector<int> netptr = {0}, netind;
  std::int64_t recount = 0;

  for (const auto &net : nets) {
    netind.insert(netind.end(), net.begin(), net.end());
    netptr.push_back(static_cast<int>(netind.size()));
  }
  const kapris::Result result = kapris::Partition(
      {.ncells = 4, .net_starts = netptr, .pins = netind, .net_weights = netwgts}, {.nparts = 2});

  for (std::size_t j = 0; j < nets.size(); j++) {
    std::set<int> touched;
    for (const int cell : nets[j])
      touched.insert(result.part[static_cast<std::size_t>(cell)]);
    recount += touched.size() > 1 ? netwgts[j] : 0;
  }
  std::cout << "kapris " << KAPRIS_VERSION_MAJOR << '.' << KAPRIS_VERSION_MINOR << '.' << KAPRIS_VERSION_PATCH
            << ": cut " << result.cut << ", recounted " << recount << '\n';
}
