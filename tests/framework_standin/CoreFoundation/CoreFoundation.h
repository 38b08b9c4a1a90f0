// A stand-in for the macOS framework's header: declarations only, enough to compile against, never to link.
#pragma once

extern "C" {

typedef unsigned char Boolean;
typedef unsigned int UInt32;
typedef signed int SInt32;
typedef signed short SInt16;
typedef unsigned long long UInt64;
typedef float Float32;
typedef double Float64;
typedef SInt32 OSStatus;
enum { noErr = 0 };

typedef signed long CFIndex;
typedef const void* CFTypeRef;
typedef const struct __CFString* CFStringRef;
typedef const struct __CFAllocator* CFAllocatorRef;
typedef UInt32 CFStringEncoding;
enum : CFStringEncoding { kCFStringEncodingUTF8 = 0x08000100 };

CFStringRef CFStringCreateWithCString(CFAllocatorRef alloc, const char* cStr, CFStringEncoding encoding);
CFIndex CFStringGetLength(CFStringRef theString);
CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding);
Boolean CFStringGetCString(CFStringRef theString, char* buffer, CFIndex bufferSize, CFStringEncoding encoding);
CFTypeRef CFRetain(CFTypeRef cf);
void CFRelease(CFTypeRef cf);
}
