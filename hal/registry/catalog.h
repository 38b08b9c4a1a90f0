#pragma once

#include <atomic>
#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "hal/registry/device.h"
#include "hal/registry/listed_already.h"

namespace tolvane::hal {

/// A list of devices.
struct DeviceListing {
  std::vector<AudioObjectID> devices;
  std::vector<std::string> silentDrivers;  // did not answer in time; their devices are missing
};

/// The drivers, and every device that one of them has ever listed. Each uid gets an identifier of its own,
/// from 2 on, which is never given to another device. The catalog lives as long as the process.
class Catalog {
 public:
  /// `onChange` is passed to every DriverPoller.
  explicit Catalog(std::function<void()> onChange) : onChange_(std::move(onChange)) {}

  /// Replaces the drivers: from now on lists the devices of these, in this order. The previous drivers stay
  /// alive but are not asked again. A driver is left out if an earlier one reaches the same server. [not-io]
  void useDrivers(std::vector<std::unique_ptr<Driver>> drivers);

  /// Asks all drivers at once and returns the whole list. If a driver threw, rethrows its exception instead.
  /// [not-io]
  DeviceListing askAll();
  /// Asks all drivers and does not wait for the answers. The next list then waits less. [not-io]
  void prefetch();
  /// Asks one driver. [not-io]
  void ask(const std::shared_ptr<DriverPoller>& poller);
  /// Asks the drivers that reported a change since their last answer. [not-io]
  void askTheChanged();

  /// What the drivers have to tell the user, each a sentence. [not-io]
  [[nodiscard]] std::vector<std::string> problems() const;

  /// A sound card that a sound server uses, as its driver reported it last.
  struct HeldCard {
    std::shared_ptr<DriverPoller> poller;
    DeviceInfo info;
  };
  /// The card with this uid; none if there is none. [not-io]
  [[nodiscard]] std::optional<HeldCard> heldCard(const std::string& uid) const;
  /// The card with this number. [not-io]
  [[nodiscard]] std::optional<HeldCard> heldCard(int alsaCard) const;
  /// True if a device with this uid is on the list. [not-io]
  [[nodiscard]] bool isListed(const std::string& uid) const;

  /// The device with this identifier; null if there is none. If the driver has reported a change, asks it
  /// first, so that the device is up to date. [not-io]
  std::shared_ptr<Device> device(AudioObjectID id);
  [[nodiscard]] std::vector<std::shared_ptr<Device>> devices() const;

  /// True once after a change of the list. The first list is not a change. [not-io]
  bool takeListChange();

 private:
  using PollerRef = std::shared_ptr<DriverPoller>;
  struct Source {
    PollerRef poller;
    std::shared_ptr<const DriverAnswer> answer;  // null if the driver did not answer in time, or failed
    std::uint64_t answered = 0;                  // number of its last answer
    std::uint64_t generation = 0;                // generation that this answer includes
    std::vector<std::shared_ptr<Device>> devices;
  };

  [[nodiscard]] std::vector<PollerRef> pollers() const;
  [[nodiscard]] std::vector<PollerRef> changedPollers() const;
  struct Asked {
    std::vector<std::shared_ptr<const DriverAnswer>> answers;  // in the pollers' order; null if not in time
    std::vector<AudioObjectID> list;                           // the whole list, including these answers
  };
  Asked askThese(const std::vector<PollerRef>& pollers, std::chrono::milliseconds limit);
  void take(const PollerRef& poller, std::uint64_t call, std::shared_ptr<const DriverAnswer> answer);
  void relist();
  void listDevices(Source& source, ListedAlready& listed);
  void listDevice(Source& source, DeviceInfo info);
  void publishList();
  template <typename IsWanted>
  [[nodiscard]] std::optional<HeldCard> findHeld(const IsWanted& isWanted) const;

  const std::function<void()> onChange_;
  mutable std::mutex mutex_;  // never held while waiting for a driver
  std::vector<Source> sources_;
  std::map<std::string, std::shared_ptr<Device>> byUid_;
  std::map<AudioObjectID, std::shared_ptr<Device>> byId_;
  std::vector<AudioObjectID> list_;
  std::atomic<bool> allAsked_{false};  // askAll() has asked these drivers before
  bool listed_ = false;
  bool listChanged_ = false;
  AudioObjectID nextId_ = kAudioObjectSystemObject + 1;
};

}  // namespace tolvane::hal
