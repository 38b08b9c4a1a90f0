// Builds the parameters of a card's profiles. The headers are C and their macros expand to statement
// expressions, so this file is marked as a system header to suppress warnings.
#pragma once
#pragma GCC system_header

#include <array>
#include <cstdint>
#include <string>

#include <spa/monitor/device.h>
#include <spa/monitor/utils.h>
#include <spa/param/profile.h>
#include <spa/pod/builder.h>

namespace tolvane::test {

class ProfilePod {
 public:
  ProfilePod(std::uint32_t kind, int index, const std::string& name) {
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, memory_.data(), static_cast<std::uint32_t>(memory_.size()));
    pod_ = static_cast<spa_pod*>(
        spa_pod_builder_add_object(&builder, SPA_TYPE_OBJECT_ParamProfile, kind, SPA_PARAM_PROFILE_index,
                                   SPA_POD_Int(index), SPA_PARAM_PROFILE_name, SPA_POD_String(name.c_str()),
                                   SPA_PARAM_PROFILE_description, SPA_POD_String(name.c_str())));
  }
  ProfilePod(const ProfilePod&) = delete;
  ProfilePod& operator=(const ProfilePod&) = delete;
  ~ProfilePod() = default;

  [[nodiscard]] spa_pod* get() const { return pod_; }

 private:
  alignas(8) std::array<std::uint8_t, 1024> memory_{};
  spa_pod* pod_;
};

}  // namespace tolvane::test
