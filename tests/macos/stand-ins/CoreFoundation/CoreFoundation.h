// As much of CoreFoundation as the client uses. Each kind of object has a type of its own, as there.
#pragma once

#include <cstdint>
#include <string>

using CFIndex = long;
using CFTypeRef = const void*;
using CFBundleRef = char*;
using CFURLRef = const int*;
using CFStringRef = const std::string*;

constexpr CFIndex kCFURLPOSIXPathStyle = 0;
constexpr std::uint32_t kCFStringEncodingASCII = 0x0600;

extern "C" {
CFBundleRef CFBundleGetMainBundle();
CFURLRef CFBundleCopyBundleURL(CFBundleRef bundle);
CFStringRef CFURLCopyFileSystemPath(CFURLRef url, CFIndex pathStyle);
unsigned char CFStringGetCString(CFStringRef string, char* buffer, CFIndex size, std::uint32_t encoding);
void CFRelease(CFTypeRef object);
}
