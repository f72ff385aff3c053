// cli/report/escape.h - text of any origin in a page and in a command line.
// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace kapris_report
{

// For element content and for attributes in double quotes. What is no UTF-8 becomes the replacement character; control
// characters become the symbols for them, and those that turn the direction of text disappear behind the replacement
// character too, so that a name cannot look like another.
std::string EscapeHtml(std::string_view text);

// One word of a POSIX command line; with bytes that cannot be shown, in the form $'...' of bash, zsh and ksh.
std::string QuoteForShell(std::string_view word);

} // namespace kapris_report
