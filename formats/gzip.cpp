// formats/gzip.cpp - gzip data in memory.
// SPDX-License-Identifier: MIT
//
// zlib takes and gives pieces of at most 2^32 bytes; smaller ones keep the output in the cache.

#include "formats/gzip.h"

#include "formats/failure.h"

#include <algorithm>
#include <fmt/core.h>
#include <memory>
#include <new>
#include <vector>
#include <zlib.h>

namespace kapris_formats
{

static constexpr size_t piece = 1 << 18;
static constexpr int gzip_window = 15 + 16; // the largest window, with the gzip header

bool IsGzip(std::string_view bytes)
{
  return bytes.starts_with("\x1f\x8b");
}

// Hands zlib the next piece of the input once it has used up the last.
static void Feed(z_stream *stream, std::string_view *left)
{
  if (stream->avail_in > 0)
    return;
  const size_t size = std::min(left->size(), piece);
  // zlib's interface has no const, but it does not write here.
  stream->next_in = reinterpret_cast<Bytef *>(const_cast<char *>(left->data()));
  stream->avail_in = static_cast<uInt>(size);
  left->remove_prefix(size);
}

static void Check(int status)
{
  if (status == Z_MEM_ERROR)
    throw std::bad_alloc();
  if (status != Z_OK)
    throw Failure{EXIT_INTERNAL, fmt::format("internal failure: zlib returned {}", status)};
}

[[noreturn]] static void FailDamaged(const std::string &name, const std::string &what, size_t nread)
{
  throw Failure{
      EXIT_MALFORMED,
      fmt::format("{}:1:1: the gzip data {}, after {} bytes of text: fetch or compress the file again", name,
                  what, nread)};
}

// Nothing, or the zeros that fill the last block of a tape or disk.
static bool IsPadding(std::string_view bytes)
{
  return bytes.find_first_not_of('\0') == std::string_view::npos;
}

std::string Decompress(const std::string &name, std::string_view bytes)
{
  z_stream stream = {};
  std::vector<char> out(piece);
  std::string text;

  Check(inflateInit2(&stream, gzip_window));
  const std::unique_ptr<z_stream, int (*)(z_stream *)> guard(&stream, inflateEnd);
  for (;;) {
    Feed(&stream, &bytes);
    stream.next_out = reinterpret_cast<Bytef *>(out.data());
    stream.avail_out = static_cast<uInt>(out.size());
    const int status = inflate(&stream, Z_NO_FLUSH);
    text.append(out.data(), out.size() - stream.avail_out);
    if (status == Z_STREAM_END &&
        IsPadding({reinterpret_cast<const char *>(stream.next_in), stream.avail_in}) && IsPadding(bytes))
      return text;
    if (status == Z_STREAM_END)
      Check(inflateReset(&stream)); // another member follows
    else if (status == Z_BUF_ERROR)
      FailDamaged(name, "ends too early", text.size());
    else if (status == Z_DATA_ERROR || status == Z_NEED_DICT)
      FailDamaged(name, "is damaged", text.size());
    else
      Check(status);
  }
}

std::string Compress(std::string_view text)
{
  constexpr int memory_level = 8; // zlib's default
  z_stream stream = {};
  std::vector<char> out(piece);
  std::string bytes;
  int status = Z_OK;

  Check(deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, gzip_window, memory_level,
                     Z_DEFAULT_STRATEGY));
  const std::unique_ptr<z_stream, int (*)(z_stream *)> guard(&stream, deflateEnd);
  while (status != Z_STREAM_END) {
    Feed(&stream, &text);
    stream.next_out = reinterpret_cast<Bytef *>(out.data());
    stream.avail_out = static_cast<uInt>(out.size());
    status = deflate(&stream, text.empty() ? Z_FINISH : Z_NO_FLUSH);
    if (status != Z_STREAM_END)
      Check(status);
    bytes.append(out.data(), out.size() - stream.avail_out);
  }
  return bytes;
}

} // namespace kapris_formats
