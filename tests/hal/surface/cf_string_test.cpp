#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "hal/core_audio.h"

namespace {

CFStringRef make(const char* text) {
  return CFStringCreateWithCString(nullptr, text, kCFStringEncodingUTF8);
}

TEST(CFString, givesBackItsText) {
  const CFStringRef string = make("Röhre 5 €");
  char text[32];
  EXPECT_EQ(CFStringGetCString(string, text, sizeof text, kCFStringEncodingUTF8), 1);
  EXPECT_STREQ(text, "Röhre 5 €");
  CFRelease(string);
}

TEST(CFString, countsUtf16Units) {
  struct {
    const char* text;
    CFIndex units;
  } const cases[] = {{"", 0}, {"abc", 3}, {"ö", 1}, {"€", 1}, {"🎛", 2}, {"a🎛b", 4}};
  for (const auto& c : cases) {
    const CFStringRef string = make(c.text);
    EXPECT_EQ(CFStringGetLength(string), c.units) << c.text;
    CFRelease(string);
  }
}

TEST(CFString, needsRoomForTextAndTerminator) {
  const CFStringRef string = make("four");
  char text[6] = "?????";
  EXPECT_EQ(CFStringGetCString(string, text, 4, kCFStringEncodingUTF8), 0);
  EXPECT_STREQ(text, "?????");
  EXPECT_EQ(CFStringGetCString(string, text, 5, kCFStringEncodingUTF8), 1);
  EXPECT_STREQ(text, "four");
  EXPECT_EQ(CFStringGetCString(string, text, 0, kCFStringEncodingUTF8), 0);
  EXPECT_EQ(CFStringGetCString(string, text, -1, kCFStringEncodingUTF8), 0);
  CFRelease(string);
}

TEST(CFString, maximumSizeHoldsEveryText) {
  EXPECT_EQ(CFStringGetMaximumSizeForEncoding(0, kCFStringEncodingUTF8), 0);
  EXPECT_EQ(CFStringGetMaximumSizeForEncoding(7, kCFStringEncodingUTF8), 21);
  EXPECT_EQ(CFStringGetMaximumSizeForEncoding(-1, kCFStringEncodingUTF8), kCFNotFound);
  EXPECT_EQ(CFStringGetMaximumSizeForEncoding(std::numeric_limits<CFIndex>::max(), kCFStringEncodingUTF8),
            kCFNotFound);
  EXPECT_EQ(CFStringGetMaximumSizeForEncoding(7, 0), kCFNotFound);
}

TEST(CFString, isMadeOfValidUtf8Alone) {
  const char* const invalid[] = {
      "\x80", "a\xC3", "\xC0\xAF", "\xE0\x80\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80",
      "\xFF"};
  for (const char* text : invalid)
    EXPECT_EQ(make(text), nullptr) << testing::PrintToString(std::string(text));
  EXPECT_EQ(make(nullptr), nullptr);
  EXPECT_EQ(CFStringCreateWithCString(nullptr, "text", 0), nullptr);
}

TEST(CFString, livesUntilItsLastOwnerReleasesIt) {
  const CFStringRef string = make("shared");
  EXPECT_EQ(CFRetain(string), string);
  CFRelease(string);
  char text[8];
  EXPECT_EQ(CFStringGetCString(string, text, sizeof text, kCFStringEncodingUTF8), 1);
  EXPECT_STREQ(text, "shared");
  CFRelease(string);
}

TEST(CFString, takesNullForNothing) {
  char text[8];
  EXPECT_EQ(CFStringGetLength(nullptr), 0);
  EXPECT_EQ(CFStringGetCString(nullptr, text, sizeof text, kCFStringEncodingUTF8), 0);
  const CFStringRef string = make("x");
  EXPECT_EQ(CFStringGetCString(string, nullptr, 8, kCFStringEncodingUTF8), 0);
  EXPECT_EQ(CFStringGetCString(string, text, sizeof text, 0), 0);
  CFRelease(string);
  EXPECT_EQ(CFRetain(nullptr), nullptr);
  CFRelease(nullptr);
}

}  // namespace
