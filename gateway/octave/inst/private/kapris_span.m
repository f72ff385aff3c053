## kapris_span.m - the first and the last part that every net is in, 0 for nets without entries.
## SPDX-License-Identifier: MIT
##
##   [first, last] = kapris_span (nets, part, nparts)

function [first, last] = kapris_span (nets, part, nparts)
  [cells, net] = find (nets);
  n = [columns(nets), 1];
  last = accumarray (net(:), part(cells(:)), n, @max, 0);
  first = accumarray (net(:), part(cells(:)), n, @min, 0);
endfunction
