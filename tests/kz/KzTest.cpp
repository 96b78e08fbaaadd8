#include <cerrno>
#include <gtest/gtest.h>
#include <map>
#include <vector>

#include "kz/Exception.h"
#include "kz/Platform.h"
#include "kz/Utf8.h"
#include "kz/io/BufferedReader.h"
#include "kz/io/InputStreamReader.h"
#include "kz/io/OutputStreamWriter.h"
#include "kz/io/PrintWriter.h"

using kz::String;
using Texts = std::vector<std::string>;

namespace {

TEST(Text, KeepsEveryByte) {
  // Whole characters, then bytes that are none: stray, cut off, overlong, surrogates, too great.
  const std::map<std::string, int> cases = {{"\u00e4\u20ac\U0001F600\U0010FFFF", 4},
                                            {"\xff\xfe", 2},
                                            {"\xe2\x82z\xe2\x82\xac", 4},
                                            {"\xc0\x80\xe0\x80\x80", 5},
                                            {"\xed\xa0\x80", 3},
                                            {"\xf4\x90\x80\x80\xf5\x80", 6}};
  for (auto const& [bytes, length] : cases) {
    EXPECT_EQ(String(bytes).getBytes(), bytes);
    EXPECT_EQ(String(bytes).length(), length) << bytes;
  }
  EXPECT_EQ(String(std::wstring{0xD800, 0x110000, 0xDC41}).getBytes(), "\ufffd\ufffd\ufffd");
}

TEST(Text, IsCutBetweenCharacters) {
  const std::string text = "a\u00e4\u20ac\U0001F600";
  const std::size_t expected[] = {0, 1, 1, 3, 3, 3, 6, 6, 6, 6, 10, 10};
  for (std::size_t limit = 0; limit < std::size(expected); ++limit) {
    char buffer[12] = "***********";
    KZUnicodeToAnsi(buffer, String(text).characters().c_str(), static_cast<int>(limit) + 1);
    EXPECT_EQ(buffer, text.substr(0, expected[limit])) << limit;
  }
  EXPECT_EQ(kz::utf8::cut("\x80\x80\x80\x80", 3), 3U);
}

TEST(Text, ReplacesRangesAndLeavesItsCopiesAlone) {
  const struct {
    int start, count;
    char const *with, *expected;
  } cases[] = {{0, 0, "x", "xabc"},   {1, 1, "", "ac"},  {1, 99, "x", "ax"},
               {99, 99, "x", "abcx"}, {-5, 1, "", "bc"}, {1, -1, "x", "axbc"}};
  for (auto const& [start, count, with, expected] : cases) {
    const String original("abc");
    EXPECT_EQ(String(original).replace(start, count, with).getBytes(), expected);
    EXPECT_EQ(original.getBytes(), "abc");
  }
  String doubled("ab");
  EXPECT_EQ(doubled.insert(1, doubled).getBytes(), "aabb");
}

// Bytes in pieces of a size, as a slow pipe gives them.
struct Pieces : kz::io::InputStream {
  Pieces(std::string all, std::size_t size) : rest(std::move(all)), most(size) {}
  std::size_t read(char* bytes, std::size_t count) override {
    const std::size_t given = rest.copy(bytes, std::min(count, most));
    rest.erase(0, given);
    return given;
  }
  std::string rest;
  std::size_t most;
};

TEST(Reader, GivesTheSameLinesHoweverTheBytesCome) {
  const std::string limit(2047, 'x');  // the line ends where the program's buffers do
  const Texts expected = {"ab",         "", "x\u20ac\r", "\U0001F600\xff", limit, limit + "\u20ac",
                          "end\xe2\x82"};
  std::string content;
  for (std::string const& line : expected) content += (content.empty() ? "" : "\n") + line;
  for (const long bufferSize : {4L, 5L, 2047L, 2048L}) {
    for (const std::size_t piece : {1U, 2U, 3U, 5U, 9999U}) {
      const kz::Reference<kz::io::Reader> characters(
          new kz::io::InputStreamReader(new Pieces(content, piece), nullptr, bufferSize));
      kz::io::BufferedReader reader(characters.get(), bufferSize);
      Texts lines;
      for (String line; reader.readLine(line) >= 0;) lines.push_back(line.getBytes());
      EXPECT_EQ(lines, expected) << bufferSize << ", " << piece;
    }
  }
}

// Takes what is written, one entry for each write, or fails.
struct Sink : kz::io::OutputStream {
  void write(char const* bytes, std::size_t count) override {
    if (full) throw kz::ResultException(kz::statusOfErrno(ENOSPC));
    writes.emplace_back(bytes, count);
  }
  void close() override { writes.push_back("closed"); }
  Texts writes;
  bool full = false;
};

TEST(Writer, HandsOnWhatItHoldsAndNeverTwice) {
  const kz::Reference<Sink> sink(new Sink);
  const kz::Reference<kz::io::Writer> writer(
      new kz::io::OutputStreamWriter(sink.get(), nullptr, 4));
  kz::io::PrintWriter lines(writer.get(), true);
  lines.print("ab");
  EXPECT_TRUE(sink->writes.empty());
  lines.print("\u00e4");
  lines.println("c");
  sink->full = true;
  EXPECT_THROW(lines.println("lost"), kz::ResultException);
  sink->full = false;
  lines.print("d");
  lines.close();
  EXPECT_EQ(sink->writes, (Texts{"ab\u00e4", "c\n", "d", "closed"}));
}

TEST(Status, TellsFailuresApartAndIsNeverZeroToAShell) {
  for (int error = -1; error < 5000; ++error) {
    const int status = kz::statusOfErrno(error);
    const bool denied = error == EACCES || error == EPERM || error == EROFS;
    EXPECT_NE(status & 0xFF, 0) << error;
    EXPECT_EQ(status == kz::kStatusAccessDenied, denied) << error;
    EXPECT_EQ(status == kz::kStatusFileNotFound, error == ENOENT) << error;
  }
}

}  // namespace
