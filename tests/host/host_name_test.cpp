// host_name_test.cpp - the host name as bytes and as 16-bit text: what fits and what does not.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>
#include <string>

#include "qzcore/qzhost.h"

namespace {

std::string SystemHostName() {
  char name[1026] = {};
  gethostname(name, sizeof name - 1);
  return name;
}

TEST(HostName, FitsExactlyOrLeavesTheBufferAlone) {
  const std::string name = SystemHostName();
  ASSERT_FALSE(name.empty());
  const auto exact = static_cast<int32_t>(name.size() + 1);
  std::string buffer(1100, '#');
  EXPECT_EQ(QZGetHostNameA(buffer.data(), exact), 0);
  EXPECT_STREQ(buffer.c_str(), name.c_str());

  std::string untouched(1100, '#');
  EXPECT_EQ(QZGetHostNameA(untouched.data(), exact - 1), QZ_E_FAIL);
  EXPECT_EQ(untouched, std::string(1100, '#'));
  EXPECT_EQ(QZGetHostNameA(untouched.data(), -1), QZ_E_FAIL);

  // 16-bit: the same rule, in units.
  std::u16string wide(1100, u'#');
  EXPECT_EQ(QZGetHostName(wide.data(), exact), 0);
  EXPECT_EQ(wide.substr(0, name.size()), std::u16string(name.begin(), name.end()));
  EXPECT_EQ(wide[name.size()], u'\0');
  std::u16string wideUntouched(8, u'#');
  EXPECT_EQ(QZGetHostName(wideUntouched.data(), exact - 1), QZ_E_FAIL);
  EXPECT_EQ(wideUntouched, std::u16string(8, u'#'));
}

}  // namespace
