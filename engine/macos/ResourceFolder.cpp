// For macOS: the folder of the application bundle.
#include "engine/ResourceFolder.h"

#include "Common/DebugPrint.h"

#include <CoreFoundation/CoreFoundation.h>

#include <array>

std::string applicationFolder()
{
    const CFURLRef url = CFBundleCopyBundleURL(CFBundleGetMainBundle());
    const CFStringRef path = CFURLCopyFileSystemPath(url, kCFURLPOSIXPathStyle);
    std::array<char, 1024> buffer = {};
    const bool fits = CFStringGetCString(path, buffer.data(), buffer.size(), kCFStringEncodingASCII) != 0;
    CFRelease(url);
    CFRelease(path);
    if (!fits) {
        DebugPrint("Error the application's path is not ASCII or too long, trying the working directory\n");
        return ".";
    }
    return buffer.data();
}
