#pragma once

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

/// Takes numbers and texts from the front of an input. Behind its end there are zeros and empty texts.
class FuzzInput
{
public:
    FuzzInput(const std::uint8_t* data, std::size_t size) : rest(reinterpret_cast<const char*>(data), size) {}

    bool isEmpty() const { return rest.empty(); }
    unsigned byte()
    {
        const std::string_view taken = take(1);
        return taken.empty() ? 0 : static_cast<unsigned char>(taken[0]);
    }
    /// Their number, a byte, comes first.
    std::string bytes() { return std::string(take(byte())); }

private:
    std::string_view rest;

    std::string_view take(std::size_t size)
    {
        const std::string_view taken = rest.substr(0, size);
        rest.remove_prefix(taken.size());
        return taken;
    }
};

/// A temporary file that holds one input at a time.
class InputFile
{
public:
    explicit InputFile(const std::string& extension)
        : path(std::filesystem::temp_directory_path() /
               ("vantor-fuzz-" + std::to_string(getpid()) + extension))
    {
    }
    ~InputFile() { std::filesystem::remove(path); }

    /// Overwrites the file with an input and returns its path.
    const std::string& holding(const std::uint8_t* data, std::size_t size) const
    {
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
        return path;
    }

private:
    std::string path;
};

/// Ends the process where something does not hold.
inline void require(bool holds, const std::string& fault)
{
    if (!holds) {
        std::fprintf(stderr, "%s\n", fault.c_str());
        std::abort();
    }
}
