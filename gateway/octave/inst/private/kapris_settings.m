## kapris_settings.m - checks what the helpers are called with, in one place.
## SPDX-License-Identifier: MIT
##
##   set = kapris_settings (caller, A, nparts, options)
##
## Returns all options with their defaults, words as numbers from 0 (net: 0 = column) and arrays as columns, together
## with nets, whose columns are the nets and whose rows are the cells. NaN stands for a default that the library has.
## Errors name the caller and the option.
##
## No total of weights is above 2^53, so that whoever adds them up gets exact figures in doubles.

function set = kapris_settings (caller, A, nparts, options)
  ## Choices, in the order of the C interface.
  persistent words = struct (
    "net",        {{"column", "row"}},
    "scheme",     {{"recursive", "kway"}},
    "objective",  {{"cut", "soed", "connectivity"}},
    "coarsening", {{"alternate", "degree-stars", "strong-stars", "whole-nets", "pairs"}},
    "refinement", {{"fm", "one-way-fm", "early-exit-fm"}},
    "vcycle",     {{"never", "best", "improving", "close"}});
  persistent most = 2^31 - 1;
  persistent most_weight = 2^53;
  ## Default, smallest, largest, and whether it has to be a whole number.
  persistent numbers = struct (
    "runs",         [NaN, 1, most, true],
    "members",      [NaN, 0, most, true],
    "combinations", [NaN, 0, most, true],
    "reconst",      [0, 0, 1, true],
    "seed",         [0, -1, most, true],
    "epsilon",      [0.03, 0, realmax, false],
    "min_epsilon",  [1, 0, 1, false],
    "allow_empty",  [0, 0, 1, true],
    "starts",       [1, 1, most, true],
    "first_start",  [0, 0, most, true],
    "threads",      [1, 1, most, true],
    "time_limit",   [0, 0, Inf, false],
    "memory_limit", [0, 0, 2^53, true]);
  ## Smallest value of an entry, and for what there is one. Where a largest is needed, it is nparts.
  persistent arrays = struct (
    "cell_weights", {{0, "cell"}}, "net_weights", {{0, "net"}}, "fixed", {{0, "cell"}}, "initial", {{1, "cell"}},
    "target_weights", {{0, "part"}});
  ## Other words for choices.
  persistent synonyms = struct ("km1", "connectivity");
  ## Former names.
  persistent former = struct ("imbalance", "epsilon", "part_shares", "target_weights");

  check_matrix (caller, A);
  check_number (caller, "nparts", nparts, [2, 1, most, true]);
  if (! isstruct (options) || ! isscalar (options))
    refuse (caller, "options must be a struct");
  endif
  for [name, old] = former
    if (isfield (options, old) && ! isfield (options, name))
      options.(name) = options.(old);
      options = rmfield (options, old);
    endif
  endfor
  set = struct ("nparts", double (nparts));
  for [values, name] = words
    set.(name) = NaN;
  endfor
  set.net = 0;
  for [values, name] = numbers
    set.(name) = values(1);
  endfor
  for [values, name] = arrays
    set.(name) = [];
  endfor

  for [value, name] = options
    if (isfield (words, name))
      if (ischar (value) && isrow (value) && isfield (synonyms, value))
        value = synonyms.(value);
      endif
      set.(name) = check_word (caller, name, value, words.(name));
    elseif (isfield (numbers, name))
      check_number (caller, name, value, numbers.(name));
      set.(name) = double (value);
    elseif (! isfield (arrays, name))
      known = strjoin ([fieldnames(words); fieldnames(numbers); fieldnames(arrays)]', ", ");
      error ("kapris:unknownOption", "%s: unknown option '%s'; there are %s", caller, name, known);
    endif
  endfor
  if (set.net == 1)
    set.nets = A.';
  else
    set.nets = A;
  endif
  counts = struct ("cell", rows (set.nets), "net", columns (set.nets), "part", set.nparts);
  highest = struct ("cell_weights", most_weight, "net_weights", most_weight, "fixed", nparts, "initial", nparts, ...
                    "target_weights", 1e15);
  for [values, name] = arrays
    if (isfield (options, name) && ! isempty (options.(name)))
      set.(name) = check_array (caller, name, options.(name), counts.(values{2}), values{2}, values{1}, highest.(name));
    endif
  endfor
  check_total (caller, "cell_weights", set.cell_weights, 1, "the total cell weight", most_weight);
  ## No figure counts a net more often than for each of its pins and for each part.
  times = min (full (sum (set.nets != 0, 1))(:), set.nparts);
  check_total (caller, "net_weights", set.net_weights, times, "the sum of net weight x min(pins, nparts)", most_weight);
endfunction

function refuse (caller, format, varargin)
  error ("kapris:invalidArgument", ["%s: " format], caller, varargin{:});
endfunction

function check_matrix (caller, A)
  if (! issparse (A))
    refuse (caller, "A must be a sparse matrix; sparse (A) makes one");
  elseif (max ([rows(A), columns(A), nnz(A)]) > 2^31 - 1)
    refuse (caller, "A must have at most 2^31-1 rows, columns and nonzeros");
  endif
endfunction

function number = check_word (caller, name, value, choices)
  number = [];
  if (ischar (value))
    number = find (strcmp (value, choices)) - 1;
  endif
  if (isempty (number))
    refuse (caller, "%s must be one of \"%s\"", name, strjoin (choices, "\", \""));
  endif
endfunction

function check_number (caller, name, value, rule)
  if (! (isnumeric (value) || islogical (value)) || ! isscalar (value) || ! isreal (value))
    refuse (caller, "%s must be a real number", name);
  elseif (rule(4) && value != fix (value))
    refuse (caller, "%s is %g, but it should be a whole number", name, value);
  elseif (! (value >= rule(2)))
    refuse (caller, "%s is %g, but it should be at least %g", name, value, rule(2));
  elseif (value > rule(3))
    refuse (caller, "%s is %.15g, but it should be at most %.15g", name, value, rule(3));
  endif
endfunction

function array = check_array (caller, name, value, n, what, low, high)
  if (! (isnumeric (value) || islogical (value)) || ! isvector (value) || ! isreal (value))
    refuse (caller, "%s must be a real vector", name);
  elseif (numel (value) != n)
    refuse (caller, "%s has %d entries, but there are %d %ss", name, numel (value), n, what);
  endif
  ## Checked as they came: a double does not hold every integer of 64 bits.
  value = full (value(:));
  if (strcmp (what, "part"))
    at = find (! (value > low & value <= high), 1);
    should = sprintf ("above 0 and at most %g", high);
  else
    at = find (! (value >= low & value <= high & value == fix (value)), 1);
    should = sprintf ("a whole number from %d to %d", low, high);
  endif
  if (! isempty (at))
    refuse (caller, "%s(%d) is %s, but it should be %s", name, at, digits (value(at)), should);
  endif
  array = double (value);
endfunction

## Refuses at the entry that takes the sum of weights .* times above high.
function check_total (caller, name, weights, times, what, high)
  if (isempty (weights))
    return;
  endif
  ## In integers, which stop at 2^63 - 1: sums of doubles would stop at high itself where 1 is added.
  at = find (cumsum (int64 (weights) .* int64 (times), "native") > high, 1);
  if (! isempty (at))
    refuse (caller, "%s(%d) is %d: %s is then above %d", name, at, weights(at), what, high);
  endif
endfunction

## A number with as many digits as it takes to tell it from others.
function text = digits (number)
  if (isinteger (number))
    text = strtrim (disp (number));
  else
    text = sprintf ("%.15g", number);
    if (str2double (text) != number)
      text = sprintf ("%.17g", number);
    endif
  endif
endfunction
