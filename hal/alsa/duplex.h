#pragma once

#include <memory>
#include <string>
#include <vector>

#include <poll.h>

#include "hal/alsa/channel_buffers.h"
#include "hal/alsa/negotiation.h"
#include "hal/alsa/pcm_stream.h"

namespace tolvane::hal::alsa {

/// libasound's names of a card's PCMs, as in "hw:CARD=PCH,DEV=0"; empty if the card lacks the direction.
struct PcmNames {
  std::string capture;
  std::string playback;
};

/// Both directions of a card as one: configured, started and stopped together, read and written one period at
/// a time. Functions return 0 or more, or a negative errno like those of PcmStream.
class Duplex {
 public:
  /// Opens every direction that has a name, or none of them. Errors: EBUSY, EACCES, ENOENT, ENODEV. Throws
  /// std::bad_alloc. [not-io]
  static int open(const Library& alsa, const PcmNames& names, std::unique_ptr<Duplex>& duplex);

  /// Finds the format that configure() would set, without setting it. [not-io]
  int inspect(const DuplexWish& wish, DuplexOffer& offer);
  /// Sets up the hardware, allocates the buffers and calls prepare(). May be called again only while stopped.
  /// Throws std::bad_alloc. [not-io]
  int configure(const DuplexWish& wish);
  [[nodiscard]] const DuplexFormat& format() const noexcept { return format_; }

  /// Starts what configure() or prepare() has prepared. [io-thread]
  int start() noexcept;
  /// Stops at once; frames not yet played are lost. [io-thread]
  void stop() noexcept;
  /// Makes the card ready to start, with outputs full of silence and empty inputs. [io-thread]
  int prepare() noexcept;
  /// Called after the machine was suspended, before stop(). Returns 0 if the hardware has resumed, cannot
  /// resume or need not; EAGAIN while it is still resuming. [io-thread]
  int resume() noexcept;

  /// Waits until a period can be read and written. Returns how many periods can. Returns 0 if `wakeFd` is
  /// readable first, or if the hardware wakes us too early. Error: ETIMEDOUT if one direction takes longer
  /// than `timeoutMs`. [io-thread]
  int wait(int wakeFd, int timeoutMs) noexcept;

  /// Reads one period into input(), if there are inputs. [io-thread]
  int read() noexcept { return capture_ ? capture_->read(*input_) : 0; }
  /// Writes one period from output(), if there are outputs. [io-thread]
  int write() noexcept { return playback_ ? playback_->write(*output_) : 0; }
  [[nodiscard]] AudioBufferList& input() noexcept { return input_->list(); }
  [[nodiscard]] AudioBufferList& output() noexcept { return output_->list(); }

  /// True if the samples of both directions are locked in memory. [any-thread]
  [[nodiscard]] bool isLocked() const noexcept { return input_->areLocked() && output_->areLocked(); }

  /// The length of the hardware's output buffer; 0 without outputs. [any-thread]
  [[nodiscard]] snd_pcm_uframes_t outputBufferFrames() const noexcept {
    return playback_ ? playback_->setup().bufferFrames : 0;
  }

 private:
  explicit Duplex(const Library& alsa) noexcept : alsa_(alsa) {}

  int openStream(const std::string& name, Direction direction, std::unique_ptr<PcmStream>& stream);
  int install(HwParams& space, PcmStream& stream) const;
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
  std::vector<pollfd> pollSet_;  // capture's, one for wakeFd, playback's, one for wakeFd
  std::size_t captureFds_ = 0;
};

}  // namespace tolvane::hal::alsa
