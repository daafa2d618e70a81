#include <clocale>
#include <cstdlib>
#include <iostream>
#include <locale>

#include <gtest/gtest.h>

#include <MRZiPhoto/values/Log.h>

// A test program takes the locale of its surroundings, as a host program with windows does. The run
// in another place asks for a decimal comma; a locale that is missing then is a failure.
int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  mrziphoto::setLogSink([](std::string_view) {});  // a test collects what it looks at
  if (std::setlocale(LC_ALL, "") != nullptr) {
    std::locale::global(std::locale(""));
  }
  const bool wantsComma = std::getenv("MRZIPHOTO_DECIMAL_COMMA") != nullptr;
  if (wantsComma && *std::localeconv()->decimal_point != ',') {
    std::cerr << "The locale with a decimal comma could not be set.\n";
    return 1;
  }
  return RUN_ALL_TESTS();
}
