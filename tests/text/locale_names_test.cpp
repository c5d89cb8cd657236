// locale_names_test.cpp - the locale-name table, and the locale and encoding names of the process's
// locale.
#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <set>
#include <string>

#include "platform/locale_ids.h"
#include "qzcore/qzlocale.h"
#include "support/test_support.h"
#include "text/locale_names.h"
#include "text_locale.h"

namespace {

std::string Language(const std::string& name) { return name.substr(0, name.find('_')); }

std::string Text(const QZWCHAR* text) { return qztest::Narrow(std::u16string(text)); }

}  // namespace

TEST(LocaleNames, TableRowsAreConsistent) {
  const auto rows = qz::text::LcidLocaleNames();
  ASSERT_EQ(rows.size(), 224u);
  std::map<uint32_t, std::string> neutral;
  uint32_t previous = 0;
  size_t countryRows = 0;
  for (size_t i = 0; i < rows.size(); ++i) {
    if (i > 0) {
      EXPECT_GT(rows[i].lcid, previous) << "rows out of order at " << rows[i].name;
    }
    previous = rows[i].lcid;
    if (rows[i].lcid < 0x80) {
      neutral[rows[i].lcid] = rows[i].name;
      continue;
    }
    ++countryRows;
    // Each country row belongs to a neutral row of the same language...
    const std::string name = rows[i].name;
    const uint32_t primary = rows[i].lcid & 0x3FF;
    ASSERT_TRUE(neutral.count(primary)) << name;
    static const std::set<std::string> kOtherLanguage = {"nn_NO", "sh_YU", "sr_YU"};
    if (!kOtherLanguage.count(name)) {
      EXPECT_EQ(Language(name), neutral[primary]) << name;
    }
    // ...and, apart from the historical forms, names a two-letter country.
    static const std::set<std::string> kHistorical = {"es__TRADITIONAL", "de__PHONEBOOK", "az_AZ_L", "uz_UZ_L"};
    if (!kHistorical.count(name)) {
      const std::string country = name.substr(name.find('_') + 1);
      EXPECT_TRUE(country.size() == 2 && isupper(country[0]) && isupper(country[1])) << name;
    }
  }
  EXPECT_EQ(neutral.size(), 77u);
  EXPECT_EQ(countryRows, 147u);
}

TEST(LocaleNames, LookupComparesTheWholeIdentifier) {
  using qz::text::LocaleNameFromLcid;
  EXPECT_STREQ(LocaleNameFromLcid(0x0000), "root");
  EXPECT_STREQ(LocaleNameFromLcid(0x007F), "en_US_POSIX");
  EXPECT_STREQ(LocaleNameFromLcid(0x10407), "de__PHONEBOOK");
  EXPECT_STREQ(LocaleNameFromLcid(0x500A), "es_PR");  // the last country row
  // No row of its own: the default, never the language's row.
  for (uint32_t lcid : {0x0409u, 0x4009u, 0x0017u, 0x20407u, 0xFFFFFFFFu}) {
    EXPECT_STREQ(LocaleNameFromLcid(lcid), "en_US") << lcid;
  }
}

namespace {

// One call of `get` on 16 units of 0xBEEF with the size `size`: the result, then what the buffer
// holds, "#" for an untouched unit and "." for NUL.
using Getter = QZRESULT (*)(QZWCHAR*, int32_t);
std::string Got(Getter get, int32_t size) {
  QZWCHAR buf[16];
  std::fill(std::begin(buf), std::end(buf), 0xBEEF);
  std::string shown = std::to_string(get(buf, size)) + ":";
  for (QZWCHAR unit : buf) shown += unit == 0xBEEF ? '#' : unit == 0 ? '.' : static_cast<char>(unit);
  return shown;
}
const std::string kTooSmall = std::to_string(QZ_E_BUFFER_TOO_SMALL) + ":" + std::string(16, '#');

}  // namespace

TEST(LocaleNames, InvariantLocaleAndBufferSizes) {
  QZ_USE_LOCALE_OR_SKIP(locale, "C.UTF-8");
  EXPECT_EQ(qz::os::GetUserDefaultLCID(), 0x007Fu);
  // "en_US_POSIX" is 11 units: a size of 11 leaves no room for the terminator.
  EXPECT_EQ(Got(QZGetDefaultLocale, 11), kTooSmall);
  EXPECT_EQ(Got(QZGetDefaultLocale, 0), kTooSmall);
  EXPECT_EQ(Got(QZGetDefaultLocale, 12), "0:en_US_POSIX.####");
  // UTF-8 is code page 65001, which just fills 8 units.
  EXPECT_EQ(Got(QZGetDefaultCharEncoding, 8), "0:CP65001.########");
  EXPECT_EQ(Got(QZGetDefaultCharEncoding, 7), kTooSmall);
  QZ_USE_LOCALE_OR_SKIP(plain, "C");
  EXPECT_EQ(Got(QZGetDefaultCharEncoding, 8), "0:CP20127.########");
}

TEST(LocaleNames, GermanLocaleFillsTheRestWithNul) {
  QZ_USE_LOCALE_OR_SKIP(locale, "de_DE.UTF-8");
  EXPECT_EQ(qz::os::GetUserDefaultLCID(), 0x0407u);
  // "de_DE" needs 6 units with its terminator; the rest of a larger buffer is filled with NUL.
  EXPECT_EQ(Got(QZGetDefaultLocale, 5), kTooSmall);
  EXPECT_EQ(Got(QZGetDefaultLocale, 6), "0:de_DE.##########");
  EXPECT_EQ(Got(QZGetDefaultLocale, 10), "0:de_DE.....######");
}

TEST(LocaleNames, LocaleIdentifiersFromNames) {
  const std::pair<const char*, uint32_t> cases[] = {
      {"C", 0x007F}, {"POSIX", 0x007F}, {"C.UTF-8", 0x007F}, {"en_US.UTF-8", 0x0409},
      {"en_GB.ISO-8859-1", 0x0809}, {"de_AT.UTF-8", 0x0C07}, {"es_ES.UTF-8", 0x0C0A},
      {"pt_BR", 0x0416}, {"sr_RS.UTF-8@latin", 0x241A}, {"sr_RS@latin", 0x241A},
      {"uz_UZ.UTF-8@cyrillic", 0x0843}, {"uz_UZ", 0x0443},
      // A modifier that names no script keeps the territory's row.
      {"de_AT@euro", 0x0C07}, {"fr_BE.ISO-8859-15@euro", 0x080C}, {"en_IE@euro", 0x1809},
      // An unlisted territory takes the language's default row; an unknown language has none.
      {"de_BE.UTF-8", 0x0407}, {"en", 0x0409}, {"xx_YY.UTF-8", 0x1000}};
  for (const auto& [name, lcid] : cases) {
    EXPECT_EQ(qz::os::LcidFromLocaleName(name), lcid) << name;
  }
}

TEST(LocaleNames, StartTakesTheLocaleFromTheEnvironment) {
  if (qztest::IsChild()) {
    // The library's start set the locale from LC_ALL before this test ran.
    QZWCHAR buf[16];
    ASSERT_EQ(QZGetDefaultLocale(buf, 16), 0);
    EXPECT_EQ(Text(buf), getenv("QZTEST_EXPECT_LOCALE"));
    return;
  }
  {
    qztest::ScopedLocale probe("de_DE.UTF-8");
    if (!probe.ok()) GTEST_SKIP() << "locale de_DE.UTF-8 is not installed";
  }
  const auto child = qztest::RunSelf("LocaleNames.StartTakesTheLocaleFromTheEnvironment",
                                     {"LC_ALL=de_DE.UTF-8", "QZTEST_EXPECT_LOCALE=de_DE"});
  EXPECT_EQ(child.exitCode, 0) << child.out << child.err;
}
