## leaks.m - 1,000 rounds of calls, failing ones among them, leave the resident memory where it was.
## SPDX-License-Identifier: MIT

1;
source (fullfile (fileparts (mfilename ("fullpath")), "start.m"));

function kb = resident ()
  kb = str2double (regexp (fileread ("/proc/self/status"), 'VmRSS:\s+(\d+)', "tokens"){1}{1});
endfunction

function expect_failure (identifier, varargin)
  seen = struct ("identifier", "none");
  try
    kapris_partition (varargin{:});
  catch seen
  end_try_catch
  assert (seen.identifier, identifier);
endfunction

function round (A, k)
  [part, cut] = kapris ({"PartRecursive", "PartKway"}{1 + mod(k, 2)}, A(1:100, 1:100), 2 + mod (k, 3));
  [part, info] = kapris_partition (A, 3, struct ("runs", 1, "starts", 2, "threads", 1 + mod (k, 2)));
  kapris_partition (A, 3, struct ("runs", 1, "initial", part, "net", "row"));
  try
    kapris ("PartKway", A, 1);
  catch
  end_try_catch
  try
    kapris ("unknown", A, 2);
  catch
  end_try_catch
  expect_failure ("kapris:memoryLimit", A, 4, struct ("memory_limit", 1e5));
  ## The library refuses the first, kapris_partition the second.
  expect_failure ("kapris:invalidArgument", A, 4, struct ("first_start", 2^31 - 1));
  expect_failure ("kapris:invalidArgument", A, 4, struct ("cell_weights", repmat (2^52, 1, rows (A))));
  expect_failure ("kapris:unknownOption", A, 4, struct ("weights", 1));
endfunction

A = gallery ("poisson", 20);
for k = 1:200
  round (A, k);
endfor
before = resident ();
for k = 1:1000
  round (A, k);
endfor
grown = resident () - before;
printf ("resident: %d KB after 200 rounds, %+d KB after 1,000 more\n", before, grown);
## One result of kapris_partition that is not given back in each round would be 1.6 MB or more.
assert (grown < 1000);
