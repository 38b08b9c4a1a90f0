#pragma once

#include <atomic>
#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "hal/registry/device.h"
#include "hal/registry/listed_already.h"

namespace tolvane::hal {

/// A list of devices.
struct DeviceListing {
  std::vector<AudioObjectID> devices;
  std::vector<std::string> silentDrivers;  // whose devices are missing, since they do not answer
};

/// The drivers, and every device that one of them has ever listed. An identifier is a device's by its uid,
/// from 2 on, and never another's. It lives as long as the process.
class Catalog {
 public:
  /// `onNews` as the desks call it.
  explicit Catalog(std::function<void()> onNews) : onNews_(std::move(onNews)) {}

  /// Lists the devices of these drivers, in this order, from now on; drivers it had before are kept, unasked.
  /// A driver for a server that an earlier one of them reaches is left out. [not-io]
  void useDrivers(std::vector<std::unique_ptr<Driver>> drivers);

  /// A driver that takes longer to answer is left out of the list.
  static constexpr std::chrono::milliseconds kAnswerLimit{150};
  /// The same for the first list of all: a sound server is often started by the first who connects to it.
  static constexpr std::chrono::milliseconds kFirstAnswerLimit{1000};

  /// Asks every driver, all at a time, and gives the whole list. Throws what a driver threw: then there is
  /// none. [not-io]
  DeviceListing askAll();
  /// Asks one driver. [not-io]
  void ask(const std::shared_ptr<DriverDesk>& desk);
  /// Asks the drivers that have news. [not-io]
  void askThoseWithNews();

  /// The device of this identifier, up to date with what its driver told of; null when there is none.
  /// [not-io]
  std::shared_ptr<Device> device(AudioObjectID id);
  [[nodiscard]] std::vector<std::shared_ptr<Device>> devices() const;

  /// True once after each change of the list; the first list is none. [not-io]
  bool takeListChange();

 private:
  using DeskRef = std::shared_ptr<DriverDesk>;
  struct Source {
    DeskRef desk;
    std::shared_ptr<const DriverAnswer> answer;  // null while the driver does not answer, or fails
    std::uint64_t answered = 0;                  // the number of its last answer, and the news it knew of
    std::uint64_t news = 0;
    std::vector<std::shared_ptr<Device>> devices;
  };

  [[nodiscard]] std::vector<DeskRef> desks() const;
  [[nodiscard]] std::vector<DeskRef> desksWithNews() const;
  struct Asked {
    std::vector<std::shared_ptr<const DriverAnswer>> answers;  // in the desks' order; null for none in time
    std::vector<AudioObjectID> list;                           // the whole one, with these answers
  };
  Asked askThese(const std::vector<DeskRef>& desks, std::chrono::milliseconds limit);
  void take(const DeskRef& desk, std::uint64_t call, std::shared_ptr<const DriverAnswer> answer);
  void relist();
  void listDevices(Source& source, ListedAlready& listed);
  void listDevice(Source& source, DeviceInfo info);
  void publishList();

  const std::function<void()> onNews_;
  mutable std::mutex mutex_;  // never held while a driver is waited for
  std::vector<Source> sources_;
  std::map<std::string, std::shared_ptr<Device>> byUid_;
  std::map<AudioObjectID, std::shared_ptr<Device>> byId_;
  std::vector<AudioObjectID> list_;
  std::atomic<bool> allAsked_{false};  // askAll() has given a list of these drivers
  bool listed_ = false;
  bool listChanged_ = false;
  AudioObjectID nextId_ = kAudioObjectSystemObject + 1;
};

}  // namespace tolvane::hal
