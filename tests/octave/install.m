## install.m - installs the package file of the argument into the prefix.
## SPDX-License-Identifier: MIT

prefix = getenv ("KAPRIS_OCTAVE_PREFIX");
pkg ("prefix", prefix, fullfile (prefix, "arch"));
pkg ("local_list", fullfile (prefix, "list"));
pkg ("install", argv (){end});
