// The HAL's records, with the layouts that its clients are compiled against.
#pragma once

#include <cstddef>
#include <cstdint>

extern "C" {

using UInt8 = std::uint8_t;
using UInt32 = std::uint32_t;
using SInt16 = std::int16_t;
using SInt32 = std::int32_t;
using UInt64 = std::uint64_t;
using Float32 = float;
using Float64 = double;
using OSStatus = SInt32;
using Boolean = unsigned char;

enum : OSStatus { noErr = 0 };

/// The samples of one stream for one IO cycle: `mNumberChannels` channels of 32-bit float, interleaved, in
/// `mDataByteSize` bytes at `mData`; `mData` is null if the stream has no data this cycle.
struct AudioBuffer {
  UInt32 mNumberChannels;
  UInt32 mDataByteSize;
  void* mData;
};

/// `mNumberBuffers` buffers, one per stream. The array has that many elements.
struct AudioBufferList {
  UInt32 mNumberBuffers;
  AudioBuffer mBuffers[1];
};

struct SMPTETime {
  SInt16 mSubframes;
  SInt16 mSubframeDivisor;
  UInt32 mCounter;
  UInt32 mType;
  UInt32 mFlags;
  SInt16 mHours;
  SInt16 mMinutes;
  SInt16 mSeconds;
  SInt16 mFrames;
};

/// A moment on the device's clock (`mSampleTime`, frames) and on the host's (`mHostTime`, nanoseconds of the
/// monotonic clock); `mFlags` says which fields are valid.
struct AudioTimeStamp {
  Float64 mSampleTime;
  UInt64 mHostTime;
  Float64 mRateScalar;
  UInt64 mWordClockTime;
  SMPTETime mSMPTETime;
  UInt32 mFlags;
  UInt32 mReserved;
};

enum : UInt32 {
  kAudioTimeStampNothingValid = 0,
  kAudioTimeStampSampleTimeValid = 1U << 0,
  kAudioTimeStampHostTimeValid = 1U << 1,
};

}  // extern "C"

static_assert(sizeof(AudioBuffer) == 16 && offsetof(AudioBuffer, mData) == 8);
static_assert(sizeof(AudioBufferList) == 24 && offsetof(AudioBufferList, mBuffers) == 8);
static_assert(sizeof(AudioTimeStamp) == 64);
