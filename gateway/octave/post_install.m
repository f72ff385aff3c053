## post_install.m - puts the help text of kapris beside kapris.mex, where "help" looks for it.
## SPDX-License-Identifier: MIT

function post_install (desc)
  architecture = [__octave_config_info__("canonical_host_type"), "-", __octave_config_info__("api_version")];
  [done, message] = copyfile (fullfile (desc.dir, "kapris.m"), fullfile (desc.archprefix, architecture));
  if (! done)
    error ("kapris: cannot install the help text: %s", message);
  endif
endfunction
