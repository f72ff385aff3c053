## -*- texinfo -*-
## @deftypefn  {} {[@var{part}, @var{info}] =} kapris_partition (@var{A}, @var{nparts})
## @deftypefnx {} {[@var{part}, @var{info}] =} kapris_partition (@var{A}, @var{nparts}, @var{options})
## Partition the rows or the columns of the sparse matrix @var{A} into @var{nparts} parts of nearly equal weight.
##
## Only the pattern of @var{A} matters; it can be rectangular.  @var{part} is a column vector with the part of every
## cell, a number from 1 to @var{nparts}.  @var{options} is a struct with any of these fields:
##
## @table @code
## @item net
## @qcode{"column"} (default): every column is a net and the @strong{rows} are the cells that are partitioned.
## @qcode{"row"}: every row is a net and the @strong{columns} are partitioned.
## @item cell_weights
## A whole number from 0 to 2^53 for every cell; [] means that all are 1.  Their sum is at most 2^53.
## @item net_weights
## The same for every net.  The sum over the nets of weight times the smaller of @var{nparts} and the cells of the net
## is at most 2^53.  Within these limits all sums in @var{info} are exact.
## @item fixed
## For every cell the part that it must be in, or 0 for a free cell.
## @item target_weights
## What the parts should weigh in proportion to each other, as in [2, 1, 1]; default: all the same.  Also
## @code{part_shares}.
## @item epsilon
## A part may weigh (1 + @code{epsilon}) times its share of the total; the share is rounded up to a whole weight, then
## the product down.  Default 0.03, which is 3 percent.  Also @code{imbalance}.
## @item min_epsilon
## A part may not weigh less than (1 - @code{min_epsilon}) times its share; the share is rounded down, then the product
## up.  Default 1: any weight will do.
## @item allow_empty
## @code{true}: parts may stay empty though there are cells that they can have.  Default @code{false}.
## @item initial
## A partition to improve.  The result is never worse.
## @item objective
## @qcode{"cut"} (default): the weight of nets in more than one part.  @qcode{"soed"}: the sum of external degrees,
## which counts such a net once for every part that it is in.  @qcode{"connectivity"} (also @qcode{"km1"}): connectivity
## - 1, which counts it once less.
## @item scheme
## @qcode{"recursive"} bisection (default), or direct @qcode{"kway"} partitioning.
## @item seed
## 0 to 2^31-1, default 0: the same seed gives the same partition.  -1 takes the clock.
## @item runs
## Multilevel runs of every bisection or k-way partitioning.  Where no default is given here it is that of the library,
## which @code{kapris partition --help} tells.
## @item members
## Partitions that a start makes on its own, to combine them; 0: only one, which is the result of the start.
## @item combinations
## Combinations of partitions that a start makes at most; with @code{initial} that many improvements.
## @item starts
## @itemx first_start
## Independent starts, of which the best counts (default 1), and the number of the first of them (default 0).  Those
## that have not begun when the time is up are left out.
## @item threads
## That may be used, default 1.  The result does not depend on it.
## @item time_limit
## In seconds; the best partition so far is returned.  With members the call uses all of the time.  Default 0: none.
## @item memory_limit
## In bytes; exceeding it is an error, unless other starts have made partitions before.  Default 0: none.
## @item coarsening
## @qcode{"alternate"} (default), @qcode{"degree-stars"}, @qcode{"strong-stars"}, @qcode{"whole-nets"} or
## @qcode{"pairs"}.
## @item refinement
## @qcode{"fm"}, @qcode{"one-way-fm"} or @qcode{"early-exit-fm"}.
## @item vcycle
## Runs that are improved by V-cycles: @qcode{"best"}, @qcode{"never"}, @qcode{"improving"} or @qcode{"close"}.
## @item reconst
## @code{true}: pieces of cut nets stay in the recursion.  Default @code{false}.
## @end table
##
## @var{info} is a struct with the fields @code{status} (@qcode{"ok"}, @qcode{"infeasible balance"} or @qcode{"time
## limit"}), @code{message}, @code{cut}, @code{soed}, @code{connectivity}, @code{part_weights}, @code{part_limits},
## @code{part_minimums}, @code{imbalance}, @code{excess} (what parts weigh above their limits and lack to their
## minimums), @code{balanced}, @code{seed}, @code{best_start} (index into @code{starts}, or 0), @code{starts} (a
## struct array), @code{seconds} and @code{peak_bytes}.  Without it, a status that is not @qcode{"ok"} gives a warning.
##
## Errors have the identifiers @code{kapris:invalidArgument}, @code{kapris:unknownOption}, @code{kapris:memoryLimit},
## @code{kapris:outOfMemory} and @code{kapris:internal}.  Ctrl-C ends the call and returns to the prompt.
##
## @example
## @group
## A = sprandn (1000, 400, 0.01);
## [part, info] = kapris_partition (A, 4, struct ("net", "row"));
## info.cut
## @end group
## @end example
## @seealso{kapris_eval, kapris_order, kapris_spy, kapris}
## @end deftypefn

## SPDX-License-Identifier: MIT

function [part, info] = kapris_partition (A, nparts, options = struct ())
  if (nargin < 2)
    print_usage ();
  endif
  set = kapris_settings ("kapris_partition", A, nparts, options);
  numbers = [set.scheme, set.objective, set.coarsening, set.refinement, set.vcycle, set.runs, set.reconst, set.seed, ...
             set.epsilon, set.starts, set.first_start, set.threads, set.time_limit, set.memory_limit, ...
             set.min_epsilon, set.allow_empty, set.members, set.combinations];
  try
    [status, message, part, figures, weights, limits, minimums, starts] = ...
      __kapris__ (set.nets, set.nparts, numbers, int64 (set.cell_weights), int64 (set.net_weights), ...
                  int32 (set.fixed - 1), set.target_weights, int32 (set.initial - 1));
  catch fault
    ## The host had no memory for the result.
    error ("kapris:outOfMemory", "kapris_partition: %s", fault.message);
  end_try_catch

  switch (status)
    case {"ok", "infeasible balance", "time limit"}
      part += 1;
    case "invalid argument"
      error ("kapris:invalidArgument", "kapris_partition: %s (counted from 0)", message);
    case {"memory limit", "out of memory"}
      ## What starts had made before is not lost; without a partition there are no starts.
      if (any (starts(8, :) > 0))
        part += 1;
      elseif (strcmp (status, "memory limit"))
        error ("kapris:memoryLimit", "kapris_partition: the memory limit of %d bytes would be exceeded", ...
               set.memory_limit);
      else
        error ("kapris:outOfMemory", "kapris_partition: %s", message);
      endif
    otherwise
      error ("kapris:internal", "kapris_partition: %s: %s", status, message);
  endswitch
  if (nargout < 2)
    if (! strcmp (status, "ok"))
      warning ("kapris:status", "kapris_partition: %s: %s", status, message);
    endif
    return;
  endif

  names = {"number", "seed", "cut", "soed", "imbalance", "balanced", "completed", "seconds"};
  info = struct ("status", status, "message", message, "cut", figures(1), "soed", figures(2), ...
                 "connectivity", figures(3), "part_weights", weights, "part_limits", limits, ...
                 "part_minimums", minimums, "imbalance", figures(4), "excess", figures(10), ...
                 "balanced", logical (figures(5)), "seed", figures(6), ...
                 "best_start", figures(7) + 1, "starts", cell2struct (num2cell (starts), names, 1), ...
                 "seconds", figures(8), "peak_bytes", figures(9));
endfunction

%!shared A, B
%! A = gallery ("poisson", 30);
%! state = rand ("state");  rand ("state", 7);
%! B = sprand (300, 120, 0.02) != 0;
%! rand ("state", state);

%!test
%! ## figures agree with those of kapris_eval, for both models, schemes and objectives
%! words = {"soed", "connectivity", "cut", "km1"};
%! for net = {"column", "row"}
%!   for scheme = {"recursive", "kway"}
%!     options = struct ("net", net{1}, "scheme", scheme{1}, "objective", words{1}, "epsilon", 0.1);
%!     options.starts = 3;
%!     words = circshift (words, -1);
%!     options.cell_weights = 1 + mod (1:size (B, 1 + strcmp (net{1}, "row")), 3);
%!     options.net_weights = mod (1:size (B, 2 - strcmp (net{1}, "row")), 4);
%!     [part, info] = kapris_partition (B, 5, options);
%!     figures = kapris_eval (B, part, options);
%!     assert ([info.cut, info.soed, info.connectivity], [figures.cut, figures.soed, figures.connectivity]);
%!     assert (info.part_weights, figures.part_weights);
%!     assert (info.imbalance, figures.imbalance, 1e-12);
%!     assert (all (info.part_weights <= info.part_limits));
%!     counts = struct ("soed", [info.starts.soed], "cut", [info.starts.cut], ...
%!                      "connectivity", [info.starts.soed] - [info.starts.cut]);
%!     counts.km1 = counts.connectivity;
%!     counts = counts.(options.objective);
%!     assert (counts(info.best_start), min (counts([info.starts.balanced] == 1)));
%!   endfor
%! endfor

%!test
%! ## fixed cells, shares, seeds, threads, starts
%! fixed = zeros (900, 1);  fixed([1, 900]) = [2, 1];
%! options = struct ("fixed", fixed, "target_weights", [3, 1], "seed", 5, "runs", 2, "starts", 3, "threads", 2);
%! [part, info] = kapris_partition (A, 2, options);
%! assert (part([1, 900]), [2; 1]);
%! assert (info.part_limits, floor (1.03 * [675, 225]));
%! assert (info.seed, 5);
%! assert ({info.starts.number}, {0, 1, 2});
%! assert (info.starts(info.best_start).cut, min ([info.starts.cut]));
%! options.threads = 1;
%! assert (kapris_partition (A, 2, options), part);
%! options.first_start = info.best_start - 1;  options.starts = 1;
%! assert (kapris_partition (A, 2, options), part);
%! ## members that are combined, or one alone
%! options = struct ("runs", 1, "members", 4, "combinations", 6);
%! [~, info] = kapris_partition (A, 5, options);
%! options.members = 0;
%! [~, alone] = kapris_partition (A, 5, options);
%! assert (info.cut < alone.cut);

%!test
%! ## an initial partition is improved
%! given = 1 + mod (0:899, 3);
%! [part, info] = kapris_partition (A, 3, struct ("initial", given, "runs", 1));
%! assert (info.cut < kapris_eval (A, given).cut / 2);

%!test
%! ## limits of time and memory, parts that cannot be balanced
%! big = gallery ("poisson", 200);
%! [part, info] = kapris_partition (big, 8, struct ("time_limit", 1e-3, "runs", 1000, "starts", 1000));
%! assert (info.status, "time limit");
%! assert (numel (info.starts), 1);
%! assert (numel (part) == 40000 && all (part >= 1 & part <= 8));
%! [part, info] = kapris_partition (speye (4), 2, struct ("cell_weights", [9, 1, 1, 1]));
%! assert (info.status, "infeasible balance");

%!test
%! ## one part; parts that are not empty and keep to minimums; former names of options
%! [part, info] = kapris_partition (A, 1);
%! assert ({info.status, info.cut, all(part == 1)}, {"ok", 0, true});
%! part = kapris_partition (A, 5, struct ("epsilon", 4.5, "runs", 1));
%! assert (unique (part), (1:5)');
%! [part, info] = kapris_partition (A, 2, struct ("epsilon", 4.5, "min_epsilon", 0.02, "runs", 1));
%! assert (all (info.part_weights >= 441) && all (info.part_minimums == 441) && info.excess == 0);
%! [~, info] = kapris_partition (A, 2, struct ("imbalance", 0.5, "part_shares", [0.75, 0.25], "runs", 1));
%! assert (info.part_limits, floor (1.5 * [675, 225]));

%!test
%! ## empty and odd matrices
%! assert (kapris_partition (sparse (0, 0), 2), zeros (0, 1));
%! assert (size (kapris_partition (sparse (5, 0), 2)), [5, 1]);
%! assert (size (kapris_partition (sparse (0, 5), 2, struct ("net", "row"))), [5, 1]);
%! assert (numel (unique (kapris_partition (sparse ([1i, 0; 0, 1]), 2))), 2);

%!test
%! ## weights beyond 32 bits: every figure as a count in integers of 64 bits has it
%! for scheme = {"recursive", "kway"}
%!   for nparts = [2, 5]
%!     options = struct ("scheme", scheme{1}, "objective", "soed", "epsilon", 0.1, "runs", 2, "starts", 2);
%!     options.cell_weights = 2^40 + mod ((1:300) * 1e9, 2^31 - 1);
%!     options.net_weights = 2^40 + mod ((1:120) * 7e8, 2^31 - 1);
%!     [part, info] = kapris_partition (B, nparts, options);
%!     cut = soed = connectivity = int64 (0);
%!     for j = 1:columns (B)
%!       spans = numel (unique (part(B(:, j))));
%!       if (spans > 1)
%!         weight = int64 (options.net_weights(j));
%!         cut += weight;
%!         soed += spans * weight;
%!         connectivity += (spans - 1) * weight;
%!       endif
%!     endfor
%!     weights = zeros (1, nparts, "int64");
%!     for i = 1:rows (B)
%!       weights(part(i)) += options.cell_weights(i);
%!     endfor
%!     assert (info.status, "ok");
%!     assert (int64 ([info.cut, info.soed, info.connectivity]), [cut, soed, connectivity]);
%!     assert (int64 (info.part_weights), weights);
%!     assert (all (info.part_weights <= info.part_limits) && info.balanced);
%!     share = idivide (sum (int64 (options.cell_weights)), int64 (nparts), "ceil");
%!     assert (int64 (info.part_limits), repmat (share + idivide (share, int64 (10), "floor"), 1, nparts));
%!     assert (info.starts(info.best_start).soed, info.soed);
%!   endfor
%! endfor

%!test
%! ## totals of 2^53, and limits without room to spare
%! options = struct ("epsilon", 0, "cell_weights", repmat (2^50, 1, 8), "net_weights", repmat (2^50, 1, 4));
%! nets = sparse (1:8, [1, 1, 2, 2, 3, 3, 4, 4], 1);
%! [part, info] = kapris_partition (nets, 4, options);
%! assert ({info.status, info.cut}, {"ok", 0});
%! assert ({info.part_weights, info.part_limits}, {repmat(2^51, 1, 4), repmat(2^51, 1, 4)});
%! ## With all nets cut, the SOED is as large as it can be.
%! options.fixed = [1, 2, 1, 2, 3, 4, 3, 4];
%! [part, info] = kapris_partition (nets, 4, options);
%! assert ({info.status, info.cut, info.soed}, {"ok", 2^52, 2^53});

%!warning <infeasible balance> kapris_partition (speye (4), 2, struct ("cell_weights", [9, 1, 1, 1]));

%!error id=Octave:invalid-fun-call kapris_partition (1)
%!error <unknown option 'sed'; there are net, scheme,> kapris_partition (A, 2, struct ("sed", 1))
%!error id=kapris:unknownOption kapris_partition (A, 2, struct ("sed", 1))
%!error id=kapris:invalidArgument kapris_partition (A, 0)
%!error <A must be a sparse matrix> kapris_partition (ones (3), 2)
%!error <nparts is 0, but it should be at least 1> kapris_partition (A, 0)
%!error <nparts is 2.5, but it should be a whole number> kapris_partition (A, 2.5)
%!error <nparts is NaN, but it should be> kapris_partition (A, NaN)
%!error <nparts must be a real number> kapris_partition (A, "2")
%!error <options must be a struct> kapris_partition (A, 2, 3)
%!error <net must be one of "column", "row"> kapris_partition (A, 2, struct ("net", "col"))
%!error <scheme must be one of "recursive", "kway"> kapris_partition (A, 2, struct ("scheme", 1))
%!error <runs is 0, but it should be at least 1> kapris_partition (A, 2, struct ("runs", 0))
%!error <members is -1, but it should be at least 0> kapris_partition (A, 2, struct ("members", -1))
%!error <combinations is 0.5, but it should be a whole number> kapris_partition (A, 2, struct ("combinations", 0.5))
%!error <seed is 2147483648, but it should be at most 2147483647> kapris_partition (A, 2, struct ("seed", 2^31))
%!error <epsilon is -1, but it should be at least 0> kapris_partition (A, 2, struct ("epsilon", -1))
%!error <epsilon is Inf, but it should be at most> kapris_partition (A, 2, struct ("imbalance", Inf))
%!error <cell_weights has 3 entries, but there are 900 cells> kapris_partition (A, 2, struct ("cell_weights", 1:3))
%!error <net_weights has 3 entries, but there are 120 nets> kapris_partition (B, 2, struct ("net_weights", 1:3))
%!error <cell_weights\(2\) is -1, but it should be a whole number from 0 to 9007199254740992>
%! kapris_partition (speye (3), 2, struct ("cell_weights", [1, -1, 1]))
%!error <fixed\(3\) is 3, but it should be a whole number from 0 to 2>
%! kapris_partition (speye (3), 2, struct ("fixed", [1, 0, 3]))
%!error <initial\(1\) is 0, but it should be a whole number from 1 to 2>
%! kapris_partition (speye (3), 2, struct ("initial", [0, 1, 2]))
%!error <target_weights\(1\) is 0, but it should be above 0 and at most 1e\+15>
%! kapris_partition (speye (3), 2, struct ("part_shares", [0, 1]))
%!error id=kapris:memoryLimit kapris_partition (A, 8, struct ("memory_limit", 1e4))
%!error <first_start is 2147483647, but first_start and starts, which is 1, should add up to at most 2147483647>
%! kapris_partition (speye (3), 2, struct ("first_start", 2^31 - 1))
