// For Linux: the folder of the executable, with all links followed.
#include "engine/ResourceFolder.h"

#include "Common/DebugPrint.h"

#include <filesystem>
#include <system_error>

std::string applicationFolder()
{
    std::error_code error;
    const std::filesystem::path executable = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) {
        DebugPrint("Error could not find the executable's folder: %s, trying the working directory\n",
                   error.message().c_str());
        return ".";
    }
    return executable.parent_path().string();
}
