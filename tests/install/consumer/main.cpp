// tests/install/consumer/main.cpp - the same as main.c for C++, with weights: the heavy net must not be cut.
// SPDX-License-Identifier: MIT
#include <array>
#include <iostream>
#include <kapris.h>
#include <set>
#include <vector>

int main()
{
  const std::vector<std::vector<int>> nets = {{0, 1}, {1, 2}, {2, 3}, {3, 0}};
  const std::vector<int> netwgts = {9, 1, 9, 1};
  const std::array<int, 9> options = {1, 10, 1, 1, 1, 0, 0, 42, 0};
  std::vector<int> netptr = {0}, netind;
  std::vector<int> part(4, -1);
  int cut = -1, recount = 0;

  for (const auto &net : nets) {
    netind.insert(netind.end(), net.begin(), net.end());
    netptr.push_back(static_cast<int>(netind.size()));
  }
  KAPRIS_PartRecursive(4, 4, nullptr, netptr.data(), netind.data(), netwgts.data(), 2, 5, options.data(),
                       part.data(), &cut);

  for (std::size_t j = 0; j < nets.size(); j++) {
    std::set<int> touched;
    for (const int cell : nets[j])
      touched.insert(part[static_cast<std::size_t>(cell)]);
    recount += touched.size() > 1 ? netwgts[j] : 0;
  }
  std::cout << "kapris " << KAPRIS_VERSION_MAJOR << '.' << KAPRIS_VERSION_MINOR << '.' << KAPRIS_VERSION_PATCH
            << ": cut " << cut << ", recounted " << recount << '\n';
}
