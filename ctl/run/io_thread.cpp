#include "ctl/run/io_thread.h"

#include <sched.h>

#include "ctl/devices/property.h"

namespace tolvane::ctl {

namespace {

std::string policyName(int policy) {
  switch (policy) {
    case SCHED_OTHER:
      return "SCHED_OTHER";
    case SCHED_FIFO:
      return "SCHED_FIFO";
    case SCHED_RR:
      return "SCHED_RR";
    default:
      return "policy " + std::to_string(policy);
  }
}

}  // namespace

std::optional<TolvaneThreadScheduling> ioThreadScheduling(AudioDeviceID device) {
  return deviceProperty<TolvaneThreadScheduling>(device, kTolvaneDevicePropertyIOThreadScheduling);
}

std::optional<bool> isIoMemoryLocked(AudioDeviceID device) {
  const auto isLocked = deviceProperty<UInt32>(device, kTolvaneDevicePropertyMemoryLocked);
  return isLocked ? std::optional(*isLocked != 0) : std::nullopt;
}

bool isRealtime(const TolvaneThreadScheduling& scheduling) noexcept {
  return scheduling.mPolicy == SCHED_FIFO || scheduling.mPolicy == SCHED_RR;
}

std::string schedulingText(const TolvaneThreadScheduling& scheduling) {
  const std::string policy = policyName(scheduling.mPolicy);
  return isRealtime(scheduling) ? policy + ", priority " + std::to_string(scheduling.mPriority) : policy;
}

}  // namespace tolvane::ctl
