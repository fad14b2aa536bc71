#include "tools/relay/Recording.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <stdexcept>

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

std::string wholeFile(const std::string& path)
{
    const FilePtr file(std::fopen(path.c_str(), "rbe"));
    std::string bytes;
    std::array<char, 65536> part;
    while (file != nullptr && std::ferror(file.get()) == 0 && std::feof(file.get()) == 0) {
        bytes.append(part.data(), std::fread(part.data(), 1, part.size(), file.get()));
    }
    if (file == nullptr || std::ferror(file.get()) != 0) {
        throw systemError("read", path);
    }
    return bytes;
}

/// Takes the chunks of a file one by one; what the file says is believed only after a check.
class Reader
{
public:
    explicit Reader(const std::string& path_) : path(path_), file(wholeFile(path_))
    {
        if (file.compare(0, header.size(), header) != 0) {
            throw fault("is no recording of this version");
        }
        offset = header.size();
    }

    bool atEnd() const { return offset == file.size(); }

    Chunk next()
    {
        const char* const at = file.data() + offset;
        if (file.size() - offset < chunkHeaderSize) {
            throw fault("is truncated");
        }
        const std::size_t size = numberAt(at + 15, 4);
        Chunk chunk = headerOf(at, size);
        if (file.size() - offset - chunkHeaderSize < size) {
            throw fault("is truncated");
        }
        chunk.bytes.assign(at + chunkHeaderSize, size);
        offset += chunkHeaderSize + size;
        return chunk;
    }

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
            throw fault("is garbled");
        }
        lastTime = time;
        const Lane lane = {Transport(transport), static_cast<std::uint32_t>(numberAt(at + 8, 4)),
                           Direction(direction)};
        return {Duration(static_cast<Duration::rep>(time)), lane, Chunk::Kind(kind), {}};
    }

    std::runtime_error fault(const std::string& what) const
    {
        return std::runtime_error(path + " " + what + " at offset " + std::to_string(offset));
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

void RecordingWriter::write(const Lane& lane, Chunk::Kind kind, const char* data, std::size_t size)
{
    const auto elapsed = std::chrono::duration_cast<Duration>(Clock::now() - start);
    std::string bytes;
    appendNumber(bytes, static_cast<std::uint64_t>(elapsed.count()), 8);
    appendNumber(bytes, lane.number, 4);
    appendNumber(bytes, static_cast<std::uint8_t>(lane.transport), 1);
    appendNumber(bytes, static_cast<std::uint8_t>(lane.direction), 1);
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

std::vector<Chunk> readRecording(const std::string& path)
{
    std::vector<Chunk> chunks;
    for (Reader reader(path); !reader.atEnd();) {
        chunks.push_back(reader.next());
    }
    return chunks;
}

}  // namespace relay
