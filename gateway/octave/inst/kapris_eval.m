## -*- texinfo -*-
## @deftypefn  {} {@var{figures} =} kapris_eval (@var{A}, @var{part})
## @deftypefnx {} {@var{figures} =} kapris_eval (@var{A}, @var{part}, @var{options})
## Measure a partition of the rows or the columns of the sparse matrix @var{A}.
##
## @var{part} holds a number of at least 1 for every cell, from wherever it comes: for what @code{kapris} gives, pass
## @code{part + 1}.  Of @var{options}, which are those of @code{kapris_partition}, the fields @code{net},
## @code{cell_weights}, @code{net_weights}, @code{target_weights} and @code{epsilon} matter.  There are as many parts as
## the largest number in @var{part} says, or @code{target_weights} if it has more entries.
##
## The figures are counted from the matrix, without the partitioner; all sums are exact:
##
## @table @code
## @item cut
## The weight of the nets that are in more than one part.
## @item soed
## The sum over these nets of weight times parts.
## @item connectivity
## The sum over these nets of weight times (parts - 1).
## @item cut_nets
## Their number.
## @item part_weights
## The cell weight of every part.
## @item imbalance
## The largest of these over its share of the total, less 1.
## @item balanced
## Whether no part weighs more than (1 + @code{epsilon}) times its share of the total; the share is rounded up to a
## whole weight, then the product down.
## @end table
##
## @example
## @group
## A = gallery ("poisson", 50);
## kapris_eval (A, kapris_partition (A, 4)).cut
## @end group
## @end example
## @seealso{kapris_partition, kapris_order, kapris_spy}
## @end deftypefn

## SPDX-License-Identifier: MIT

function figures = kapris_eval (A, part, options = struct ())
  if (nargin < 2)
    print_usage ();
  endif
  [part, nparts] = kapris_part ("kapris_eval", A, part, options);
  set = kapris_settings ("kapris_eval", A, nparts, options);
  [cells, nets] = find (set.nets);
  [ncells, nnets] = size (set.nets);
  if (isempty (set.cell_weights))
    set.cell_weights = ones (ncells, 1);
  endif
  if (isempty (set.net_weights))
    set.net_weights = ones (nnets, 1);
  endif

  ## How many parts every net is in.
  spans = full (sum (sparse (part(cells), nets, true, nparts, nnets), 1))(:);
  cut = spans > 1;
  weights = accumarray (part, set.cell_weights, [nparts, 1])';
  limits = __kapris__ (sum (weights), nparts, set.target_weights, set.epsilon);
  figures = struct ("cut", sum (set.net_weights(cut)), "soed", sum (spans(cut) .* set.net_weights(cut)), ...
                    "connectivity", sum ((spans(cut) - 1) .* set.net_weights(cut)), "cut_nets", sum (cut), ...
                    "part_weights", weights, "imbalance", 0);
  if (sum (weights) > 0)
    expected = repmat (sum (weights) / nparts, 1, nparts);
    if (! isempty (set.target_weights))
      expected = set.target_weights' / sum (set.target_weights) * sum (weights);
    endif
    figures.imbalance = max (0, max (weights ./ expected - 1));
  endif
  figures.balanced = all (weights <= limits);
endfunction

%!test
%! A = sparse ([1, 1, 0, 0, 1; 1, 0, 0, 0, 1; 0, 1, 1, 0, 1; 0, 0, 1, 0, 0]);
%! figures = kapris_eval (A, [1, 1, 2, 3]);
%! assert ([figures.cut, figures.soed, figures.connectivity, figures.cut_nets], [3, 6, 3, 3]);
%! assert (figures.part_weights, [2, 1, 1]);
%! assert (figures.imbalance, 0.5, 1e-12);
%! assert (figures.balanced);
%! options = struct ("net", "row", "cell_weights", [1, 2, 3, 4, 5], "net_weights", [10, 20, 30, 40]);
%! options.target_weights = [2, 1, 1];
%! figures = kapris_eval (A, [1, 2, 2, 1, 1], options);
%! assert ([figures.cut, figures.soed, figures.cut_nets], [40, 80, 2]);
%! assert (figures.part_weights, [10, 5, 0]);
%! assert (figures.imbalance, 1/3, 1e-12);
%! assert (! figures.balanced);
%! options.epsilon = 0.34;
%! assert (kapris_eval (A, [1, 2, 2, 1, 1], options).balanced);

%!test
%! ## large weights: the same in integers of 64 bits, net by net and cell by cell
%! state = rand ("state");  rand ("state", 5);
%! A = sprand (60, 90, 0.06) != 0;
%! part = ceil (3 * rand (1, 60));
%! options.cell_weights = 2^40 + floor (2^20 * rand (1, 60));
%! options.net_weights = 2^44 + floor (2^30 * rand (1, 90));
%! rand ("state", state);
%! cut = soed = connectivity = int64 (0);
%! for j = 1:columns (A)
%!   spans = numel (unique (part(A(:, j))));
%!   if (spans > 1)
%!     weight = int64 (options.net_weights(j));
%!     cut += weight;
%!     soed += spans * weight;
%!     connectivity += (spans - 1) * weight;
%!   endif
%! endfor
%! weights = zeros (1, 3, "int64");
%! for i = 1:rows (A)
%!   weights(part(i)) += options.cell_weights(i);
%! endfor
%! figures = kapris_eval (A, part, options);
%! assert (int64 ([figures.cut, figures.soed, figures.connectivity]), [cut, soed, connectivity]);
%! assert (int64 (figures.part_weights), weights);
%! assert (cut > 2^48 && any (mod ([cut, soed], 1024) != 0));

%!test
%! ## limits of parts to the unit, up to totals of 2^53
%! for total = [7, 2^41 + 1, 2^52 + 3, 2^53]
%!   for nparts = [2, 3, 300]
%!     high = (total - mod (total, nparts)) / nparts + (mod (total, nparts) > 0);
%!     options = struct ("epsilon", 0, "cell_weights", [high, total - high, zeros(1, nparts - 2)]);
%!     expected = total - high <= high;
%!     assert (kapris_eval (sparse (nparts, 0), 1:nparts, options).balanced, expected);
%!     options.cell_weights(1:2) = [high + 1, total - high - 1];
%!     assert (! kapris_eval (sparse (nparts, 0), 1:nparts, options).balanced);
%!   endfor
%! endfor
%! options = struct ("epsilon", 0.5, "cell_weights", [3 * 2^50, 2^50]);
%! assert (kapris_eval (sparse (2, 0), [1, 2], options).balanced);
%! options.cell_weights += [1, -1];
%! assert (! kapris_eval (sparse (2, 0), [1, 2], options).balanced);

%!test
%! ## totals of 2^53 are exact, totals of 2^53 + 1 are refused
%! A = sparse ([1, 0; 1, 1; 0, 1; 0, 1]);
%! options.cell_weights = [2^53 - 3, 1, 1, 1];
%! options.net_weights = [2^52 - 3, 2];
%! figures = kapris_eval (A, 1:4, options);
%! assert (figures.part_weights, options.cell_weights);
%! assert ([figures.cut, figures.soed, figures.connectivity], [2^52 - 1, 2^53, 2^52 + 1]);
%! options.cell_weights = [2^53, 0, 0, 0];
%! assert (kapris_eval (A, 1:4, options).part_weights(1), 2^53);

%!error <cell_weights\(4\) is 1: the total cell weight is then above 9007199254740992>
%! kapris_eval (speye (4), 1:4, struct ("cell_weights", [2^53 - 2, 1, 1, 1]))
%!error <net_weights\(2\) is 3: the sum of net weight x min\(pins, nparts\) is then above 9007199254740992>
%! kapris_eval (sparse ([1, 1; 1, 1; 0, 1]), 1:3, struct ("net_weights", [2^52 - 4, 3]))
%!error <net_weights\(1\) is 9007199254740992: the sum of net weight x min\(pins, nparts\) is then above>
%! kapris_eval (sparse (ones (4096, 4096)), 1:4096, struct ("net_weights", repmat (2^53, 1, 4096)))
%!error <cell_weights\(2\) is 9007199254740994, but it should be a whole number from 0 to 9007199254740992>
%! kapris_eval (speye (3), 1:3, struct ("cell_weights", [1, 2^53 + 2, 1]))
%!error <cell_weights\(2\) is 9007199254740993, but>
%! kapris_eval (speye (3), 1:3, struct ("cell_weights", int64 ([1, 2^53, 1]) + int64 ([0, 1, 0])))
%!error <net_weights\(3\) is 18446744073709551615, but>
%! kapris_eval (speye (3), 1:3, struct ("net_weights", [0, 0, intmax("uint64")]))
%!error <net_weights\(3\) is 1099511627776.5, but>
%! kapris_eval (speye (3), 1:3, struct ("net_weights", [0, 0, 2^40 + 0.5]))
%!error <cell_weights\(1\) is NaN, but> kapris_eval (speye (3), 1:3, struct ("cell_weights", [NaN, 0, 0]))

%!error id=Octave:invalid-fun-call kapris_eval (speye (3))
%!error <part has 2 entries, but there are 3 cells> kapris_eval (speye (3), [1, 2])
%!error <part\(1\) is 0, but it should be a whole number of at least 1> kapris_eval (speye (3), [0, 1, 1])
%!error id=kapris:invalidArgument kapris_eval (ones (3), [1, 1, 2])
%!error id=kapris:unknownOption kapris_eval (speye (3), [1, 1, 2], struct ("weights", 1))
