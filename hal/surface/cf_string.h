// The string reference that the HAL's text properties hand out: reference counted, immutable, owned by
// whoever copied or created it and given back with CFRelease.
#pragma once

#include "hal/surface/core_audio_types.h"

extern "C" {

using CFTypeRef = const void*;
using CFStringRef = const struct TolvaneString*;
using CFAllocatorRef = const struct TolvaneAllocator*;
using CFIndex = long;
using CFStringEncoding = UInt32;

enum : CFStringEncoding { kCFStringEncodingUTF8 = 0x08000100 };
enum : CFIndex { kCFNotFound = -1 };

/// A new string with the text of `utf8` (NUL terminated), to be released by the caller; null when the text is
/// null or not valid UTF-8, or the encoding is another. `allocator` is ignored. [not-io]
CFStringRef CFStringCreateWithCString(CFAllocatorRef allocator, const char* utf8, CFStringEncoding encoding);

/// The number of UTF-16 code units that the text would take; 0 of a null string. [any-thread]
CFIndex CFStringGetLength(CFStringRef string);

/// The bytes that `length` code units can take in the encoding at the most, without the terminator;
/// kCFNotFound when that cannot be counted or the encoding is not UTF-8. [any-thread]
CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding);

/// Copies the text and its NUL into `buffer`, and is then 1; 0, and nothing copied, when `bufferSize` bytes
/// do not hold it, the encoding is not UTF-8, or a pointer is null. [any-thread]
Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex bufferSize, CFStringEncoding encoding);

/// One more owner. Returns its argument. [any-thread]
CFTypeRef CFRetain(CFTypeRef object);

/// One owner less; the last one frees the object. Null is ignored. [not-io]
void CFRelease(CFTypeRef object);

}  // extern "C"
