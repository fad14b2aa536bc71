// For macOS: the folder of the application bundle.
#include "engine/ResourceFolder.h"

#include "Common/DebugPrint.h"

#include <CoreFoundation/CoreFoundation.h>

#include <array>
#include <memory>
#include <type_traits>

namespace {

/// Releases a copy that a framework function returned.
struct Release
{
    void operator()(CFTypeRef copy) const { CFRelease(copy); }
};

template <typename Ref>
using Copy = std::unique_ptr<std::remove_pointer_t<Ref>, Release>;

}  // namespace

std::string applicationFolder()
{
    const Copy<CFURLRef> url(CFBundleCopyBundleURL(CFBundleGetMainBundle()));
    const Copy<CFStringRef> path(url ? CFURLCopyFileSystemPath(url.get(), kCFURLPOSIXPathStyle) : nullptr);
    std::array<char, 1024> buffer = {};
    if (!path || CFStringGetCString(path.get(), buffer.data(), buffer.size(), kCFStringEncodingASCII) == 0) {
        DebugPrint(
            "Error the application's path is unknown, not ASCII or too long, trying the working directory\n");
        return ".";
    }
    return buffer.data();
}
