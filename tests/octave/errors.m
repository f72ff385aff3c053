## errors.m - errors of the gateway become those of Octave, which puts the name of the function before the text; and
## memory that runs out in the library is an error.
## SPDX-License-Identifier: MIT

1;
source (fullfile (fileparts (mfilename ("fullpath")), "start.m"));

A = gallery ("poisson", 9);
seen = struct ("identifier", "");
try
  kapris ("abc", A);
catch seen
end_try_catch
assert (seen.message, "kapris: Unknown zavikmex function abc");
assert (seen.identifier, "zavikmex:invalidValue");
fail ("kapris ('PartKway', A, 1)", "^kapris: nparts must be at least 2$");
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
