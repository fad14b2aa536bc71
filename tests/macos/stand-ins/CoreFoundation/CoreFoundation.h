// As much of CoreFoundation as the client uses. Each object is the bundle's path.
#pragma once

#include <string>

using CFTypeRef = const void*;
using CFURLRef = const std::string*;
using CFStringRef = const std::string*;
constexpr unsigned kCFURLPOSIXPathStyle = 0, kCFStringEncodingASCII = 0x0600;

inline std::string bundlePath;  ///< empty: there is no bundle
inline int copies = 0;          ///< not released yet

constexpr auto CFBundleGetMainBundle = [] { return &bundlePath; };

constexpr auto CFURLCopyFileSystemPath = [](CFURLRef url, unsigned style) {
    copies += 1;
    return style == kCFURLPOSIXPathStyle ? url : nullptr;
};

constexpr auto CFBundleCopyBundleURL = [](CFURLRef bundle) {
    return bundle->empty() ? nullptr : CFURLCopyFileSystemPath(bundle, kCFURLPOSIXPathStyle);
};

constexpr auto CFStringGetCString = [](CFStringRef path, char* buffer, std::size_t size, unsigned encoding) {
    path->copy(buffer, size - 1);  // into zeros
    return encoding == kCFStringEncodingASCII && path->size() < size && path->find("ü") == std::string::npos;
};

constexpr auto CFRelease = [](CFTypeRef object) { copies -= object == &bundlePath ? 1 : 0; };
