// reg_tool_test.cpp - `qzcore reg`: a key tree exported to a text file and imported again, and the
// exit codes and messages of failures.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>

#include "registry_helpers.h"

namespace {

using qztest::GetString;

struct CRun {
  int exitCode;
  std::string out;
};

CRun Tool(const std::string& arguments, const qztest::TempDir& dir) {
  const std::string out = dir.File("tool.out");
  const int status = std::system((std::string(QZ_TOOL) + " reg " + arguments + " >" + out + " 2>&1").c_str());
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, qztest::ReadFile(out)};
}

class RegTool : public qztest::RegistryDirTest {};

TEST_F(RegTool, ExportReadsBackThroughImport) {
  const uint32_t number = 42;
  const uint8_t bytes[] = {0x00, 0xAB};
  ASSERT_EQ(qztest::SetString(QZ_HKEY_CONFIG, u"Exp\\App", u"Name", u"Wert ü"), 0);
  ASSERT_EQ(QZRegistrySetValue(QZ_HKEY_CONFIG, u"Exp\\App", u"Count", QZ_REG_DWORD, &number, 4), 0);
  ASSERT_EQ(QZRegistrySetValue(QZ_HKEY_CONFIG, u"Exp\\App\\Sub", u"", QZ_REG_BINARY, bytes, 2), 0);
  ASSERT_EQ(qztest::SetString(QZ_HKEY_USER, u"Mine", u"k", u"v"), 0);
  const std::string file = m_dir.File("export.ini");
  CRun run = Tool("export 'CONFIG\\Exp' " + file, m_dir);
  ASSERT_EQ(run.exitCode, 0) << run.out;
  EXPECT_EQ(qztest::ReadFile(file),
            "[QZ_HKEY_CONFIG\\Exp\\App]\nCount=42\nName=Wert ü\n\n[QZ_HKEY_CONFIG\\Exp\\App\\Sub]\n=00AB\n\n");

  ASSERT_EQ(Tool("delete 'CONFIG\\Exp'", m_dir).exitCode, 0);
  EXPECT_EQ(GetString(QZ_HKEY_CONFIG, u"Exp\\App", u"Name"), u"<0x80070002>");
  run = Tool("import " + file, m_dir);
  ASSERT_EQ(run.exitCode, 0) << run.out;
  // Every value comes back as a string; the caller's file stays.
  EXPECT_EQ(GetString(QZ_HKEY_CONFIG, u"Exp\\App", u"Count"), u"42");
  EXPECT_EQ(GetString(QZ_HKEY_CONFIG, u"Exp\\App\\Sub", u""), u"00AB");
  EXPECT_EQ(GetString(QZ_HKEY_USER, u"Mine", u"k"), u"v");
  EXPECT_FALSE(qztest::ReadFile(file).empty());
  run = Tool("query 'CONFIG\\Exp\\App' -v count", m_dir);
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_NE(run.out.find("Count    REG_SZ    42"), std::string::npos) << run.out;
}

TEST_F(RegTool, FailuresExitWithAMessage) {
  struct Case {
    const char* arguments;
    int exitCode;
    const char* message;
  } cases[] = {
      {"query 'CONFIG\\Missing'", 1, "(0x80070002) (not found)"},
      {"delete 'CONFIG\\Missing'", 1, "0x80004005"},
      {"delete 'CONFIG' -v nothing", 1, "not found"},
      {"query 'NOHIVE\\x'", 2, "usage"},
      {"add 'USER\\k' -t REG_DWORD -d twelve", 2, "not data of type"},
      {"import /nonexistent/file.ini", 1, "cannot read"},
      {"frobnicate 'USER\\k'", 2, "usage"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.arguments);
    const CRun run = Tool(c.arguments, m_dir);
    EXPECT_EQ(run.exitCode, c.exitCode);
    EXPECT_NE(run.out.find(c.message), std::string::npos) << run.out;
  }
}

}  // namespace
