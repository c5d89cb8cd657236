// result_test.cpp - translation of platform error numbers into result codes.
#include <gtest/gtest.h>

#include "qzcore.h"

TEST(ResultFromNative, MapsTheListedNumbersAndFoldsTheRestIntoFail) {
  EXPECT_EQ(QZResultFromNative(0), 0);
  // A missing path reads the same as a missing file.
  EXPECT_EQ(QZResultFromNative(2), QZ_E_FILE_NOT_FOUND);
  EXPECT_EQ(QZResultFromNative(3), QZ_E_FILE_NOT_FOUND);
  EXPECT_EQ(QZResultFromNative(5), QZ_E_ACCESSDENIED);
  EXPECT_EQ(QZResultFromNative(6), QZ_E_HANDLE);
  EXPECT_EQ(QZResultFromNative(14), QZ_E_OUTOFMEMORY);
  EXPECT_EQ(QZResultFromNative(183), QZ_E_ALREADY_EXISTS);
  EXPECT_EQ(QZResultFromNative(258), static_cast<QZRESULT>(0x800705B4));
  // Numbers without a row of their own carry no detail through.
  for (uint32_t n : {1u, 4u, 7u, 8u, 18u, 33u, 80u, 87u, 126u, 127u, 234u, 259u, 1460u, 0xFFFFFFFFu}) {
    EXPECT_EQ(QZResultFromNative(n), QZ_E_FAIL) << n;
  }
}
