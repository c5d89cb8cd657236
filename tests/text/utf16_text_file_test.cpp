// utf16_text_file_test.cpp - UTF-16 text files: the bytes written, and lines read back by their
// line ends and the buffer size.
#include <gtest/gtest.h>

#include <cerrno>
#include <fstream>
#include <string>

#include "qzcore/qztextfile.h"
#include "support/test_support.h"

namespace {

// Little-endian bytes of `units`, behind a byte-order mark.
std::string Utf16LeFile(const std::u16string& units) {
  std::string bytes = "\xFF\xFE";
  for (char16_t u : units) {
    bytes += static_cast<char>(u & 0xFF);
    bytes += static_cast<char>(u >> 8);
  }
  return bytes;
}

void WriteBytes(const std::string& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

// Every line of the file, read with buffers of `size` units.
std::vector<std::u16string> ReadAll(const std::string& path, int32_t size) {
  std::vector<std::u16string> lines;
  QZTextFileHandle file = QZFileOpenUTF16(path.c_str(), "rb");
  EXPECT_NE(file, nullptr);
  if (file == nullptr) return lines;
  std::vector<QZWCHAR> buf(static_cast<size_t>(size));
  while (QZWCHAR* line = QZFileGetLineUTF16(buf.data(), size, file)) {
    EXPECT_EQ(line, buf.data());
    lines.emplace_back(line);
  }
  QZFileCloseUTF16(file);
  return lines;
}

using Lines = std::vector<std::u16string>;

}  // namespace

TEST(Utf16TextFile, WrittenLinesHaveMarkAndCrLfAndReadBack) {
  qztest::TempDir dir;
  const std::string path = dir.File("lines.txt");
  QZTextFileHandle file = QZFileOpenUTF16(path.c_str(), "wb");
  ASSERT_NE(file, nullptr);
  const std::u16string longLine(300, u'\u00E9');  // longer than any small internal buffer
  EXPECT_EQ(QZFileWriteLineUTF16(u"first", file), 7);
  EXPECT_EQ(QZFileWriteLineUTF16(u"", file), 2);
  EXPECT_EQ(QZFileWriteLineUTF16(u"\U0001F600 \u20AC", file), 6);
  EXPECT_EQ(QZFileWriteLineUTF16(longLine.c_str(), file), 302);
  QZFileCloseUTF16(file);

  const std::u16string units = u"first\r\n\r\n\U0001F600 \u20AC\r\n" + longLine + u"\r\n";
  EXPECT_EQ(qztest::ReadFile(path), Utf16LeFile(units));
  EXPECT_EQ(ReadAll(path, 400), (Lines{u"first", u"", u"\U0001F600 \u20AC", longLine}));
}

TEST(Utf16TextFile, ReadingCutsAtCrAndLfOnly) {
  qztest::TempDir dir;
  const std::string path = dir.File("ends.txt");
  // LS, NEL and VT end a line but stay in it; CR alone and CR LF go; the last line has no end.
  WriteBytes(path, Utf16LeFile(u"one\u2028two\u0085mid\u000Bdle\rcr\r\nlast"));
  EXPECT_EQ(ReadAll(path, 64), (Lines{u"one\u2028", u"two\u0085", u"mid\u000B", u"dle", u"cr", u"last"}));
}

TEST(Utf16TextFile, BufferSizeSplitsLongLines) {
  qztest::TempDir dir;
  const std::string path = dir.File("long.txt");
  WriteBytes(path, Utf16LeFile(u"0123456789\r\nx\r\n"));
  EXPECT_EQ(ReadAll(path, 5), (Lines{u"0123", u"4567", u"89", u"x"}));
  // A piece that fills the buffer up to its CR leaves the LF behind, which then reads as an empty
  // line; a line end that does not fit at all does the same.
  WriteBytes(path, Utf16LeFile(u"abc\r\nabcd\ny\r\n"));
  EXPECT_EQ(ReadAll(path, 5), (Lines{u"abc", u"", u"abcd", u"", u"y"}));

  QZTextFileHandle file = QZFileOpenUTF16(path.c_str(), "rb");
  ASSERT_NE(file, nullptr);
  QZWCHAR buf[4] = {u'q', u'q', u'q', u'q'};
  EXPECT_EQ(QZFileGetLineUTF16(buf, 0, file), nullptr);
  EXPECT_EQ(buf[0], u'q');
  EXPECT_EQ(QZFileGetLineUTF16(buf, 1, file), buf);  // room for the terminator only
  EXPECT_EQ(buf[0], 0);
  QZFileCloseUTF16(file);
}

TEST(Utf16TextFile, BigEndianMarkSelectsTheByteOrder) {
  qztest::TempDir dir;
  const std::string path = dir.File("be.txt");
  WriteBytes(path, std::string("\xFE\xFF\x00h\x00i\x00\r\x00\n\x20\xAC", 12));
  EXPECT_EQ(ReadAll(path, 16), (Lines{u"hi", u"\u20AC"}));
}

TEST(Utf16TextFile, OpenFailuresAndNullClose) {
  qztest::TempDir dir;
  errno = 0;
  EXPECT_EQ(QZFileOpenUTF16(dir.File("missing/file.txt").c_str(), "rb"), nullptr);
  EXPECT_EQ(errno, ENOENT);
  const std::string empty = dir.File("empty.txt");
  WriteBytes(empty, "");
  EXPECT_EQ(ReadAll(empty, 8), Lines{});
  QZFileCloseUTF16(nullptr);
}
