// host_system_calls_test.cpp - host identity over the real system calls with failures injected
// through the system-call table: a refused host name and a resolver that cannot answer now come
// back as results, and the next call, with the system answering again, works.
#include <gtest/gtest.h>
#include <netdb.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "platform/system_calls.h"
#include "qzcore/qzhost.h"

namespace {

class HostSystemCalls : public ::testing::Test {
 protected:
  void TearDown() override { qz::os::ResetSystemCalls(); }
};

TEST_F(HostSystemCalls, ARefusedHostNameIsAResultAndTheBufferStaysAsItWas) {
  char system[256] = {};
  ASSERT_EQ(gethostname(system, sizeof system - 1), 0);
  struct Case {
    int error;
    QZRESULT result;
  };
  const Case cases[] = {
      {ENOMEM, static_cast<QZRESULT>(0x8007000E)},  // out of memory
      {EACCES, static_cast<QZRESULT>(0x80070005)},  // access denied
      {EINVAL, static_cast<QZRESULT>(0x80004005)},  // no translation of its own: a general failure
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.error);
    char buffer[256];
    std::memset(buffer, '#', sizeof buffer);
    ASSERT_TRUE(qz::os::FailSystemCall("gethostname", c.error));
    EXPECT_EQ(QZGetHostNameA(buffer, sizeof buffer), c.result);
    EXPECT_EQ(buffer[0], '#');
    EXPECT_EQ(QZGetHostNameA(buffer, sizeof buffer), 0);
    EXPECT_STREQ(buffer, system);
  }
}

TEST_F(HostSystemCalls, AResolverThatCannotAnswerNowPassesItsCodeThrough) {
  for (int code : {EAI_AGAIN, EAI_FAIL, EAI_MEMORY}) {
    SCOPED_TRACE(code);
    addrinfo* list = nullptr;
    ASSERT_TRUE(qz::os::FailSystemCall("getaddrinfo", code));
    EXPECT_EQ(QZgetaddrinfo("127.0.0.1", nullptr, nullptr, &list), code);
    EXPECT_EQ(list, nullptr);
    ASSERT_EQ(QZgetaddrinfo("127.0.0.1", nullptr, nullptr, &list), 0);
    ASSERT_NE(list, nullptr);
    QZfreeaddrinfo(list);
  }
}

}  // namespace
