// cli/report/png.h - small pictures of pixels; private to this folder.
// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kapris_report
{

// A data URI of a square PNG whose pixels are so opaque, 0 to 15 of 15, in one colour between dark and light, which
// shows on either ground.
std::string PixelUri(const std::vector<std::uint8_t> &pixels, size_t side);

} // namespace kapris_report
