## -*- texinfo -*-
## @deftypefn  {} {[@var{p}, @var{q}, @var{r}, @var{s}] =} kapris_order (@var{A}, @var{part})
## @deftypefnx {} {[@var{p}, @var{q}, @var{r}, @var{s}] =} kapris_order (@var{A}, @var{part}, @var{options})
## Order the sparse matrix @var{A} to singly bordered block-diagonal form by a partition of its rows or columns.
##
## With @var{k} parts, @code{@var{A}(@var{p}, @var{q})} has @var{k} diagonal blocks.  If rows are the cells (the option
## @code{net} is @qcode{"column"}, the default), a border of columns follows them: the columns with entries in more than
## one part.  Block @var{b} is in the rows @code{@var{r}(@var{b})} to @code{@var{r}(@var{b}+1) - 1} and the columns
## @code{@var{s}(@var{b})} to @code{@var{s}(@var{b}+1) - 1} of the ordered matrix; the border is in the columns
## @code{@var{s}(@var{k}+1)} to @code{@var{s}(@var{k}+2) - 1}.
##
## If columns are the cells (@code{net} is @qcode{"row"}), the border consists of rows, and @var{r} has the one entry
## more.
##
## Rows and columns of a block keep their order.  Nets without entries are in the last block.  The nets of the border
## are ordered by the first and then the last part that they are in.
##
## @example
## @group
## A = gallery ("poisson", 50);
## part = kapris_partition (A, 4);
## [p, q, r, s] = kapris_order (A, part);
## spy (A(p, q))
## @end group
## @end example
## @seealso{kapris_partition, kapris_eval, kapris_spy, dmperm}
## @end deftypefn

## SPDX-License-Identifier: MIT

function [p, q, r, s] = kapris_order (A, part, options = struct ())
  if (nargin < 2)
    print_usage ();
  endif
  [part, nparts] = kapris_part ("kapris_order", A, part, options);
  set = kapris_settings ("kapris_order", A, nparts, options);

  [first, last] = kapris_span (set.nets, part, nparts);
  first(last == 0) = last(last == 0) = nparts;
  block = first;
  block(first != last) = nparts + 1;
  [~, p] = sort (part);
  [~, q] = sortrows ([block, first, last]);
  r = cumsum ([1; accumarray(part, 1, [nparts, 1])])';
  s = cumsum ([1; accumarray(block, 1, [nparts + 1, 1])])';
  p = p';
  q = q';
  if (set.net == 1)
    [p, q, r, s] = deal (q, p, s, r);
  endif
endfunction

%!function check (A, part, options)
%!  by_row = isfield (options, "net");
%!  [p, q, r, s] = kapris_order (A, part, options);
%!  assert (sort (p), 1:rows (A));
%!  assert (sort (q), 1:columns (A));
%!  B = A(p, q);
%!  if (by_row)
%!    B = B';  [r, s] = deal (s, r);
%!  endif
%!  k = max (part);
%!  for b = 1:k
%!    outside = B(:, s(b):s(b+1) - 1);
%!    outside(r(b):r(b+1) - 1, :) = 0;
%!    assert (nnz (outside), 0);
%!    assert (r(b+1) - r(b), sum (part == b));
%!  endfor
%!  assert ([r(k+1), s(k+2)] - 1, size (B));
%!  assert (s(k+2) - s(k+1), kapris_eval (A, part, options).cut_nets);
%!endfunction

%!test
%! state = rand ("state");  rand ("state", 3);
%! A = sprand (120, 80, 0.015) != 0;
%! rand ("state", state);
%! check (A, kapris_partition (A, 4), struct ());
%! check (A, kapris_partition (A, 3, struct ("net", "row")), struct ("net", "row"));
%! check (gallery ("poisson", 12), kapris_partition (gallery ("poisson", 12), 5), struct ());

%!test
%! ## the order within blocks is kept, columns without entries go to the last block
%! A = sparse ([0, 1, 0, 1, 0; 1, 0, 0, 1, 0; 0, 0, 0, 1, 1]);
%! [p, q, r, s] = kapris_order (A, [2, 1, 2]);
%! assert (p, [2, 1, 3]);
%! assert (q, [1, 2, 3, 5, 4]);
%! assert (r, [1, 2, 4]);
%! assert (s, [1, 2, 5, 6]);

%!error id=Octave:invalid-fun-call kapris_order (speye (3))
%!error <part\(2\) is 1.5, but it should be a whole number> kapris_order (speye (3), [1, 1.5, 1])
%!error id=kapris:invalidArgument kapris_order (speye (3), [1, 2])
%!error id=kapris:unknownOption kapris_order (speye (3), [1, 1, 2], struct ("parts", 1))
