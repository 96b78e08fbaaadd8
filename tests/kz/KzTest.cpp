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
#include "kz/io/FileInputStream.h"
#include "kz/io/InputStreamReader.h"
#include "kz/util/StringTokenizer.h"
#include "support/TempFolder.h"

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

struct Lines : kz::io::BufferedReader {
  Lines(kz::io::InputStream* bytes, long bufferSize)
      : BufferedReader(new kz::io::InputStreamReader(bytes, nullptr, bufferSize), bufferSize) {}
};

TEST(Reader, GivesTheSameLinesHoweverTheBytesCome) {
  const std::string limit(2047, 'x');  // the line ends where the program's buffers do
  const Texts expected = {"ab",         "", "x\u20ac\r", "\U0001F600\xff", limit, limit + "\u20ac",
                          "end\xe2\x82"};
  std::string content;
  for (const std::string& line : expected) content += (content.empty() ? "" : "\n") + line;
  for (const long bufferSize : {4L, 5L, 2047L, 2048L}) {
    for (const std::size_t piece : {1U, 3U, 9999U}) {
      Lines given(new Pieces(content, piece), bufferSize);
      Texts lines;
      for (String line; given.readLine(line) >= 0;) lines.push_back(line.getBytes());
      EXPECT_EQ(lines, expected) << bufferSize << ", " << piece;
    }
  }
}

TEST(Reader, KeepsNoMoreOfALineThanItsLimit) {
  for (const long bufferSize : {4L, 5L, 6L, 2048L}) {
    Lines given(new Pieces("12345\n123456\nabcdefghijk\n123456789", 9999), bufferSize);
    std::string lines;
    for (String line; given.readLine(line, 5) >= 0;) {
      lines += line.getBytes() + (given.isCut() ? "~" : "|");
      if (line.equals("12345")) given.skipRest();
    }
    EXPECT_EQ(lines, "12345|12345~abcde~fghij~k|12345~") << bufferSize;
  }
}

TEST(Reader, ReadsOverAnyLineInTheSameMemory) {
  const TempFolder folder;
  writeFile(folder / "zeros", "");
  std::filesystem::resize_file(folder / "zeros", 100'000'000);
  Lines lines(new kz::io::FileInputStream(folder / "zeros"), 2048);
  const auto mostMemory = [] {
    struct rusage use {};
    getrusage(RUSAGE_SELF, &use);
    return use.ru_maxrss;
  };
  const long before = mostMemory();
  String line;
  EXPECT_EQ(lines.readLine(line, 65536), 65536);
  lines.skipRest();
  EXPECT_EQ(lines.readLine(line, 65536), -1);
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
  std::string received;
  std::array<char, 65536> piece{};
  while (const auto count = kz::io::readSome(ends[0], piece.data(), piece.size())) {
    received.append(piece.data(), count);
  }
  writer.join();
  close(ends[0]);
  EXPECT_EQ(received, content);
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
