## start.m - loads the installed package, as a user's session would.
## SPDX-License-Identifier: MIT

source (fullfile (fileparts (mfilename ("fullpath")), "prefix.m"));
pkg load kapris
