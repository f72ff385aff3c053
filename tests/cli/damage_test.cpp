// tests/cli/damage_test.cpp - no bytes harm the readers: damaged text gives a sound record or faults, the same faults
// with a list of problems as without, and nothing behind the text is read.
// SPDX-License-Identifier: MIT

#include "sound.h"

#include "io/gzip.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

using namespace kapris_cli;

struct Samples {
  Reader reader;
  std::vector<std::string> sound; // between them, all kinds of lines that the reader knows
};

static const Samples samples[] = {
    {TryHgr,
     {
         "% nets cells\n3 5\n1 2 3\n\n4 5 5\n",
         "3 5 1\n7 1 2\n2147483647\n0 4 5\n",
         "2 4 10\r\n1 2\r\n% weights\r\n3 4\r\n1\r\n0\r\n2147483647\r\n9",
         "2 3 11\n5 1 2\n6 2 3\n1\n% between\n2\n3\n\n",
     }},
    {TryPatoh,
     {
         "% base cells nets pins\n0 5 3 4\n0 1 2\n\n4\n",
         "1 5 3 5 2\n7 1 2\n2147483647\n0 4 5 5",
         "0 4 2 4 1 1\r\n0 1\r\n% weights\r\n2 3\r\n1 0\r\n\r\n2147483647 9",
         "1 3 2 4 3\n5 1 2\n6 2 3\n1\n% between\n2 3\n\n",
     }},
    {TryMtx,
     {
         "%%MatrixMarket matrix coordinate pattern general\n% c\n3 4 3\n1 2\n3 4\n3 1\n",
         "%%MatrixMarket matrix coordinate real symmetric\r\n3 3 3\r\n1 1 0.5\r\n3 1 -2e-3\r\n2 1 +1",
         "%%matrixmarket MATRIX coordinate complex hermitian\n2 2 2\n\n1 1 1 0\n2 1 2 -1\n\n",
         "%%MatrixMarket matrix coordinate integer skew-symmetric\n3 3 2\n3 1 -5\n3 1 7\n",
     }},
    {TryCnf,
     {
         "c about\np cnf 4 3\n1 -2 0\nc between\n3 4\n-1 0 0\n",
         "p cnf 3 2\r\n1 1 -1 0\r\n-3 0",
         "p cnf 5 1\n\n-5 2 0\n%\n0\n\n",
         "p cnf 2 2\n1 0 2 0\n",
     }},
};

static void Damage(std::string *text, std::mt19937 *random)
{
  static const std::string bytes("0123456789 \n\t\r%-+.c\0\xff", 21);
  const size_t at = text->empty() ? 0 : (*random)() % text->size();
  const size_t length = 1 + (*random)() % 4;

  switch ((*random)() % 4) {
  case 0:
    text->insert(at, 1, bytes[(*random)() % bytes.size()]);
    break;
  case 1:
    text->erase(at, length);
    break;
  case 2:
    text->insert(at, text->substr(at, length));
    break;
  default:
    text->replace(at, 1, 1, bytes[(*random)() % bytes.size()]);
  }
}

// The text ends where a page does, and the next page cannot be read.
struct Edge {
  char *bytes;
  size_t size;
};

static Edge MakeEdge()
{
  const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  void *bytes = mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);

  EXPECT_NE(bytes, MAP_FAILED);
  EXPECT_EQ(mprotect(static_cast<char *>(bytes) + page, page, PROT_NONE), 0);
  return {static_cast<char *>(bytes), page};
}

TEST(damage, gives_a_sound_record_or_the_same_faults_with_a_list_as_without)
{
  const Edge edge = MakeEdge();

  for (const auto &[reader, sound] : samples) {
    SCOPED_TRACE(sound[0]);
    std::mt19937 random(1);
    int nread = 0, nfailed = 0;
    for (unsigned trial = 0; trial < 4000; trial++) {
      std::string text = sound[trial % 4];
      for (unsigned n = trial % 5; n > 0; n--)
        Damage(&text, &random);
      ASSERT_LE(text.size(), edge.size);
      char *const start = edge.bytes + edge.size - text.size();
      std::memcpy(start, text.data(), text.size());

      Hgr hgr, listed;
      Problems problems;
      const std::string fault = FirstFault(reader, {start, text.size()}, nullptr, &hgr);
      ASSERT_EQ(FirstFault(reader, {start, text.size()}, &problems, &listed), fault) << text;
      (fault.empty() ? nread : nfailed)++;
      if (!fault.empty()) {
        ASSERT_NE(trial % 5, 0u) << "not damaged, but: " << fault;
        continue;
      }
      ASSERT_EQ(FirstFlaw(hgr), "") << text;
      ASSERT_EQ(hgr, listed) << text;
    }
    // Otherwise one side of the property was hardly tried.
    EXPECT_GT(nread, 800 + 50);
    EXPECT_GT(nfailed, 200);
  }
  munmap(edge.bytes, 2 * edge.size);
}

TEST(damage, of_gzip_data_is_found)
{
  const std::string text = samples[0].sound[0];
  const std::string bytes = Compress(text);
  std::mt19937 random(1);

  EXPECT_EQ(Decompress("x", bytes + Compress("more")), text + "more");
  for (size_t length = 2; length < bytes.size(); length++)
    EXPECT_THROW(Decompress("x", bytes.substr(0, length)), Failure) << length;
  for (int trial = 0; trial < 300; trial++) {
    std::string damaged = bytes;
    Damage(&damaged, &random);
    try {
      // Only the header has bytes without a checksum, such as the time.
      EXPECT_EQ(Decompress("x", damaged), text);
    } catch (const Failure &failure) {
      EXPECT_EQ(failure.text.substr(0, 7), "x:1:1: ");
    }
  }
}
