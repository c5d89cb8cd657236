# UTF-16 strings, conversions, locale names and UTF-16 text files (white box: the locale table and
# the ANSI string conversions are reached directly).
qz_add_test(qzcore_text_unicode_tests INTERNAL SOURCES
  ${CMAKE_CURRENT_LIST_DIR}/utf16_string_test.cpp
  ${CMAKE_CURRENT_LIST_DIR}/utf_conversion_test.cpp
  ${CMAKE_CURRENT_LIST_DIR}/locale_names_test.cpp
  ${CMAKE_CURRENT_LIST_DIR}/utf16_text_file_test.cpp)
