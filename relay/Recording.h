#pragma once

#include "relay/Impairment.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace relay {

/// Something that one side said, or did.
struct Chunk
{
    enum class Kind : std::uint8_t
    {
        bytes,  ///< a piece of the stream, or one whole datagram
        opened,
        closed  ///< the side that `flow.direction` comes from says no more
    };

    Duration at;  ///< since the recording began; never less than the chunk before it
    Flow flow;
    Kind kind;
    std::string bytes;  ///< at most largestChunk
};

constexpr std::size_t largestChunk = 65536;  ///< more than any datagram holds

struct FileCloser
{
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using FilePtr = std::unique_ptr<std::FILE, FileCloser>;

/// Writes chunks into a file as they come, as the relay received them: before any fault.
///
/// The file, little-endian: the eight bytes "VTRELAY" and the version, 1; then for each chunk
///
///     offset  size
///     0       8     microseconds since the recording began
///     8       4     number of the connection or flow, from 1
///     12      1     transport: 0 stream, 1 datagrams
///     13      1     direction: 0 to the server, 1 to the client
///     14      1     kind: 0 bytes, 1 opened, 2 closed
///     15      4     how many bytes follow, at most 65,536; 0 for opened and closed
///     19      ...   the bytes
///
/// Each chunk is with the system when `write` returns. A relay that is killed, or a full disk, leaves whole
/// chunks and perhaps the beginning of one more.
class RecordingWriter
{
public:
    /// Replaces the file. Throws std::runtime_error, here and in `write`, where that fails.
    explicit RecordingWriter(const std::string& path);

    void write(const Flow& flow, Chunk::Kind kind, const char* data = nullptr, std::size_t size = 0);

private:
    std::string path;
    FilePtr file;
    Time start = Clock::now();

    void put(const std::string& bytes);
};

using Warn = std::function<void(const std::string& line)>;

/// Reads a whole recording; warns where it breaks off within its last chunk, which is left out. Throws
/// std::runtime_error, with one line that names the file, where it is none, and also the offset where it is
/// garbled.
std::vector<Chunk> readRecording(const std::string& path, const Warn& warn);

}  // namespace relay
