// As much of CoreFoundation as the client uses, implemented by EngineTest.cpp. Kinds of objects do not mix.
#pragma once

using CFTypeRef = const void*;
using CFBundleRef = struct Bundle*;
using CFURLRef = const struct Url*;
using CFStringRef = const struct String*;

constexpr long kCFURLPOSIXPathStyle = 0;
constexpr unsigned kCFStringEncodingASCII = 0x0600;

CFBundleRef CFBundleGetMainBundle();
CFURLRef CFBundleCopyBundleURL(CFBundleRef bundle);
CFStringRef CFURLCopyFileSystemPath(CFURLRef url, long pathStyle);
unsigned char CFStringGetCString(CFStringRef string, char* buffer, long size, unsigned encoding);
void CFRelease(CFTypeRef object);
