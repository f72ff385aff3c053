// cli/report/png.cpp - small pictures of pixels.
// SPDX-License-Identifier: MIT

#include "report/png.h"

#include <new>
#include <zlib.h>

namespace kapris_cli
{

static constexpr std::uint8_t red = 0x2f, green = 0x86, blue = 0xc8;

static void AppendWord(std::string *bytes, unsigned long word)
{
  for (int shift = 24; shift >= 0; shift -= 8)
    *bytes += static_cast<char>(word >> shift & 0xff);
}

static void AppendChunk(std::string *file, const std::string &type, const std::string &data)
{
  const std::string body = type + data;

  AppendWord(file, data.size());
  *file += body;
  AppendWord(file, crc32(0, reinterpret_cast<const Bytef *>(body.data()), static_cast<uInt>(body.size())));
}

static std::string Deflate(const std::string &data)
{
  uLongf size = compressBound(data.size());
  std::string packed(size, '\0');

  if (compress2(reinterpret_cast<Bytef *>(packed.data()), &size, reinterpret_cast<const Bytef *>(data.data()),
                data.size(), Z_BEST_COMPRESSION) != Z_OK)
    throw std::bad_alloc(); // the only way in which it can fail here
  packed.resize(size);
  return packed;
}

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
  std::string file = "\x89PNG\r\n\x1a\n", header, palette, alpha, rows;

  AppendWord(&header, side);
  AppendWord(&header, side);
  header += std::string("\x04\x03\x00\x00\x00", 5); // four bits per pixel, by palette
  for (int i = 0; i < 16; i++) {
    palette += {static_cast<char>(red), static_cast<char>(green), static_cast<char>(blue)};
    alpha += static_cast<char>(17 * i);
  }
  for (size_t y = 0; y < side; y++) {
    rows += '\0'; // no filter
    for (size_t x = 0; x < side; x += 2) {
      const unsigned second = x + 1 < side ? pixels[y * side + x + 1] : 0u;
      rows += static_cast<char>(pixels[y * side + x] << 4 | second);
    }
  }
  AppendChunk(&file, "IHDR", header);
  AppendChunk(&file, "PLTE", palette);
  AppendChunk(&file, "tRNS", alpha);
  AppendChunk(&file, "IDAT", Deflate(rows));
  AppendChunk(&file, "IEND", "");
  return "data:image/png;base64," + Base64(file);
}

} // namespace kapris_cli
