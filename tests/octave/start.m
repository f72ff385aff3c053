## start.m - loads the package that KAPRIS_OCTAVE_PREFIX names, as a user's session would.
## SPDX-License-Identifier: MIT

prefix = getenv ("KAPRIS_OCTAVE_PREFIX");
pkg ("prefix", prefix, fullfile (prefix, "arch"));
pkg ("local_list", fullfile (prefix, "list"));
pkg load kapris
clear prefix
