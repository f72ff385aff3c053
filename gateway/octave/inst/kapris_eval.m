## -*- texinfo -*-
## @deftypefn  {} {@var{figures} =} kapris_eval (@var{A}, @var{part})
## @deftypefnx {} {@var{figures} =} kapris_eval (@var{A}, @var{part}, @var{options})
## Measure a partition of the rows or the columns of the sparse matrix @var{A}.
##
## @var{part} holds a number of at least 1 for every cell, from wherever it comes: for what @code{kapris} gives, pass
## @code{part + 1}.  Of @var{options}, which are those of @code{kapris_partition}, the fields @code{net},
## @code{cell_weights}, @code{net_weights}, @code{part_shares} and @code{imbalance} matter.  There are as many parts as
## the largest number in @var{part} says, or @code{part_shares} if it has more entries, and at least 2.
##
## The figures are counted from the matrix, without the library:
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
## Whether no part weighs more than (1 + @code{imbalance}) times its share, rounded up.
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
  if (isempty (set.part_shares))
    set.part_shares = repmat (1 / nparts, nparts, 1);
  endif

  ## How many parts every net is in.
  spans = full (sum (sparse (part(cells), nets, true, nparts, nnets), 1))(:);
  cut = spans > 1;
  weights = accumarray (part, set.cell_weights, [nparts, 1])';
  expected = set.part_shares' * sum (weights);
  figures = struct ("cut", sum (set.net_weights(cut)), "soed", sum (spans(cut) .* set.net_weights(cut)), ...
                    "connectivity", sum ((spans(cut) - 1) .* set.net_weights(cut)), "cut_nets", sum (cut), ...
                    "part_weights", weights, "imbalance", 0);
  if (sum (weights) > 0)
    figures.imbalance = max (0, max (weights ./ expected - 1));
  endif
  ## A hair above a whole number is rounding error of the product.
  figures.balanced = all (weights <= ceil ((1 + set.imbalance) * expected * (1 - 1e-12)));
endfunction

%!test
%! A = sparse ([1, 1, 0, 0, 1; 1, 0, 0, 0, 1; 0, 1, 1, 0, 1; 0, 0, 1, 0, 0]);
%! figures = kapris_eval (A, [1, 1, 2, 3]);
%! assert ([figures.cut, figures.soed, figures.connectivity, figures.cut_nets], [3, 6, 3, 3]);
%! assert (figures.part_weights, [2, 1, 1]);
%! assert (figures.imbalance, 0.5, 1e-12);
%! assert (figures.balanced);
%! options = struct ("net", "row", "cell_weights", [1, 2, 3, 4, 5], "net_weights", [10, 20, 30, 40]);
%! options.part_shares = [0.5, 0.25, 0.25];
%! figures = kapris_eval (A, [1, 2, 2, 1, 1], options);
%! assert ([figures.cut, figures.soed, figures.cut_nets], [40, 80, 2]);
%! assert (figures.part_weights, [10, 5, 0]);
%! assert (figures.imbalance, 1/3, 1e-12);
%! assert (! figures.balanced);
%! options.imbalance = 1/3;
%! assert (kapris_eval (A, [1, 2, 2, 1, 1], options).balanced);

%!error id=Octave:invalid-fun-call kapris_eval (speye (3))
%!error <part has 2 entries, but there are 3 cells> kapris_eval (speye (3), [1, 2])
%!error <part\(1\) is 0, but it should be a whole number of at least 1> kapris_eval (speye (3), [0, 1, 1])
%!error id=kapris:invalidArgument kapris_eval (ones (3), [1, 1, 2])
%!error id=kapris:unknownOption kapris_eval (speye (3), [1, 1, 2], struct ("weights", 1))
