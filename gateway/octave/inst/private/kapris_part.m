## kapris_part.m - checks a partition that is an argument: a whole number of at least 1 for every cell.
## SPDX-License-Identifier: MIT
##
##   [part, nparts] = kapris_part (caller, A, part, options)

function [part, nparts] = kapris_part (caller, A, part, options)
  row_nets = isstruct (options) && isfield (options, "net") && strcmp (options.net, "row");
  n = size (A, 1 + row_nets);
  if (! isnumeric (part) || ! isreal (part) || ! (isvector (part) || isempty (part)))
    error ("kapris:invalidArgument", "%s: part must be a real vector", caller);
  elseif (numel (part) != n)
    error ("kapris:invalidArgument", "%s: part has %d entries, but there are %d cells", caller, numel (part), n);
  endif
  part = double (full (part(:)));
  at = find (! (part >= 1 & part < 2^31 & part == fix (part)), 1);
  if (! isempty (at))
    error ("kapris:invalidArgument", "%s: part(%d) is %g, but it should be a whole number of at least 1", caller, at,
           part(at));
  endif
  nparts = max ([part; 1]);
  for name = {"target_weights", "part_shares"}
    if (isstruct (options) && isfield (options, name{1}))
      nparts = max (nparts, numel (options.(name{1})));
    endif
  endfor
endfunction
