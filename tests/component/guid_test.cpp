// guid_test.cpp - identifiers: the text form read and written, the two comparisons, generation in
// a parent and a forked child, the component allocator and the interface forwarders.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <set>
#include <string>

#include "qzcore/qzcom.h"
#include "support/test_support.h"

namespace {

QZGUID Sentinel() {
  QZGUID g;
  std::memset(&g, 0xA5, sizeof g);
  return g;
}

std::string Bytes(const QZGUID& g) {
  std::string hex;
  char two[3];
  for (size_t i = 0; i < sizeof g; ++i) {
    std::snprintf(two, sizeof two, "%02X", reinterpret_cast<const uint8_t*>(&g)[i]);
    hex += two;
  }
  return hex;
}

std::u16string U16(const std::string& ascii) { return std::u16string(ascii.begin(), ascii.end()); }

// The record of 00000001-0000-0000-C000-000000000046, byte by byte in host order (little endian).
const std::string kClassFactoryBytes = "0100000000000000C000000000000046";
const std::string kGood = "6f1D2c3B-8A47-4E59-b3C2-5D0E9A7F1B24";
const std::string kGoodBytes = "3B2C1D6F478A594EB3C25D0E9A7F1B24";

TEST(GuidText, ReadsThePatternAndNothingElse) {
  struct Case {
    std::u16string text;
    QZRESULT result;
    std::string bytes;  // the record on success
  };
  const Case cases[] = {
      {u"00000001-0000-0000-C000-000000000046", 0, kClassFactoryBytes},
      {u"{00000001-0000-0000-c000-000000000046}", 0, kClassFactoryBytes},
      {U16(kGood), 0, kGoodBytes},                          // mixed case
      {U16("{" + kGood + "}trailing"), 0, kGoodBytes},      // nothing after the brace is looked at
      {U16(kGood + "}"), 0, kGoodBytes},                    // a closing brace alone is taken
      {U16(kGood + "-and-more"), 0, kGoodBytes},
      {U16(kGood.substr(0, 35)), QZ_E_INVALIDARG, ""},      // 35 characters
      {U16("{" + kGood), QZ_E_INVALIDARG, ""},              // opening brace, no closing one
      {U16("{" + kGood + "x"), QZ_E_INVALIDARG, ""},        // 38 long, but no brace at 37
      {U16("{" + kGood.substr(0, 35) + "}"), QZ_E_INVALIDARG, ""},
      {u"6F1D2C3B8-A47-4E59-B3C2-5D0E9A7F1B24", QZ_E_INVALIDARG, ""},  // hyphen moved
      {u"6F1D2C3B-8A47-4E59-B3C2-5D0E9A7F1B2 ", QZ_E_INVALIDARG, ""},
      {u"+F1D2C3B-8A47-4E59-B3C2-5D0E9A7F1B24", QZ_E_INVALIDARG, ""},
      {u"6F1D2C3B-8A47-4E59-B3C2-5D0E9A7F1B2\uFF14", QZ_E_INVALIDARG, ""},  // a full-width digit
  };
  for (const Case& c : cases) {
    QZGUID g = Sentinel();
    EXPECT_EQ(QZComGUIDFromString(c.text.c_str(), &g), c.result) << qztest::Narrow(c.text);
    EXPECT_EQ(Bytes(g), c.result == 0 ? c.bytes : Bytes(Sentinel())) << qztest::Narrow(c.text);
  }
}

TEST(GuidText, EveryDigitPlaceAndHyphenPlaceIsChecked) {
  const std::string braced = "{" + kGood + "}";
  for (size_t i = 1; i < 37; ++i) {
    std::string text = braced;
    text[i] = text[i] == '-' ? '0' : 'G';  // a digit where a hyphen stands, a G where a digit does
    QZGUID g = Sentinel();
    EXPECT_EQ(QZComGUIDFromString(U16(text).c_str(), &g), QZ_E_INVALIDARG) << text;
    EXPECT_EQ(Bytes(g), Bytes(Sentinel())) << text;
  }
}

TEST(GuidText, WritesBracedUpperCaseThatReadsBack) {
  QZGUID g;
  ASSERT_EQ(QZComGUIDFromString(U16(kGood).c_str(), &g), 0);
  QZWCHAR text[40];
  std::fill(std::begin(text), std::end(text), u'#');
  EXPECT_EQ(QZComStringFromGUID(&g, text, 39), 0);
  EXPECT_EQ(std::u16string(text), u"{6F1D2C3B-8A47-4E59-B3C2-5D0E9A7F1B24}");
  EXPECT_EQ(text[39], u'#');
  QZGUID back = Sentinel();
  ASSERT_EQ(QZComGUIDFromString(text, &back), 0);
  EXPECT_EQ(Bytes(back), Bytes(g));

  // A short buffer gets a cut text with no terminator, and the result still says 0.
  std::fill(std::begin(text), std::end(text), u'#');
  EXPECT_EQ(QZComStringFromGUID(&g, text, 10), 0);
  EXPECT_EQ(std::u16string(text, 11), u"{6F1D2C3B-#");
  EXPECT_EQ(QZComStringFromGUID(&g, text, 0), 0);
  EXPECT_EQ(text[0], u'{');
}

// Records that differ from a base in the bytes given (position, value).
QZGUID With(std::initializer_list<std::pair<int, uint8_t>> changes) {
  QZGUID g;
  std::memset(&g, 0x40, sizeof g);
  for (const auto& [position, value] : changes) reinterpret_cast<uint8_t*>(&g)[position] = value;
  return g;
}

TEST(GuidOrder, LastSixBytesFirstThenTheFieldsFromTheirLowByte) {
  struct Case {
    QZGUID first, second;
    int32_t order;
    const char* why;
  };
  const Case cases[] = {
      {With({}), With({}), 0, "equal"},
      {With({{0, 0x01}, {15, 0x50}}), With({{0, 0x02}, {15, 0x30}}), 1, "byte 15 before byte 0"},
      {With({{10, 0x01}, {15, 0x50}}), With({{10, 0x02}}), -1, "byte 10 before byte 15"},
      {With({{9, 0xFF}}), With({{9, 0x01}}), 1, "bytes are unsigned"},
      {With({{8, 0x01}, {6, 0x50}}), With({{8, 0x02}}), -1, "Data4[0] before Data3"},
      {With({{6, 0x01}, {7, 0x50}}), With({{6, 0x02}}), -1, "Data3 from its low byte"},
      {With({{7, 0x01}, {4, 0x50}}), With({{7, 0x02}}), -1, "Data3 before Data2"},
      {With({{5, 0x01}, {0, 0x50}}), With({{5, 0x02}}), -1, "Data2 before Data1"},
      {With({{0, 0x01}, {3, 0x50}}), With({{0, 0x02}}), -1, "Data1 from its low byte"},
      {With({{3, 0x41}}), With({}), 1, "the last position counts"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(QZComCompareGUID(&c.first, &c.second), c.order) << c.why;
    EXPECT_EQ(QZComCompareGUID(&c.second, &c.first), -c.order) << c.why;
  }
}

TEST(GuidOrder, EqualityLooksAtAllSixteenBytes) {
  const QZGUID base = With({});
  EXPECT_EQ(QZComIsEqualGUID(&base, &base), 1);
  for (int i = 0; i < 16; ++i) {
    const QZGUID other = With({{i, 0x41}});
    EXPECT_EQ(QZComIsEqualGUID(&base, &other), 0) << i;
  }
}

TEST(GuidGenerate, RandomVersionFourDistinctInAForkedChild) {
  std::set<std::string> seen;
  for (int i = 0; i < 256; ++i) {
    QZGUID g;
    ASSERT_EQ(QZComGenerateGUID(&g), 0);
    EXPECT_EQ(g.Data3 >> 12, 4);             // version
    EXPECT_EQ(g.Data4[0] & 0xC0, 0x80);      // variant
    seen.insert(Bytes(g));
  }
  EXPECT_EQ(seen.size(), 256u);

  // A child made by fork makes its own identifiers, not its parent's next ones.
  int fds[2];
  ASSERT_EQ(pipe(fds), 0);
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    QZGUID g[2];
    const bool ok = QZComGenerateGUID(&g[0]) == 0 && QZComGenerateGUID(&g[1]) == 0;
    _exit(ok && write(fds[1], g, sizeof g) == sizeof g ? 0 : 1);
  }
  close(fds[1]);
  QZGUID parent[2];
  ASSERT_EQ(QZComGenerateGUID(&parent[0]), 0);
  ASSERT_EQ(QZComGenerateGUID(&parent[1]), 0);
  QZGUID fromChild[2];
  EXPECT_EQ(read(fds[0], fromChild, sizeof fromChild), static_cast<ssize_t>(sizeof fromChild));
  close(fds[0]);
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  for (const QZGUID& c : fromChild) {
    for (const QZGUID& p : parent) EXPECT_NE(Bytes(c), Bytes(p));
    EXPECT_EQ(seen.count(Bytes(c)), 0u);
  }
}

TEST(ComMemory, AllocateResizeAndFree) {
  void* block = nullptr;
  ASSERT_EQ(QZComMalloc(16, &block), 0);
  ASSERT_NE(block, nullptr);
  std::memcpy(block, "fifteen letters", 16);
  ASSERT_EQ(QZComRealloc(&block, 1 << 20), 0);
  EXPECT_STREQ(static_cast<char*>(block), "fifteen letters");  // the contents move with it
  EXPECT_EQ(QZComRealloc(&block, 0), 0);                         // size 0 frees
  EXPECT_EQ(block, nullptr);
  EXPECT_EQ(QZComRealloc(&block, 8), 0);                         // null grows like an allocation
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(QZComFree(block), 0);
  EXPECT_EQ(QZComFree(nullptr), 0);
}

// An object whose three operations record what reached them.
struct Recorder {
  IQZUnknown iface;
  const QZGUID* iid = nullptr;
  void** out = nullptr;
  int addRefs = 0;
  int releases = 0;
};

TEST(ComForwarders, PassArgumentsAndResultsThrough) {
  static const IQZUnknownVtbl vtbl = {
      [](IQZUnknown* self, const QZGUID* iid, void** out) -> QZRESULT {
        auto* r = reinterpret_cast<Recorder*>(self);
        r->iid = iid;
        r->out = out;
        return static_cast<QZRESULT>(0x80004002);
      },
      [](IQZUnknown* self) -> uint32_t { return static_cast<uint32_t>(++reinterpret_cast<Recorder*>(self)->addRefs) + 10; },
      [](IQZUnknown* self) -> uint32_t { return static_cast<uint32_t>(++reinterpret_cast<Recorder*>(self)->releases) + 20; },
  };
  Recorder r;
  r.iface.lpVtbl = &vtbl;
  const QZGUID iid = With({});
  void* slot = &r;
  EXPECT_EQ(IQZUnknown_QueryInterface(&r.iface, &iid, &slot), static_cast<QZRESULT>(0x80004002));
  EXPECT_EQ(r.iid, &iid);
  EXPECT_EQ(r.out, &slot);
  EXPECT_EQ(slot, &r);  // the forwarder itself writes nothing
  EXPECT_EQ(IQZUnknown_AddRef(&r.iface), 11u);
  EXPECT_EQ(IQZUnknown_Release(&r.iface), 21u);
  EXPECT_EQ(IQZUnknown_Release(&r.iface), 22u);
}

}  // namespace
