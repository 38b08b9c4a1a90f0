// libasound, loaded at run time so that the same program runs on machines without it.
#pragma once

#include <cstdint>
#include <memory>

#include <alsa/asoundlib.h>

namespace tolvane::hal::alsa {

#define TOLVANE_ALSA_FUNCTIONS(FUNCTION)           \
  FUNCTION(snd_lib_error_set_handler)              \
  FUNCTION(snd_card_next)                          \
  FUNCTION(snd_ctl_open)                           \
  FUNCTION(snd_ctl_close)                          \
  FUNCTION(snd_ctl_card_info)                      \
  FUNCTION(snd_ctl_card_info_malloc)               \
  FUNCTION(snd_ctl_card_info_free)                 \
  FUNCTION(snd_ctl_card_info_get_id)               \
  FUNCTION(snd_ctl_card_info_get_name)             \
  FUNCTION(snd_ctl_pcm_next_device)                \
  FUNCTION(snd_ctl_pcm_info)                       \
  FUNCTION(snd_pcm_info_malloc)                    \
  FUNCTION(snd_pcm_info_free)                      \
  FUNCTION(snd_pcm_info_set_device)                \
  FUNCTION(snd_pcm_info_set_stream)                \
  FUNCTION(snd_pcm_open)                           \
  FUNCTION(snd_pcm_close)                          \
  FUNCTION(snd_pcm_state)                          \
  FUNCTION(snd_pcm_link)                           \
  FUNCTION(snd_pcm_unlink)                         \
  FUNCTION(snd_pcm_prepare)                        \
  FUNCTION(snd_pcm_start)                          \
  FUNCTION(snd_pcm_drop)                           \
  FUNCTION(snd_pcm_resume)                         \
  FUNCTION(snd_pcm_avail_update)                   \
  FUNCTION(snd_pcm_mmap_begin)                     \
  FUNCTION(snd_pcm_mmap_commit)                    \
  FUNCTION(snd_pcm_poll_descriptors_count)         \
  FUNCTION(snd_pcm_poll_descriptors)               \
  FUNCTION(snd_pcm_poll_descriptors_revents)       \
  FUNCTION(snd_pcm_hw_params)                      \
  FUNCTION(snd_pcm_hw_params_malloc)               \
  FUNCTION(snd_pcm_hw_params_free)                 \
  FUNCTION(snd_pcm_hw_params_copy)                 \
  FUNCTION(snd_pcm_hw_params_any)                  \
  FUNCTION(snd_pcm_hw_params_set_access)           \
  FUNCTION(snd_pcm_hw_params_set_format)           \
  FUNCTION(snd_pcm_hw_params_set_format_mask)      \
  FUNCTION(snd_pcm_format_mask_malloc)             \
  FUNCTION(snd_pcm_format_mask_free)               \
  FUNCTION(snd_pcm_format_mask_none)               \
  FUNCTION(snd_pcm_format_mask_set)                \
  FUNCTION(snd_pcm_hw_params_test_rate)            \
  FUNCTION(snd_pcm_hw_params_set_rate)             \
  FUNCTION(snd_pcm_hw_params_set_rate_near)        \
  FUNCTION(snd_pcm_hw_params_get_channels_max)     \
  FUNCTION(snd_pcm_hw_params_set_channels)         \
  FUNCTION(snd_pcm_hw_params_set_channels_near)    \
  FUNCTION(snd_pcm_hw_params_get_period_size_min)  \
  FUNCTION(snd_pcm_hw_params_get_period_size_max)  \
  FUNCTION(snd_pcm_hw_params_get_buffer_size_max)  \
  FUNCTION(snd_pcm_hw_params_test_period_size)     \
  FUNCTION(snd_pcm_hw_params_set_period_size)      \
  FUNCTION(snd_pcm_hw_params_set_period_size_near) \
  FUNCTION(snd_pcm_hw_params_get_periods_min)      \
  FUNCTION(snd_pcm_hw_params_get_periods_max)      \
  FUNCTION(snd_pcm_hw_params_set_periods_near)     \
  FUNCTION(snd_pcm_hw_params_get_buffer_size)      \
  FUNCTION(snd_pcm_query_chmaps_from_hw)           \
  FUNCTION(snd_pcm_free_chmaps)                    \
  FUNCTION(snd_pcm_chmap_name)                     \
  FUNCTION(snd_pcm_sw_params)                      \
  FUNCTION(snd_pcm_sw_params_malloc)               \
  FUNCTION(snd_pcm_sw_params_free)                 \
  FUNCTION(snd_pcm_sw_params_current)              \
  FUNCTION(snd_pcm_sw_params_get_boundary)         \
  FUNCTION(snd_pcm_sw_params_set_avail_min)        \
  FUNCTION(snd_pcm_sw_params_set_start_threshold)  \
  FUNCTION(snd_pcm_sw_params_set_stop_threshold)

/// The functions under their own names.
struct Library {
// NOLINTNEXTLINE(bugprone-macro-parentheses): a member cannot be declared in parentheses
#define TOLVANE_ALSA_MEMBER(name) decltype(&::name) name = nullptr;
  TOLVANE_ALSA_FUNCTIONS(TOLVANE_ALSA_MEMBER)
#undef TOLVANE_ALSA_MEMBER
};

/// The library, loaded at the first call and never unloaded. It does not write to standard error. Null if it
/// is missing or lacks one of the functions. [not-io]
[[nodiscard]] const Library* library();

/// A deleter that calls a function of the library.
template <auto Function>
struct Release {
  const Library* alsa = nullptr;
  template <typename Thing>
  void operator()(Thing* thing) const noexcept {
    (alsa->*Function)(thing);
  }
};

using ControlHandle = std::unique_ptr<snd_ctl_t, Release<&Library::snd_ctl_close>>;
using PcmHandle = std::unique_ptr<snd_pcm_t, Release<&Library::snd_pcm_close>>;

enum class Direction : std::uint8_t { capture, playback };

[[nodiscard]] inline snd_pcm_stream_t streamOf(Direction direction) noexcept {
  return direction == Direction::capture ? SND_PCM_STREAM_CAPTURE : SND_PCM_STREAM_PLAYBACK;
}

/// Opens a PCM by its name in libasound's configuration; does not wait for a busy one. Returns 0 and sets
/// `pcm`, or a negative errno: EBUSY, EACCES, ENOENT, ENODEV. [not-io]
int openPcm(const Library& alsa, const char* name, Direction direction, PcmHandle& pcm) noexcept;

}  // namespace tolvane::hal::alsa
