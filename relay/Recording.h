#pragma once

#include "relay/BadNetwork.h"
#include "relay/Recording.pb.h"
#include "service/LogOnce.h"

#include <cstddef>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

namespace relay {

using Chunk = recording::Chunk;

constexpr std::size_t largestChunk = 65536;  ///< bytes; more than any datagram holds

/// Writes chunks into a file as they come. Recording.proto describes the file.
///
/// The system has each chunk when `write` returns. A killed relay or a full disk leaves whole chunks and
/// perhaps the beginning of one more. The first chunk that cannot be written ends the recording, with a line
/// in the log.
class RecordingWriter
{
public:
    /// Replaces the file. Throws std::runtime_error where that fails, and for a pipe, which could block.
    RecordingWriter(const std::string& path, LogOnce::Log log);

    void write(const Flow& flow, Chunk::Kind kind, const char* data = nullptr, std::size_t size = 0);
    /// Whether the recording has ended early.
    bool hasFailed() const { return failed; }

private:
    std::string path;
    LogOnce::Log log;
    std::ofstream file;
    Time start = Clock::now();
    bool failed = false;

    bool put(const google::protobuf::Message& message);
};

using Warn = std::function<void(const std::string& line)>;

constexpr std::size_t mostChunks = 4'000'000;  ///< of a recording to read; half an hour of 64 players

/// Reads a whole recording. Leaves out a last chunk that is not complete, with a warning. Throws
/// std::runtime_error with one line that names the file, and the chunk where one is garbled.
///
/// Takes the file's size in memory and some 100 bytes for each chunk. Refuses a file of more than 512 MiB or
/// mostChunks.
std::vector<Chunk> readRecording(const std::string& path, const Warn& warn);

}  // namespace relay
