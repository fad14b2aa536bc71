// As much of CoreFoundation as the client uses.
#pragma once

#include <cstdint>

using CFIndex = long;
using CFTypeRef = const void*;
using CFBundleRef = struct StandInBundle*;
using CFURLRef = const struct StandInURL*;
using CFStringRef = const struct StandInString*;

constexpr CFIndex kCFURLPOSIXPathStyle = 0;
constexpr std::uint32_t kCFStringEncodingASCII = 0x0600;

extern "C" {
CFBundleRef CFBundleGetMainBundle();
CFURLRef CFBundleCopyBundleURL(CFBundleRef bundle);
CFStringRef CFURLCopyFileSystemPath(CFURLRef url, CFIndex pathStyle);
unsigned char CFStringGetCString(CFStringRef string, char* buffer, CFIndex size, std::uint32_t encoding);
void CFRelease(CFTypeRef object);
}
