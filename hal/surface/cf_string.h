// The string type of the HAL's text properties: immutable and reference counted. Whoever creates or copies a
// string owns a reference and releases it with CFRelease.
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

/// Creates a string with the text of `utf8` (NUL terminated), which the caller releases. Returns null if the
/// text is null or not valid UTF-8, or if the encoding is not UTF-8. `allocator` is ignored. [not-io]
CFStringRef CFStringCreateWithCString(CFAllocatorRef allocator, const char* utf8, CFStringEncoding encoding);

/// The length of the text in UTF-16 code units; 0 for a null string. [any-thread]
CFIndex CFStringGetLength(CFStringRef string);

/// The most bytes that `length` code units can take in the encoding, without the terminator. kCFNotFound if
/// `length` is negative or too large, or if the encoding is not UTF-8. [any-thread]
CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding);

/// Copies the text and its NUL into `buffer` and returns 1. Returns 0 and copies nothing if they do not fit
/// into `bufferSize` bytes, if the encoding is not UTF-8, or if a pointer is null. [any-thread]
Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex bufferSize, CFStringEncoding encoding);

/// Adds an owner. Returns its argument. [any-thread]
CFTypeRef CFRetain(CFTypeRef object);

/// Removes an owner; the last one frees the object. Null is ignored. [not-io]
void CFRelease(CFTypeRef object);

}  // extern "C"
