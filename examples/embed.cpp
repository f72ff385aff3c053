// examples/embed.cpp - divides nine cells into two parts of unequal size with the C++ interface.
// SPDX-License-Identifier: MIT
//
// Cells 0-5 and cells 6-8 are tightly connected, and two nets join the two groups: they are all that must be cut.
#include <iostream>
#include <kapris.hpp>

int main()
{
  // Net j connects the cells pins[net_starts[j]] .. pins[net_starts[j+1]-1].
  const std::vector<int> net_starts = {0, 3, 6, 9, 12, 14, 16, 19, 21, 23, 25};
  const std::vector<int> pins = {0, 1, 2, 3, 4, 5, 0, 2, 4, 1, 3, 5, 0, 5, 2, 3, 6, 7, 8, 6, 7, 5, 6, 4, 8};
  const std::vector<std::int64_t> cell_weights(9, 10);
  const std::vector<double> target_weights = {2, 1};

  const kapris::Hypergraph hypergraph = {
      .ncells = 9, .net_starts = net_starts, .pins = pins, .cell_weights = cell_weights};
  const kapris::Targets targets = {.nparts = 2, .target_weights = target_weights};
  kapris::Options options;
  options.epsilon = 0.05;
  options.starts = 4;
  options.threads = 2;
  options.time_limit = std::chrono::minutes(1);
  options.progress = [](const kapris::Progress &progress) {
    std::clog << progress.starts_done << " of " << progress.starts << " starts\n";
  };

  try {
    const kapris::Result result = kapris::Partition(hypergraph, targets, options);
    std::cout << "status: " << kapris::StatusName(result.status) << "\nparts:";
    for (int part : result.part)
      std::cout << ' ' << part;
    std::cout << "\nweights: " << result.part_weights[0] << " and " << result.part_weights[1]
              << "\ncut: " << result.cut << '\n';
  } catch (const kapris::Error &error) {
    std::cerr << kapris::StatusName(error.status()) << ": " << error.what() << '\n';
    return 1;
  }
  return 0;
}
