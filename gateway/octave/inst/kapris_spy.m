## -*- texinfo -*-
## @deftypefn  {} {} kapris_spy (@var{A}, @var{part})
## @deftypefnx {} {} kapris_spy (@var{A}, @var{part}, @var{options})
## @deftypefnx {} {@var{h} =} kapris_spy (@dots{})
## Draw the sparse matrix @var{A} as it is and ordered by a partition, side by side, in the current figure.
##
## Entries have the colour of their part, and those of nets that are in more than one part are grey: on the right, they
## are the border (see @code{kapris_order}).  @var{options} are those of @code{kapris_partition}, of which @code{net}
## matters.  The seven colours can be told apart by colour-blind people; with more parts they repeat.
##
## The pictures have at most 300 points in each direction, so that large matrices take no longer.  Where a point stands
## for several entries, it shows what most of them have.
##
## @var{h} has the handles of the two axes.
##
## @example
## @group
## A = gallery ("poisson", 50);
## kapris_spy (A, kapris_partition (A, 4));
## print -dpng matrix.png
## @end group
## @end example
## @seealso{kapris_order, kapris_partition, spy}
## @end deftypefn

## SPDX-License-Identifier: MIT

function h = kapris_spy (A, part, options = struct ())
  if (nargin < 2)
    print_usage ();
  endif
  [part, nparts] = kapris_part ("kapris_spy", A, part, options);
  set = kapris_settings ("kapris_spy", A, nparts, options);
  if (isempty (A))
    error ("kapris:invalidArgument", "kapris_spy: A must have rows and columns");
  endif

  [p, q, r, s] = kapris_order (A, part, options);
  [first, last] = kapris_span (set.nets, part, nparts);
  net_colours = 1 + mod (first - 1, 7);
  net_colours(first != last) = 8;
  [i, j] = find (A);
  if (set.net == 1)
    colours = net_colours(i);
  else
    colours = net_colours(j);
  endif
  place_i(p) = 1:rows (A);
  place_j(q) = 1:columns (A);
  clf ();
  axes = [subplot("position", [0.08, 0.1, 0.4, 0.78]), subplot("position", [0.57, 0.1, 0.4, 0.78])];
  draw (axes(1), size (A), i, j, colours);
  title (axes(1), sprintf ("%d x %d, %d nonzeros", rows (A), columns (A), nnz (A)), "fontweight", "normal");
  draw (axes(2), size (A), place_i(i), place_j(j), colours);
  title (axes(2), sprintf ("%d parts, %d of %d %s cut", nparts, sum (first != last), numel (first), ...
                           {"columns", "rows"}{set.net + 1}), "fontweight", "normal");
  if (nparts <= 32)
    mark_blocks (axes(2), r, s, size (A));
  endif
  if (nargout > 0)
    h = axes;
  endif
endfunction

## Seven hues of different lightness, and grey for the border.
function colours = palette ()
  colours = uint8 ([  0, 114, 178; 230, 159,   0;   0, 158, 115; 204, 121, 167;  86, 180, 233; 213,  94,   0;
                    204, 187,  68; 150, 150, 150]);
endfunction

function draw (ax, shape, i, j, colours)
  points = min (shape, 300);
  at = sub2ind (points, ceil (i(:) * points(1) / shape(1)), ceil (j(:) * points(2) / shape(2)));
  ## What most entries of a point have; among equals, which colour wins differs from point to point, so that none is
  ## favoured. The last assignment stays.
  [point, colour, count] = find (sparse (at, colours(:), 1, prod (points), 8));
  [~, order] = sort (count + mod (point + 3 * colour, 8) / 16);
  picture = repmat (uint8 (255), prod (points), 3);
  winner = zeros (prod (points), 1);
  winner(point(order)) = colour(order);
  picture(winner > 0, :) = palette ()(winner(winner > 0), :);
  half = shape ./ points / 2;
  image (ax, [half(2) + 0.5, shape(2) + 0.5 - half(2)], [half(1) + 0.5, shape(1) + 0.5 - half(1)],
         reshape (picture, [points, 3]));
  set (ax, "ydir", "reverse", "dataaspectratio", [1, 1, 1], "xlim", [0.5, shape(2) + 0.5],
       "ylim", [0.5, shape(1) + 0.5], "xtick", unique ([1, shape(2)]), "ytick", unique ([1, shape(1)]), "box", "on",
       "layer", "top");
endfunction

function mark_blocks (ax, r, s, shape)
  r = r(2:end-1) - 0.5;
  s = s(2:end-1) - 0.5;
  line (ax, repmat ([0.5; shape(2) + 0.5], 1, numel (r)), [r; r], "color", [0.75, 0.75, 0.75], "linewidth", 0.5);
  line (ax, [s; s], repmat ([0.5; shape(1) + 0.5], 1, numel (s)), "color", [0.75, 0.75, 0.75], "linewidth", 0.5);
endfunction

%!function picture = picture_of (axes)
%!  picture = get (findobj (axes, "type", "image"), "cdata");
%!endfunction

%!test
%! ## every entry has its part's colour, nets that are cut are grey
%! A = sparse ([0, 1, 0, 1; 1, 0, 0, 0; 0, 0, 1, 1]);
%! hf = figure ("visible", "off");
%! unwind_protect
%!   h = kapris_spy (A, [1, 2, 2]);
%!   seen = double (picture_of (h(1)));
%!   assert (any (seen < 255, 3), full (A != 0));
%!   assert (seen(2, 1, :), seen(3, 3, :));
%!   assert (any (seen(1, 2, :) != seen(2, 1, :)));
%!   assert (seen([1, 3], 4, :)(:), repmat (150, 6, 1));
%!   [p, q] = kapris_order (A, [1, 2, 2]);
%!   assert (double (picture_of (h(2))), seen(p, q, :));
%!   h = kapris_spy (A, [1, 2, 1, 2], struct ("net", "row"));
%!   seen = double (picture_of (h(1)));
%!   assert (seen(1, 4, :), seen(1, 2, :));
%!   assert (seen(3, [3, 4], :)(:), repmat (150, 6, 1));
%! unwind_protect_cleanup
%!   close (hf);
%! end_unwind_protect

%!test
%! ## large matrices are thinned
%! hf = figure ("visible", "off");
%! unwind_protect
%!   h = kapris_spy (speye (5000, 300), 1 + ((1:5000) > 100));
%!   seen = picture_of (h(2));
%!   assert (size (seen), [300, 300, 3]);
%!   assert (seen(8:end, 1:100, :)(:), repmat (uint8 (255), 293 * 300, 1));
%!   assert (any (seen(1, 1, :) != seen(18, 300, :)));
%!   ## A point of three entries shows the colour of two of them.
%!   h = kapris_spy (sparse ([1, 2, 2, 600], [1, 1, 2, 2], 1, 600, 600), 1 + ((1:600) == 600));
%!   seen = picture_of (h(1))(1, 1, :)(:)';
%!   assert (seen, uint8 ([0, 114, 178]));
%! unwind_protect_cleanup
%!   close (hf);
%! end_unwind_protect

%!error id=Octave:invalid-fun-call kapris_spy (speye (3))
%!error <A must have rows and columns> kapris_spy (sparse (0, 3), [])
%!error <part has 1 entries> kapris_spy (speye (3), 1)
%!error id=kapris:unknownOption kapris_spy (speye (3), [1, 1, 2], struct ("colour", 1))
