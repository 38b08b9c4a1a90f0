#pragma once

#include <memory>
#include <string>
#include <vector>

#include <poll.h>

#include "hal/alsa/channel_buffers.h"
#include "hal/alsa/negotiation.h"
#include "hal/alsa/pcm_stream.h"

namespace tolvane::hal::alsa {

/// What libasound calls a card's PCMs, as in "hw:CARD=PCH,DEV=0"; empty where there is no such direction.
struct PcmNames {
  std::string capture;
  std::string playback;
};

/// Both directions of a card as one: configured, started and stopped together, and read and written a period
/// at a time. Functions return 0 or more, or a negative errno as those of PcmStream.
class Duplex {
 public:
  /// The periods that the hardware's buffer is to hold.
  static constexpr unsigned kPeriods = 3;

  /// Opens every direction that has a name, or none of them: EBUSY, EACCES, ENOENT, ENODEV. Throws
  /// std::bad_alloc. [not-io]
  static int open(const Library& alsa, const PcmNames& names, std::unique_ptr<Duplex>& duplex);

  /// What it could be configured to, with nothing changed. [not-io]
  int inspect(const DuplexWish& wish, DuplexFormat& format);
  /// Sets the hardware, makes the buffers and prepares; again only when stopped. Throws std::bad_alloc.
  /// [not-io]
  int configure(const DuplexWish& wish);
  [[nodiscard]] const DuplexFormat& format() const noexcept { return format_; }

  /// Starts what configure() or prepare() has prepared. [io-thread]
  int start() noexcept;
  /// Stops at once; what was not played is lost. [io-thread]
  void stop() noexcept;
  /// Makes ready to start: outputs full of silence, inputs empty. [io-thread]
  int prepare() noexcept;
  /// After the machine was suspended, and before stop(): 0 when the hardware has resumed, cannot or need not,
  /// EAGAIN when it is still at it. [io-thread]
  int resume() noexcept;

  /// Waits until a period can be read and written, and gives how many; 0 when `wakeFd` was readable first.
  /// ETIMEDOUT. [io-thread]
  int wait(int wakeFd, int timeoutMs) noexcept;

  /// Reads a period into input(), if there are inputs. [io-thread]
  int read() noexcept { return capture_ ? capture_->read(*input_) : 0; }
  /// Writes a period from output(), if there are outputs. [io-thread]
  int write() noexcept { return playback_ ? playback_->write(*output_) : 0; }
  [[nodiscard]] AudioBufferList& input() noexcept { return input_->list(); }
  [[nodiscard]] AudioBufferList& output() noexcept { return output_->list(); }

  /// The hardware's own buffer. [any-thread]
  [[nodiscard]] snd_pcm_uframes_t outputBufferFrames() const noexcept {
    return playback_ ? playback_->setup().bufferFrames : 0;
  }

 private:
  explicit Duplex(const Library& alsa) noexcept : alsa_(alsa) {}

  int openStream(const std::string& name, Direction direction, std::unique_ptr<PcmStream>& stream);
  int install(HardwareSpace& space, PcmStream& stream) const;
  void link() noexcept;
  void makePollSet();
  int waitFor(PcmStream& stream, std::size_t first, std::size_t count, int timeoutMs, bool& woken) noexcept;
  [[nodiscard]] int periodsReady() noexcept;

  const Library& alsa_;
  std::unique_ptr<PcmStream> capture_;
  std::unique_ptr<PcmStream> playback_;
  std::unique_ptr<ChannelBuffers> input_;
  std::unique_ptr<ChannelBuffers> output_;
  DuplexFormat format_;
  bool linked_ = false;
  std::vector<pollfd> pollSet_;  // of capture, one free, of playback, one free: for the waking one
  std::size_t captureFds_ = 0;
};

}  // namespace tolvane::hal::alsa
