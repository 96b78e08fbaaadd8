#include <array>
#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <map>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "kz/Exception.h"
#include "kz/io/BufferedReader.h"
#include "kz/io/FileDescriptor.h"
#include "kz/io/InputStreamReader.h"
#include "kz/util/StringTokenizer.h"

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
  for (const auto& [bytes, length] : cases) {
    EXPECT_EQ(String(bytes).getBytes(), bytes);
    EXPECT_EQ(String(bytes).length(), length) << bytes;
  }
  EXPECT_EQ(String(std::wstring{0xD800, 0x110000, 0xDC41}).getBytes(), "\ufffd\ufffd\ufffd");
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
  for (const std::string& line : expected) content += (content.empty() ? "" : "\n") + line;
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

TEST(Reader, KeepsNoMoreOfALineThanItsLimit) {
  for (const long bufferSize : {4L, 5L, 6L, 2048L}) {
    const kz::Reference<kz::io::Reader> characters(new kz::io::InputStreamReader(
        new Pieces("12345\n123456\nabcdefghijk\n123456789", 9999), nullptr, bufferSize));
    kz::io::BufferedReader reader(characters.get(), bufferSize);
    std::string lines;
    for (String line; reader.readLine(line, 5) >= 0;) {
      lines += line.getBytes() + (reader.isCut() ? "~" : "|");
      if (line.equals("12345")) reader.skipRest();
    }
    EXPECT_EQ(lines, "12345|12345~abcde~fghij~k|12345~") << bufferSize;
  }
}

// A line without an end, nearly.
struct Endless : kz::io::InputStream {
  std::size_t read(char* bytes, std::size_t count) override {
    std::fill_n(bytes, count, 'x');
    given += count;
    return given < 200'000'000 ? count : 0;
  }
  std::size_t given = 0;
};

long mostMemory() {
  struct rusage use {};
  getrusage(RUSAGE_SELF, &use);
  return use.ru_maxrss;
}

TEST(Reader, ReadsOverAnyLineInTheSameMemory) {
  const kz::Reference<kz::io::Reader> characters(
      new kz::io::InputStreamReader(new Endless, nullptr, 2048));
  kz::io::BufferedReader reader(characters.get(), 2048);
  const long before = mostMemory();
  String line;
  EXPECT_EQ(reader.readLine(line, 65536), 65536);
  reader.skipRest();
  EXPECT_EQ(reader.readLine(line, 65536), -1);
  EXPECT_LT(mostMemory() - before, 10'000) << "kilobytes";
}

TEST(Text, IsTakenApart) {
  std::string all;
  kz::util::StringTokenizer words(" a  b;c ", L" ;"), everything(" a;;b", L" ;", true);
  while (words.hasMoreTokens()) all += words.nextToken().getBytes() + "|";
  while (everything.hasMoreTokens()) all += everything.nextToken().getBytes() + "|";
  EXPECT_EQ(all, "a|b|c| |a|;|;|b|");
  const String text("abcd");
  EXPECT_EQ((text.substring(1) + "|" + text.substring(1, 2) + "|" + text.substring(9)).getBytes(),
            "bcd|bc|");
}

TEST(Writer, WaitsForASlowReader) {
  std::array<int, 2> ends{};
  ASSERT_EQ(0, pipe2(ends.data(), O_NONBLOCK));
  const std::string content(300'000, 'x');
  std::thread writer([&] {
    kz::io::writeAll(ends[1], content.data(), content.size());
    close(ends[1]);
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  std::string received(content.size() + 1, '\0');
  std::size_t size = 0;
  while (const std::size_t count =
             kz::io::readSome(ends[0], received.data() + size, received.size() - size)) {
    size += count;
  }
  writer.join();
  close(ends[0]);
  EXPECT_EQ(received.substr(0, size), content);
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
