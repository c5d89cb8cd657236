// ini_file_test.cpp - the text file store: what the reader keeps of crafted files, what the
// writer makes of the table, the reload by modification time, and the two iterators.
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>

#include "frame/core_exception.h"
#include "registry/ini_file.h"
#include "registry/ini_iterators.h"
#include "support/test_support.h"

namespace {

std::u16string U16(const std::string& text) { return {text.begin(), text.end()}; }

void Write(const std::string& path, const std::string& content) {
  std::ofstream(path, std::ios::binary | std::ios::trunc) << content;
}

// The table as one line: [section]key=value;key=value| ... (ASCII only, for comparisons).
std::string Dump(const IniFile& file) {
  std::string out;
  for (const auto& [section, keys] : file.Sections()) {
    out += "[" + qztest::Narrow(section) + "]";
    bool first = true;
    for (const auto& [key, value] : keys) {
      out += (first ? "" : ";") + qztest::Narrow(key) + "=" + qztest::Narrow(value);
      first = false;
    }
    out += "|";
  }
  return out;
}

class IniFileTest : public ::testing::Test {
 protected:
  std::string Path() const { return m_dir.File("store.ini"); }
  std::u16string WPath() const { return U16(Path()); }
  qztest::TempDir m_dir;
};

TEST_F(IniFileTest, ReaderKeepsWhatTheRulesKeepOfCraftedFiles) {
  const std::string k510(508, 'v');          // "k=" + 508 bytes: a key line of 510 bytes
  const std::string name508(508, 'n');       // a header name of 508 bytes
  struct Case {
    const char* what;
    std::string content;
    std::string table;
  } cases[] = {
      {"empty file", "", ""},
      {"comments only", "# a\n; b\n: c\n", ""},
      {"plain", "[S]\na=1\nb = two words \n\n[T]\nx=y\n\n", "[S]a=1;b=two words|[T]x=y|"},
      {"only spaces trimmed, tabs kept", "[S]\na\t= \tv\t \n", "[S]a\t=\tv\t|"},
      {"value of spaces stays", "[S]\nk=   \n", "[S]k=   |"},
      {"empty key, value with =", "[S]\n=v\na=b=c\n", "[S]=v;a=b=c|"},
      {"comment marks are keys inside a section", "[S]\n#x=1\n;y=2\n", "[S]#x=1;;y=2|"},
      {"a remark inside a section ends the load", "[A]\na=1\n\n[S]\nk=1\n# remark\n[T]\nt=1\n", "[A]a=1|"},
      {"header without ] ends the load", "[A]\na=1\n\n[B\nb=1\n\n[C]\n", "[A]a=1|"},
      {"name up to the last ], untrimmed", "[ a]b ] tail\nk=v\n", "[ a]b ]k=v|"},
      {"empty name", "[]\nk=v\n", "[]k=v|"},
      {"stray lines between sections skipped", "k=v\n  [S]\n[T]\nt=1\n", "[T]t=1|"},
      {"header right under a key line is a key line", "[S]\na=1\n[T]\n", ""},
      {"blank line ends a section, keys after it are stray", "[S]\na=1\n\nb=2\n", "[S]a=1|"},
      {"whitespace first ends a section", "[S]\na=1\n b=2\nc=3\n", "[S]a=1|"},
      {"section twice: last keys, first spelling", "[Sec]\na=1\n\n[SEC]\nb=2\n\n", "[Sec]b=2|"},
      {"keys in other case: first spelling, last value", "[S]\nKey=1\nKEY=2\n", "[S]Key=2|"},
      {"section without keys", "[S]\n\n", "[S]|"},
      {"last line without newline loses a character", "[S]\na=xyz", "[S]a=xy|"},
      {"CR before newline dropped", "[S]\r\na=1\r\nb=2 \r\n\r\n", "[S]a=1;b=2|"},
      {"lone CR kept", "[S]\na=1\r2\n", "[S]a=1\r2|"},
      {"byte-order mark hides the first header", "\xEF\xBB\xBF[S]\na=1\n\n[T]\nb=2\n", "[T]b=2|"},
      {"key line of 510 bytes: cut, then the newline ends the section",
       "[S]\nk=" + k510 + "\nz=1\n", "[S]k=" + k510.substr(0, 507) + "|"},
      {"longer key line: the rest must hold =", "[S]\nk=" + k510 + "xy\n", ""},
      {"longer key line whose rest holds =", "[S]\nk=" + k510 + "x=y\n\n", "[S]k=" + k510.substr(0, 507) + ";x=y|"},
      {"CR LF after 509 bytes counts as one newline", "[S]\r\nk=" + k510.substr(1) + "\r\nz=1\r\n\r\n",
       "[S]k=" + k510.substr(1) + ";z=1|"},
      {"CR LF after 510 bytes: cut, the CR LF ends the section", "[S]\r\nk=" + k510 + "\r\nz=1\r\n",
       "[S]k=" + k510.substr(0, 507) + "|"},
      {"CR at the cut not before a newline stays", "[S]\nk=" + k510.substr(1) + "\r=x\n\n",
       "[S]=x;k=" + k510.substr(1) + "|"},
      {"header name of 508 bytes: kept without keys", "[" + name508 + "]\nk=v\n", "[" + name508 + "]|"},
      {"header whose ] lies beyond 510 bytes", "[A]\n\n[" + name508 + "xx]\nk=v\n", "[A]|"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    Write(Path(), c.content);
    IniFile file(WPath().c_str());
    EXPECT_EQ(Dump(file), c.table);
  }
  std::filesystem::remove(Path());
  IniFile missing(WPath().c_str());
  EXPECT_EQ(Dump(missing), "");
}

TEST_F(IniFileTest, WriterAndReaderStandAgainstEachOther) {
  IniFile file(WPath().c_str());
  struct Case {
    const char16_t* section;
    const char16_t* key;
    const char16_t* value;
  } sets[] = {
      {u"B", u"z", u"  padded  "}, {u"B", u"a", u"   "},      {u"B", u"", u"empty key"},
      {u"B", u"a=b", u"c"},        {u"A]x", u"#k", u""},      {u"a", u" lead", u"v"},
      {u"a", u"after", u"v"},
  };
  for (const auto& s : sets) ASSERT_EQ(file.SetValue(s.section, s.key, s.value, true), 0);
  // The section "a" shares its place with nothing: "A]x" and "a" are different names.
  EXPECT_EQ(qztest::ReadFile(Path()),
            "[a]\n lead=v\nafter=v\n\n"
            "[A]x]\n#k=\n\n"
            "[B]\n=empty key\na=   \na=b=c\nz=  padded  \n\n");
  IniFile again(WPath().c_str());
  // The key "a=b" comes back as "a" with "b=c"; the leading blank ends the section "a".
  EXPECT_EQ(Dump(again), "[a]|[A]x]#k=|[B]=empty key;a=b=c;z=padded|");
}

TEST_F(IniFileTest, SetAndGetRules) {
  IniFile file(WPath().c_str());
  ASSERT_EQ(file.SetValue(u"Sec\\Sub", u"Key", u"one", true), 0);
  const auto before = std::filesystem::last_write_time(Path());
  const std::string text = qztest::ReadFile(Path());
  // An existing key in any spelling is kept when overwriting is not asked; the file is not touched.
  EXPECT_EQ(file.SetValue(u"SEC\\sub", u"KEY", u"two", false), -1);
  EXPECT_EQ(qztest::ReadFile(Path()), text);
  EXPECT_EQ(std::filesystem::last_write_time(Path()), before);
  QZWCHAR buffer[16];
  struct Case {
    const char16_t* section;
    const char16_t* key;
    QZRESULT result;
  } gets[] = {
      {u"sec\\SUB", u"key", 0},
      {u"Sec", u"Key", QZ_E_FILE_NOT_FOUND},  // only a parent
      {u"Sec\\Sub", u"Other", QZ_E_FILE_NOT_FOUND},
      {u"None", u"Key", QZ_E_FILE_NOT_FOUND},
  };
  for (const auto& g : gets) {
    EXPECT_EQ(file.GetValue(g.section, g.key, buffer), g.result) << qztest::Narrow(g.section);
  }
  EXPECT_EQ(file.GetValue(u"Sec\\Sub", u"Key", buffer), 0);
  EXPECT_EQ(std::u16string(buffer), u"one");
  // A section exists by name in any case, or as the exact-case parent of another.
  IniFile::CLock hold(file);
  EXPECT_TRUE(file.HasSection(u"SEC\\SUB"));
  EXPECT_TRUE(file.HasSection(u"Sec"));
  EXPECT_FALSE(file.HasSection(u"sec"));
}

TEST_F(IniFileTest, ReloadFollowsTheModificationTime) {
  IniFile first(WPath().c_str());
  IniFile second(WPath().c_str());
  ASSERT_EQ(first.SetValue(u"S", u"a", u"1", true), 0);
  // Another writer, a second later: seen at the next operation.
  std::filesystem::last_write_time(Path(), std::filesystem::last_write_time(Path()) - std::chrono::seconds(5));
  QZWCHAR buffer[16];
  EXPECT_EQ(second.GetValue(u"S", u"a", buffer), 0);
  ASSERT_EQ(second.SetValue(u"S", u"b", u"2", true), 0);
  std::filesystem::last_write_time(Path(), std::filesystem::last_write_time(Path()) + std::chrono::seconds(10));
  EXPECT_EQ(first.GetValue(u"S", u"b", buffer), 0);

  // A file whose time goes backwards is not read again, and its older time is kept.
  Write(Path(), "[S]\nc=3\n\n");
  std::filesystem::last_write_time(Path(), std::filesystem::last_write_time(Path()) - std::chrono::hours(1));
  EXPECT_EQ(first.GetValue(u"S", u"c", buffer), QZ_E_FILE_NOT_FOUND);
  // A removed file leaves the table; the next write brings back all of it.
  std::filesystem::remove(Path());
  EXPECT_EQ(first.GetValue(u"S", u"b", buffer), 0);
  ASSERT_EQ(first.SetValue(u"T", u"t", u"1", true), 0);
  EXPECT_EQ(qztest::ReadFile(Path()), "[S]\na=1\nb=2\n\n[T]\nt=1\n\n");
}

std::vector<std::string> Walk(IniFileIteratorBase&& it) {
  std::vector<std::string> items;
  while (it.HasNext()) items.push_back(qztest::Narrow(it.Next()));
  return items;
}

TEST_F(IniFileTest, IteratorsWalkTheTreeInTheSectionNames) {
  Write(Path(), "[A\\B\\C]\nk2=1\nK1=2\n\n[X\\Foo\\a]\n\n[X\\foo\\b]\n\n[D\\\\E]\n\n[D\\F\\]\n\n[\\lead]\n\n[Same]\n\n");
  IniFile file(WPath().c_str());
  using V = std::vector<std::string>;
  struct Case {
    const char16_t* section;
    V children;
  } sets[] = {
      {u"A", V{"B"}},          {u"A\\B", V{"C"}},     {u"A\\B\\C", V{}},  {u"a", V{}},
      {u"X", V{"Foo", "foo"}}, {u"D", V{"", "F"}},    {u"D\\F", V{""}},   {u"", V{"lead"}},
      {u"Same", V{}},          {u"Nothing", V{}},
  };
  for (const auto& s : sets) EXPECT_EQ(Walk(IniFileSetIterator(file, s.section)), s.children) << qztest::Narrow(s.section);
  struct KeyCase {
    const char16_t* section;
    QZRESULT result;
    V keys;
  } keys[] = {
      {u"A\\B\\C", 0, V{"K1", "k2"}}, {u"a\\b\\c", 0, V{"K1", "k2"}}, {u"A", 0, V{}},
      {u"A\\B", 0, V{}},              {u"A\\X", QZ_E_FILE_NOT_FOUND, V{}},
  };
  for (const auto& k : keys) {
    SCOPED_TRACE(qztest::Narrow(k.section));
    try {
      EXPECT_EQ(Walk(IniFileKeyIterator(file, k.section)), k.keys);
      EXPECT_EQ(k.result, 0);
    } catch (const EQZCoreException& e) {
      EXPECT_EQ(e.m_result, k.result);
    }
  }
  // A snapshot: later changes do not reach it; past the end it throws.
  IniFileKeyIterator it(file, u"A\\B\\C");
  ASSERT_EQ(file.SetValue(u"A\\B\\C", u"k0", u"new", true), 0);
  EXPECT_EQ(it.GetName(), u"A\\B\\C");
  EXPECT_EQ(Walk(std::move(it)), (V{"K1", "k2"}));
  IniFileSetIterator empty(file, u"Nothing");
  EXPECT_FALSE(empty.HasNext());
  try {
    empty.Next();
    ADD_FAILURE() << "Next past the end did not throw";
  } catch (const EQZCoreException& e) {
    EXPECT_EQ(e.m_result, QZ_E_HANDLE_EOF);
  }
}

}  // namespace
