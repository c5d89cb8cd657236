// report_sinks_test.cpp - the contract of the report channels: debugger text and event entries
// arrive whole in the files the environment names, and a channel that cannot be served (no
// descriptor, a full disk, a short write) is silent and leaves the process running.
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <string>

#include "platform/report_sinks.h"
#include "platform/system_calls.h"
#include "support/test_support.h"

namespace {

using qz::os::SystemCallPointer;

class ReportSinks : public ::testing::Test {
 protected:
  void TearDown() override { qz::os::ResetSystemCalls(); }
  qztest::TempDir m_dir;
};

TEST_F(ReportSinks, DebugTextIsAppendedAsItStands) {
  const std::string path = m_dir.File("debug.txt");
  qztest::ScopedEnv sink("QZCORE_DEBUG_OUTPUT", path.c_str());
  qz::os::OutputDebugText(u"[0x1]");
  qz::os::OutputDebugText(u"gr\u00fc\u00dfe \U0001F600\n");
  EXPECT_EQ(qztest::ReadFile(path), "[0x1]gr\xc3\xbc\xc3\x9f" "e \xf0\x9f\x98\x80\n");
}

TEST_F(ReportSinks, EventEntriesAreOneEscapedLineEach) {
  const std::string path = m_dir.File("events.txt");
  qztest::ScopedEnv sink("QZCORE_EVENT_LOG", path.c_str());
  qz::os::ReportEvent(u"Title", u"two\nlines\\ and\r");
  qz::os::ReportEvent(nullptr, u"no title");
  EXPECT_EQ(qztest::ReadFile(path), "Title\ttwo\\nlines\\\\ and\\r\n\tno title\n");
}

// Each failure the system can give on the way; the entry is lost, nothing else happens, and the
// next entry after the failure arrives whole.
TEST_F(ReportSinks, AFailingChannelIsSilentAndTheNextEntryArrives) {
  struct Case {
    const char* call;
    int error;
    int count;
  };
  const Case cases[] = {
      {"open", EMFILE, 1},   // no descriptor left
      {"open", EACCES, 1},   // the file cannot be opened
      {"write", ENOSPC, 1},  // the disk is full
      {"write", EIO, 1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.call) + " " + std::to_string(c.error));
    const std::string path = m_dir.File(qztest::UniqueName("events"));
    qztest::ScopedEnv sink("QZCORE_EVENT_LOG", path.c_str());
    ASSERT_TRUE(qz::os::FailSystemCall(c.call, c.error, c.count));
    qz::os::ReportEvent(u"lost", u"entry");
    qz::os::ReportEvent(u"kept", u"entry");
    EXPECT_EQ(qztest::ReadFile(path), "kept\tentry\n");
    qz::os::ResetSystemCalls();
  }
}

TEST_F(ReportSinks, ShortWritesStillDeliverTheWholeText) {
  static std::atomic<int> writes{0};
  writes = 0;
  auto oneByte = +[](int fd, const void* data, size_t size) noexcept -> ssize_t {
    ++writes;
    return ::write(fd, data, size > 0 ? 1 : 0);
  };
  const std::string path = m_dir.File("debug.txt");
  qztest::ScopedEnv sink("QZCORE_DEBUG_OUTPUT", path.c_str());
  ASSERT_TRUE(qz::os::SetSystemCall("write", reinterpret_cast<SystemCallPointer>(oneByte)));
  qz::os::OutputDebugText(u"piece by piece");
  qz::os::ResetSystemCalls();
  EXPECT_EQ(qztest::ReadFile(path), "piece by piece");
  EXPECT_EQ(writes.load(), 14);
}

TEST_F(ReportSinks, AnInterruptedWriteIsRetried) {
  const std::string path = m_dir.File("debug.txt");
  qztest::ScopedEnv sink("QZCORE_DEBUG_OUTPUT", path.c_str());
  ASSERT_TRUE(qz::os::FailSystemCall("write", EINTR, 2));
  qz::os::OutputDebugText(u"after two interruptions");
  EXPECT_EQ(qztest::ReadFile(path), "after two interruptions");
}

}  // namespace
