// docs/hal.md lists the HAL's properties and statuses as they are.
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "hal/core_audio.h"
#include "hal/registry/properties.h"

namespace tolvane::test {
namespace {

using Row = std::vector<std::string>;

/// A cell without its blanks at the ends and its backquotes. The blank of a code inside them stays.
std::string plain(const std::string& cell) {
  const std::size_t first = cell.find_first_not_of(' ');
  if (first == std::string::npos) return {};
  const std::string text = cell.substr(first, cell.find_last_not_of(' ') - first + 1);
  const bool isCode = text.size() > 2 && text.front() == '`' && text.back() == '`';
  return isCode ? text.substr(1, text.size() - 2) : text;
}

Row cellsOf(const std::string& line) {
  Row cells;
  std::istringstream text(line.substr(1));
  for (std::string cell; std::getline(text, cell, '|');) cells.push_back(plain(cell));
  return cells;
}

/// The rows of the tables that have so many columns, without the headings.
std::vector<Row> rowsOf(const std::string& path, std::size_t columns) {
  std::ifstream file(path);
  std::vector<Row> rows;
  for (std::string line; std::getline(file, line);) {
    if (!line.starts_with('|') || line.starts_with("|-")) continue;
    Row row = cellsOf(line);
    if (row.size() == columns) rows.push_back(std::move(row));
  }
  if (!rows.empty()) rows.erase(rows.begin());
  return rows;
}

UInt32 fourChars(const std::string& text) {
  UInt32 code = 0;
  for (const char character : text) code = code << 8 | static_cast<unsigned char>(character);
  return code;
}

AudioObjectID firstDevice() {
  const AudioObjectPropertyAddress list{kAudioHardwarePropertyDevices, kAudioObjectPropertyScopeGlobal, 0};
  AudioObjectID device = kAudioObjectUnknown;
  UInt32 size = sizeof device;
  EXPECT_EQ(AudioObjectGetPropertyData(kAudioObjectSystemObject, &list, 0, nullptr, &size, &device), noErr);
  return device;
}

using Properties = std::set<std::pair<UInt32, UInt32>>;

/// The selectors and scopes of the properties that a device's channels have.
Properties ofChannels() {
  Properties properties;
  for (const auto& property : hal::deviceProperties()) {
    if (property.isThere != nullptr) properties.emplace(property.selector, property.scope);
  }
  return properties;
}

const std::string kPage = TOLVANE_DOCS "/hal.md";

TEST(HalPage, ListsEveryPropertyWithItsSize) {
  const std::vector<Row> rows = rowsOf(kPage, 7);
  EXPECT_EQ(rows.size(),
            hal::systemProperties().size() + hal::deviceProperties().size() - ofChannels().size());
  for (const Row& row : rows) {
    SCOPED_TRACE(row[1]);
    const AudioObjectID object = row[0] == "system" ? AudioObjectID{kAudioObjectSystemObject} : firstDevice();
    const AudioObjectPropertyAddress address{fourChars(row[2]), fourChars(row[3]), 0};
    UInt32 size = 0;
    ASSERT_EQ(AudioObjectGetPropertyDataSize(object, &address, 0, nullptr, &size), noErr);
    const bool isFixed = row[5].find(' ') == std::string::npos;
    EXPECT_TRUE(!isFixed || row[5] == std::to_string(size)) << row[5] << " is " << size;
  }
}

TEST(HalPage, ListsEveryPropertyOfAChannel) {
  Properties listed;
  for (const Row& row : rowsOf(kPage, 5)) listed.emplace(fourChars(row[1]), fourChars(row[2]));
  EXPECT_EQ(listed, ofChannels());
}

TEST(HalPage, SaysWhatCanBeSet) {
  for (const Row& row : rowsOf(kPage, 7)) {
    SCOPED_TRACE(row[1]);
    const AudioObjectID object = row[0] == "system" ? AudioObjectID{kAudioObjectSystemObject} : firstDevice();
    const AudioObjectPropertyAddress address{fourChars(row[2]), fourChars(row[3]), 0};
    const char none = 0;
    const OSStatus status = AudioObjectSetPropertyData(object, &address, 0, nullptr, 0, &none);
    EXPECT_EQ(status, row[6] == "yes" ? OSStatus{kAudioHardwareBadPropertySizeError}
                                      : OSStatus{kAudioHardwareUnsupportedOperationError});
  }
}

TEST(HalPage, ListsTheStatusesWithTheirValues) {
  std::map<std::string, std::string> values;
  for (const Row& row : rowsOf(kPage, 4)) {
    EXPECT_TRUE(row[1].empty() || row[2] == std::to_string(fourChars(row[1]))) << row[0];
    values[row[0]] = row[2];
  }
  EXPECT_EQ(values["kAudioHardwareBadDeviceError"], std::to_string(kAudioHardwareBadDeviceError));
  EXPECT_EQ(values["kAudioDevicePermissionsError"], std::to_string(kAudioDevicePermissionsError));
  EXPECT_EQ(values["kTolvaneExhaustedError"], std::to_string(kTolvaneExhaustedError));
  EXPECT_EQ(values.size(), 12U);
}

}  // namespace
}  // namespace tolvane::test
