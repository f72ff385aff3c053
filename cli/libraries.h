// cli/libraries.h - the tool uses the names of the libraries below it as its own.
// SPDX-License-Identifier: MIT
#pragma once

namespace kapris_formats
{
}
namespace kapris_report
{
}

namespace kapris_cli
{

using namespace kapris_formats;
using namespace kapris_report;

} // namespace kapris_cli
