## install.m - installs the package file of the argument.
## SPDX-License-Identifier: MIT

source (fullfile (fileparts (mfilename ("fullpath")), "prefix.m"));
pkg ("install", argv (){end});
