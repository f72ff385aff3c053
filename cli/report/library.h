// cli/report/library.h - the report library uses the names of the formats library as its own.
// SPDX-License-Identifier: MIT
#pragma once

namespace kapris_formats
{
}

namespace kapris_report
{

using namespace kapris_formats;

} // namespace kapris_report
