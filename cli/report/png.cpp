// cli/report/png.cpp - small pictures of pixels.
// SPDX-License-Identifier: MIT

#include "report/png.h"

#include <new>
#include <png.h>

namespace kapris_report
{

static std::string Base64(const std::string &bytes)
{
  static constexpr char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;

  for (size_t i = 0; i < bytes.size(); i += 3) {
    unsigned long word = 0;
    for (size_t k = 0; k < 3; k++)
      word = word << 8 | (i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0);
    for (size_t k = 0; k < 4; k++)
      text += i + k > bytes.size() ? '=' : digits[word >> (18 - 6 * k) & 63];
  }
  return text;
}

std::string PixelUri(const std::vector<std::uint8_t> &pixels, size_t side)
{
  png_image image = {};
  std::vector<png_byte> colours;
  std::string file;

  for (int alpha = 0; alpha < 16; alpha++)
    colours.insert(colours.end(), {0x2f, 0x86, 0xc8, static_cast<png_byte>(17 * alpha)});
  image.version = PNG_IMAGE_VERSION;
  image.width = image.height = static_cast<png_uint_32>(side);
  image.format = PNG_FORMAT_RGBA_COLORMAP;
  image.colormap_entries = 16;
  png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
  file.resize(size);
  if (png_image_write_to_memory(&image, file.data(), &size, 0, pixels.data(), 0, colours.data()) == 0)
    throw std::bad_alloc(); // the only way in which it can fail here
  file.resize(size);
  return "data:image/png;base64," + Base64(file);
}

} // namespace kapris_report
