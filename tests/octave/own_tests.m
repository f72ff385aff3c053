## own_tests.m - "pkg test", which only prints what it found, and the help texts; fails if something is wrong.
## SPDX-License-Identifier: MIT

1;
source (fullfile (fileparts (mfilename ("fullpath")), "start.m"));

report = evalc ("pkg test kapris");
disp (report);
passed = str2double (regexp (report, 'PASS +(\d+)', "tokens"){end}{1});
assert (passed > 50);
assert (isempty (regexp (report, 'FAIL[^\n\d]+[1-9]|SKIP', "once")));
for name = {"kapris", "kapris_partition", "kapris_eval", "kapris_order", "kapris_spy"}
  [text, format] = get_help_text (name{1});
  assert (format, "texinfo");
  assert (! isempty (get_first_help_sentence (name{1})));
  [formatted, status] = __makeinfo__ (text, "plain text");
  assert (status, 0);
endfor
