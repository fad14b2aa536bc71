#include "relay/Recording.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <utility>

namespace relay {

namespace {

const std::string header = std::string("VTRELAY\x01", 8);
constexpr std::size_t chunkHeaderSize = 19;

std::runtime_error systemError(const std::string& what, const std::string& path)
{
    return std::runtime_error("cannot " + what + " " + path + ": " + std::strerror(errno));
}

void appendNumber(std::string& out, std::uint64_t value, unsigned bytes)
{
    for (unsigned i = 0; i < bytes; ++i) {
        out.push_back(static_cast<char>(value >> (8 * i) & 0xFFU));
    }
}

std::uint64_t numberAt(const char* data, unsigned bytes)
{
    std::uint64_t value = 0;
    for (unsigned i = 0; i < bytes; ++i) {
        value |= std::uint64_t(static_cast<unsigned char>(data[i])) << (8 * i);
    }
    return value;
}

/// What is left of the file, or so many bytes of it.
std::string readUpTo(std::size_t most, std::FILE* file)
{
    std::string bytes;
    for (std::size_t got = 1; got > 0 && bytes.size() < most;) {
        const std::size_t size = bytes.size();
        bytes.resize(size + std::min(most - size, largestChunk));
        got = std::fread(&bytes[size], 1, bytes.size() - size, file);
        bytes.resize(size + got);
    }
    return bytes;
}

/// All of a recording but its header, which is checked before any more is read.
std::string chunksOf(const std::string& path)
{
    std::error_code unknown;  // what cannot be looked at cannot be opened either, and that says why
    const std::filesystem::file_status status = std::filesystem::status(path, unknown);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
        throw std::runtime_error(path + " is no regular file");
    }
    const FilePtr file(std::fopen(path.c_str(), "rbe"));
    if (file == nullptr) {
        throw systemError("read", path);
    }
    if (readUpTo(header.size(), file.get()) != header) {
        throw std::runtime_error(path + " is no recording of this version");
    }
    std::string chunks = readUpTo(std::string::npos, file.get());
    if (std::ferror(file.get()) != 0) {
        throw systemError("read", path);
    }
    return chunks;
}

/// Takes the chunks of a file one by one; what the file says is believed only after a check.
class Reader
{
public:
    explicit Reader(const std::string& path_) : path(path_), file(chunksOf(path_)) {}

    /// Nothing at the end, and where a chunk is not whole.
    std::optional<Chunk> next()
    {
        const char* const at = file.data() + offset;
        if (file.size() - offset < chunkHeaderSize) {
            return std::nullopt;
        }
        const std::size_t size = numberAt(at + 15, 4);
        Chunk chunk = headerOf(at, size);
        if (file.size() - offset - chunkHeaderSize < size) {
            return std::nullopt;
        }
        chunk.bytes.assign(at + chunkHeaderSize, size);
        offset += chunkHeaderSize + size;
        return chunk;
    }
    std::size_t left() const { return file.size() - offset; }
    std::string place() const { return " at offset " + std::to_string(header.size() + offset); }

private:
    std::string path;
    std::string file;
    std::size_t offset = 0;
    std::uint64_t lastTime = 0;

    Chunk headerOf(const char* at, std::size_t size)
    {
        constexpr std::uint64_t longest = 365ULL * 24 * 3600 * 1'000'000;  // no sum of such times overflows
        const std::uint64_t time = numberAt(at, 8);
        const auto transport = static_cast<unsigned char>(at[12]);
        const auto direction = static_cast<unsigned char>(at[13]);
        const auto kind = static_cast<unsigned char>(at[14]);
        if (time < lastTime || time > longest || transport > 1 || direction > 1 || kind > 2 ||
            size > (kind == 0 ? largestChunk : 0)) {
            throw std::runtime_error(path + " is garbled" + place());
        }
        lastTime = time;
        const Flow flow = {Transport(transport), static_cast<std::uint32_t>(numberAt(at + 8, 4)),
                           Direction(direction)};
        return {Duration(static_cast<Duration::rep>(time)), flow, Chunk::Kind(kind), {}};
    }
};

}  // namespace

RecordingWriter::RecordingWriter(const std::string& path_)
    : path(path_), file(std::fopen(path_.c_str(), "wbe"))
{
    if (file == nullptr) {
        throw systemError("record into", path);
    }
    put(header);
}

void RecordingWriter::write(const Flow& flow, Chunk::Kind kind, const char* data, std::size_t size)
{
    const auto elapsed = std::chrono::duration_cast<Duration>(Clock::now() - start);
    std::string bytes;
    appendNumber(bytes, static_cast<std::uint64_t>(elapsed.count()), 8);
    appendNumber(bytes, flow.number, 4);
    appendNumber(bytes, static_cast<std::uint8_t>(flow.transport), 1);
    appendNumber(bytes, static_cast<std::uint8_t>(flow.direction), 1);
    appendNumber(bytes, static_cast<std::uint8_t>(kind), 1);
    appendNumber(bytes, size, 4);
    bytes.append(data == nullptr ? "" : data, size);
    put(bytes);
}

void RecordingWriter::put(const std::string& bytes)
{
    if (std::fwrite(bytes.data(), 1, bytes.size(), file.get()) != bytes.size() ||
        std::fflush(file.get()) != 0) {
        throw systemError("record into", path);
    }
}

std::vector<Chunk> readRecording(const std::string& path, const Warn& warn)
{
    Reader reader(path);
    std::vector<Chunk> chunks;
    while (std::optional<Chunk> chunk = reader.next()) {
        chunks.push_back(std::move(*chunk));
    }
    if (reader.left() > 0) {
        warn(path + " breaks off within a chunk" + reader.place() + "; all before it is used");
    }
    return chunks;
}

}  // namespace relay
