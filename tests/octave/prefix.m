## prefix.m - packages are those in the folder that KAPRIS_OCTAVE_PREFIX names, and no others.
## SPDX-License-Identifier: MIT

prefix = getenv ("KAPRIS_OCTAVE_PREFIX");
pkg ("prefix", prefix, fullfile (prefix, "arch"));
## For root, pkg uses the second list.
pkg ("local_list", fullfile (prefix, "list"));
pkg ("global_list", fullfile (prefix, "global_list"));
clear prefix ans
