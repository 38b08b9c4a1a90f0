#include "hal/virtual/virtual_driver.h"

#include "hal/virtual/virtual_model.h"
#include "hal/virtual/virtual_session.h"

namespace tolvane::hal {

namespace {

class VirtualDriver final : public Driver {
 public:
  [[nodiscard]] const char* name() const noexcept override { return "virtual"; }

  std::vector<DeviceInfo> devices() override { return {VirtualModel::shared().info()}; }

  StartResult start(const DeviceInfo& /*device*/, SessionClient& client) override {
    return {noErr, std::make_unique<VirtualSession>(VirtualModel::shared(), client)};
  }

  void setObserver(DeviceObserver& observer) override { VirtualModel::shared().observe(*this, observer); }

  OSStatus setBufferFrames(const DeviceInfo& /*device*/, std::uint32_t frames) override {
    VirtualModel::shared().setBufferFrames(frames);
    return noErr;
  }

  OSStatus setRehearsal(const DeviceInfo& /*device*/, const TolvaneRehearsal& rehearsal) override {
    VirtualModel::shared().setRehearsal(rehearsal);
    return noErr;
  }
};

}  // namespace

std::unique_ptr<Driver> makeVirtualDriver() {
  return std::make_unique<VirtualDriver>();
}

}  // namespace tolvane::hal
