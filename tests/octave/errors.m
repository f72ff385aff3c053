## errors.m - every error text of the gateway in Octave, which puts the name of the function before it; and that memory
## that runs out in the library is an error.
## SPDX-License-Identifier: MIT

1;
source (fullfile (fileparts (mfilename ("fullpath")), "start.m"));

function expect (identifier, message, noutputs, varargin)
  outputs = cell (1, noutputs);
  seen = struct ("identifier", "", "message", "no error");
  try
    [outputs{:}] = kapris (varargin{:});
  catch seen
  end_try_catch
  assert (seen.message, message);
  assert (seen.identifier, identifier);
endfunction

A = gallery ("poisson", 9);
unknown = "kapris: Unknown zavikmex function %s";
square = "kapris: Second parameter must be a symmetric sparse matrix";
few = "kapris: nparts must be at least 2";
count = "kapris: Wrong # of arguments";
expect ("", count, 3, "PartKway", A, 2);
expect ("", count, 0);
expect ("", count, 0, 1);
expect ("", count, 0, 1, 2, 3, 4, 5);
expect ("", "kapris: First parameter must be a string", 0, 1, 2);
expect ("", square, 0, "abc", ones (3));
expect ("", square, 0, "abc", A(1:3, 1:4), 2);
expect ("zavikmex:invalidValue", sprintf (unknown, "abc"), 0, "abc", A);
expect ("zavikmex:invalidValue", sprintf (unknown, "PartRecursivePartRecursi"), 1, "PartRecursivePartRecursive", A, 2);
expect ("", "kapris: Third parameter needed: nparts", 1, "PartKway", A);
expect ("", "kapris: Wrong number of input parameters", 2, "PartKway", A, 1, 1);
for nparts = {1, 1.9, -5, NaN, Inf, -Inf, 2^32 + 2}
  expect ("", few, 2, "PARTKWAY", A, nparts{1});
endfor
## What is no number, the host itself refuses.
for nparts = {[], {}, struct()}
  fail ("kapris ('PartKway', A, nparts{1})");
endfor
ans = "as before";
kapris ("PartRecursive", A, 2);
assert (ans, "as before");
assert (size (kapris ("PartKway", sparse (0, 0), 2)), [1, 0]);
disp ("texts: ok");

## The call needs 70 to 90 MB more than the process has by now; it gets 50.
B = spdiags (ones (1000000, 3), -1:1, 1000000, 1000000);
kept = 1:1000;
status = fileread ("/proc/self/status");
limit = 1024 * str2double (regexp (status, 'VmSize:\s+(\d+)', "tokens"){1}{1}) + 50e6;
assert (system (sprintf ("prlimit --pid %d --as=%d:", getpid (), limit)), 0);
seen = struct ("identifier", "none");
try
  kapris_partition (B, 2, struct ("runs", 1));
catch seen
end_try_catch
assert (system (sprintf ("prlimit --pid %d --as=unlimited:", getpid ())), 0);
assert (seen.identifier, "kapris:outOfMemory");
assert (kept, 1:1000);
assert (kapris_partition (A, 2), kapris_partition (A, 2));
printf ("memory: ok, %s\n", seen.message);
