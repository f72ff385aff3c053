## -*- texinfo -*-
## @deftypefn {} {[@var{part}, @var{edgecut}] =} kapris (@var{name}, @var{A}, @var{nparts})
## Partition the rows of the square sparse matrix @var{A} into @var{nparts} parts.
##
## The rows of @var{A} are the cells.  Every column is a net that connects the rows in which it has entries; the values
## of the entries do not matter, and @var{A} need not be symmetric.  The parts get nearly equal numbers of rows, and few
## columns have entries in more than one part.
##
## @var{name} is @qcode{"PartRecursive"} (recursive bisection, each within 1%) or @qcode{"PartKway"} (direct k-way
## partitioning, parts within 6%), in any letter case.  @var{part} is a row vector with the part of every row, numbered
## @strong{from 0}.  @var{edgecut} is the number of columns with entries in more than one part.
##
## Two calls can give different partitions: the random sequence starts from the clock.  Running out of memory ends
## Octave, and Ctrl-C waits for the end of the call.  @code{kapris_partition} has neither restriction, takes rectangular
## matrices, weights, fixed cells and a seed, and numbers parts from 1.
##
## @example
## @group
## A = gallery ("poisson", 50);
## [part, edgecut] = kapris ("PartRecursive", A, 4);
## @end group
## @end example
## @seealso{kapris_partition, kapris_eval, kapris_order, kapris_spy}
## @end deftypefn

## The function is the file kapris.mex; this one has its help text and its tests.

%!test
%! A = gallery ("poisson", 20);
%! for name = {"PartRecursive", "partkway"}
%!   [part, edgecut] = kapris (name{1}, A, 3.9);
%!   assert (size (part), [1, 400]);
%!   assert (unique (part), 0:2);
%!   assert (edgecut, kapris_eval (A, part + 1).cut);
%! endfor

%!error <Wrong # of arguments> kapris ("PartKway")
%!error <Unknown zavikmex function abc> kapris ("abc", speye (3))
