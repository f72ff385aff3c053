// mpi/bytes.h - records and arrays as bytes, for messages between processes of one program.
// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace kapris_mpi
{

class Packer
{
public:
  template <class T>
  void operator()(const T &value)
  {
    static_assert(std::is_trivially_copyable_v<T>);
    bytes.append(reinterpret_cast<const char *>(&value), sizeof value);
  }

  template <class T>
  void operator()(const std::vector<T> &values)
  {
    static_assert(std::is_trivially_copyable_v<T>);
    (*this)(std::uint64_t{values.size()});
    bytes.append(reinterpret_cast<const char *>(values.data()), sizeof(T) * values.size());
  }

  void operator()(const std::string &text)
  {
    (*this)(std::uint64_t{text.size()});
    bytes += text;
  }

  std::string bytes;
};

// Takes out what a Packer has put in, in the same order.
class Unpacker
{
public:
  explicit Unpacker(std::string_view given) : bytes(given)
  {
  }

  template <class T>
  void operator()(T &value)
  {
    static_assert(std::is_trivially_copyable_v<T>);
    std::memcpy(&value, Take(sizeof value), sizeof value);
  }

  template <class T>
  void operator()(std::vector<T> &values)
  {
    const std::uint64_t size = Size(sizeof(T));

    values.resize(size);
    if (size > 0)
      std::memcpy(values.data(), Take(sizeof(T) * size), sizeof(T) * size);
  }

  void operator()(std::string &text)
  {
    const std::uint64_t size = Size(1);

    text.assign(Take(size), size);
  }

private:
  std::uint64_t Size(std::size_t each)
  {
    std::uint64_t size = 0;

    (*this)(size);
    if (size > bytes.size() / each)
      throw std::runtime_error("a message is too short");
    return size;
  }

  const char *Take(std::size_t size)
  {
    if (size > bytes.size())
      throw std::runtime_error("a message is too short");
    const char *at = bytes.data();
    bytes.remove_prefix(size);
    return at;
  }

  std::string_view bytes;
};

} // namespace kapris_mpi
